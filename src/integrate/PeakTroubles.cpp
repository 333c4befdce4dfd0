#include "integrate/PeakTroubles.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <utility>

#include "integrate/Uphill.h"

namespace peakbox {

namespace {

constexpr std::size_t kMostPartners = 3;   // overlapping boxes that are told of one peak
constexpr std::size_t kMostPairs = 10000;  // overlapping boxes that are told at all

/// Two peaks, the one earlier in the list first.
using Pair = std::pair<std::size_t, std::size_t>;

struct Sharing {
  std::vector<int> sameSpectra;
  std::vector<int> sharedSpectra;
  std::int64_t mostShared = 0;
};

/// Finds boxes that share points, by going through the peaks in the order of dimension 1.
class PairFinder {
 public:
  PairFinder(const Series& measured, const RunSettings& settings, const PeakList& list)
      : series(measured),
        peaks(list),
        reach{std::int64_t{2} * settings.getBoxSize(0), std::int64_t{2} * settings.getBoxSize(1)} {}

  std::map<Pair, Sharing> find() {
    for (std::size_t n = 0; n < series.getIndices().size(); ++n) searchSpectrum(n);
    return std::move(pairs);
  }

 private:
  void searchSpectrum(std::size_t n);
  void searchPartners(std::size_t n, const std::vector<std::size_t>& order, std::size_t start);
  bool isNoise(std::size_t j) const { return isNoiseLabel(peaks.getLabel(static_cast<int>(j))); }

  const Series& series;
  const PeakList& peaks;
  const std::array<std::int64_t, 2> reach;
  std::map<Pair, Sharing> pairs;
};

void PairFinder::searchSpectrum(std::size_t n) {
  std::vector<std::size_t> order;
  for (std::size_t j = 0; j < series.getPeakCount(); ++j) {
    if (series.isSeen(n, j)) order.push_back(j);
  }
  std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
    return std::tie(series.getSighting(n, i).point, i) < std::tie(series.getSighting(n, j).point, j);
  });
  for (std::size_t start = 0; start < order.size(); ++start) searchPartners(n, order, start);
}

void PairFinder::searchPartners(std::size_t n, const std::vector<std::size_t>& order, std::size_t start) {
  const Point& point1 = series.getSighting(n, order[start]).point;
  std::size_t partners = 0;
  for (std::size_t next = start + 1; next < order.size() && partners < kMostPartners; ++next) {
    const Point& point2 = series.getSighting(n, order[next]).point;
    const std::int64_t distance1 = point2[0] - point1[0];
    const std::int64_t distance2 = std::abs(point2[1] - point1[1]);
    if (distance1 > reach[0]) break;
    const bool isSame = distance1 == 0 && distance2 == 0;  // these come first
    if (distance2 > reach[1] || (!isSame && (isNoise(order[start]) || isNoise(order[next])))) continue;
    ++partners;
    const Pair pair = std::minmax(order[start], order[next]);
    if (pairs.size() >= kMostPairs && !isSame && !pairs.contains(pair)) continue;
    Sharing& sharing = pairs[pair];
    (isSame ? sharing.sameSpectra : sharing.sharedSpectra).push_back(series.getIndices()[n] + 1);
    sharing.mostShared = std::max(sharing.mostShared, (reach[0] + 1 - distance1) * (reach[1] + 1 - distance2));
  }
}

std::vector<int> findFlanks(const Series& series, std::size_t j) {
  std::vector<int> spectra;
  for (std::size_t n = 0; n < series.getIndices().size(); ++n) {
    if (series.getSighting(n, j).isOnFlank) spectra.push_back(series.getIndices()[n] + 1);
  }
  return spectra;
}

}  // namespace

std::vector<std::vector<PeakTrouble>> findTroubles(const Series& series, const RunSettings& settings,
                                                   const PeakList& peaks) {
  std::vector<std::vector<PeakTrouble>> troubles(series.getPeakCount());
  if (series.getIndices().empty()) return troubles;
  const auto isNoise = [&](std::size_t j) { return isNoiseLabel(peaks.getLabel(static_cast<int>(j))); };
  for (std::size_t j = 0; j < troubles.size(); ++j) {
    if (const auto& loss = series.getLoss(j)) troubles[j].push_back({TroubleKind::LeavesPlane, {loss->index + 1}});
    const bool isLow = series.isSeen(0, j) && !isSure(series.getSighting(0, j).height, series.getNoise(0));
    if (isLow && !isNoise(j)) troubles[j].push_back({TroubleKind::NoPeak, {1}});
  }
  for (const auto& [pair, sharing] : PairFinder(series, settings, peaks).find()) {
    const bool isSame = !sharing.sameSpectra.empty();
    troubles[pair.second].push_back({.kind = isSame ? TroubleKind::SamePoint : TroubleKind::SharesPoints,
                                     .spectra = isSame ? sharing.sameSpectra : sharing.sharedSpectra,
                                     .other = pair.first,
                                     .sharedPoints = sharing.mostShared});
  }
  for (std::size_t j = 0; j < troubles.size(); ++j) {
    const std::vector<int> spectra = isNoise(j) ? std::vector<int>() : findFlanks(series, j);
    if (!spectra.empty()) troubles[j].push_back({TroubleKind::OnFlank, spectra});
  }
  return troubles;
}

}  // namespace peakbox
