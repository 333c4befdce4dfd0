#include "integrate/PeakTroubles.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>

#include "integrate/PeaksByPoint.h"
#include "integrate/Uphill.h"

namespace peakbox {

namespace {

// A top this far off the box and this much higher is missed; half a point is nothing.
constexpr double kOffPoints = 0.75;
constexpr double kOffHeight = 1.125;

struct Overlap {
  std::int64_t points = 0;
  std::size_t other = 0;
  std::size_t count = 0;  // of boxes that share points with this one
  std::size_t spectrum = 0;
};

/// A spectrum in which a peak's top is not where its box is, and whose the top is.
struct Departure {
  std::size_t spectrum;
  std::optional<std::size_t> owner;
};

/// What is gathered of a peak, spectrum by spectrum. Spectra count as they were measured.
struct Record {
  std::optional<std::size_t> strongest{};
  std::size_t judged = 0;                              // the first spectrum in which it is nearly as strong
  std::map<std::size_t, std::vector<int>> meetings{};  // by the peak to which the point belongs
  std::vector<Departure> departures{};
  Overlap worst{};
};

class TroubleFinder {
 public:
  TroubleFinder(const Series& measured, const RunSettings& settings, const PeakList& list,
                const std::vector<bool>& explained);

  std::vector<PeakTrouble> describe(std::size_t j) const;

 private:
  void findStrongest(std::size_t j);
  void gather(std::size_t n);
  void measureOverlaps(std::size_t n, const PeaksByPoint& places, std::size_t j);
  bool isOff(std::size_t n, std::size_t j) const;
  std::optional<std::size_t> findOwner(std::size_t n, const PeaksByPoint& places, std::size_t j) const;
  std::int64_t countShared(const Point& one, const Point& other) const;
  std::optional<PeakTrouble> findMeeting(std::size_t j) const;
  std::optional<PeakTrouble> findDeparture(std::size_t j) const;
  bool hasMoved(std::size_t j) const;
  std::vector<int> findOverlapping(std::size_t j) const;

  bool isNoise(std::size_t j) const { return isNoiseLabel(peaks.getLabel(static_cast<int>(j))); }
  bool stands(std::size_t n, std::size_t j) const {
    return series.isSeen(n, j) && isSure(series.getSighting(n, j).height, series.getNoise(n));
  }

  const Series& series;
  const PeakList& peaks;
  const Point reach;                   // within which boxes share points
  std::vector<std::size_t> spectra{};  // that are not explained
  std::vector<Record> records;
};

TroubleFinder::TroubleFinder(const Series& measured, const RunSettings& settings, const PeakList& list,
                             const std::vector<bool>& explained)
    : series(measured),
      peaks(list),
      reach{std::int64_t{2} * settings.getBoxSize(0), std::int64_t{2} * settings.getBoxSize(1)},
      records(measured.getPeakCount()) {
  for (std::size_t n = 0; n < series.getIndices().size(); ++n) {
    const auto index = static_cast<std::size_t>(series.getIndices()[n]);
    if (index >= explained.size() || !explained[index]) spectra.push_back(n);
  }
  for (std::size_t j = 0; j < records.size(); ++j) findStrongest(j);
  for (const std::size_t n : spectra) gather(n);
}

void TroubleFinder::findStrongest(std::size_t j) {
  const auto getRatio = [&](std::size_t n) {
    const double height = std::fabs(series.getSighting(n, j).height);
    return series.getNoise(n) > 0 || height == 0 ? height / std::max(series.getNoise(n), DBL_MIN) : DBL_MAX;
  };
  double greatest = -1;
  for (const std::size_t n : spectra) {
    if (!series.isSeen(n, j) || !(getRatio(n) > greatest)) continue;
    greatest = getRatio(n);
    records[j].strongest = n;
  }
  const auto isNearly = [&](std::size_t n) { return series.isSeen(n, j) && getRatio(n) >= 0.75 * greatest; };
  if (records[j].strongest) records[j].judged = *std::find_if(spectra.begin(), spectra.end(), isNearly);
}

void TroubleFinder::gather(std::size_t n) {
  const PeaksByPoint places(series, n, peaks);
  const PeaksByPoint::Entry* owner = nullptr;
  for (const PeaksByPoint::Entry& entry : places.getEntries()) {
    const std::size_t j = entry.peak;
    const bool isAlone = owner == nullptr || owner->point != entry.point;
    if (isAlone) owner = &entry;
    // In the noise any two may meet, but in the first spectrum it is the list that sends them there.
    const bool isMeeting = !isAlone && (n == 0 || stands(n, j));
    if (isMeeting) records[j].meetings[owner->peak].push_back(series.getIndices()[n] + 1);
    if (entry.isNoise || !stands(n, j)) continue;
    if (isAlone) measureOverlaps(n, places, j);
    if (isOff(n, j)) records[j].departures.push_back({n, findOwner(n, places, j)});
  }
}

std::int64_t TroubleFinder::countShared(const Point& one, const Point& other) const {
  const std::int64_t along1 = reach[0] + 1 - std::abs(one[0] - other[0]);
  const std::int64_t along2 = reach[1] + 1 - std::abs(one[1] - other[1]);
  return std::max<std::int64_t>(0, along1) * std::max<std::int64_t>(0, along2);
}

void TroubleFinder::measureOverlaps(std::size_t n, const PeaksByPoint& places, std::size_t j) {
  const Point& point = series.getSighting(n, j).point;
  Overlap overlap{.spectrum = n};
  places.visitNear(point, reach, [&](const PeaksByPoint::Entry& other) {
    if (other.peak == j || other.isNoise || !stands(n, other.peak)) return;
    ++overlap.count;
    const std::int64_t points = countShared(point, other.point);
    if (points <= overlap.points) return;
    overlap.points = points;
    overlap.other = other.peak;
  });
  if (overlap.points > records[j].worst.points) records[j].worst = overlap;
}

/// Whether a top lies beside the point.
bool TroubleFinder::isOff(std::size_t n, std::size_t j) const {
  const Sighting& seen = series.getSighting(n, j);
  const auto getDistance = [&](std::size_t d) { return std::fabs(seen.top[d] - static_cast<double>(seen.point[d])); };
  const double excess = std::fabs(seen.topHeight - seen.height);
  const bool isHigher = excess > std::max(2 * series.getNoise(n), (kOffHeight - 1) * std::fabs(seen.height));
  return isHigher && std::max(getDistance(0), getDistance(1)) > kOffPoints;
}

/// The other peak that was measured at the top or beside it.
std::optional<std::size_t> TroubleFinder::findOwner(std::size_t n, const PeaksByPoint& places, std::size_t j) const {
  const Sighting& seen = series.getSighting(n, j);
  const Point top{std::llround(seen.top[0]), std::llround(seen.top[1])};
  std::int64_t nearest = 3;
  std::optional<std::size_t> owner;
  places.visitNear(top, {1, 1}, [&](const PeaksByPoint::Entry& other) {
    const std::int64_t distance = std::abs(other.point[0] - top[0]) + std::abs(other.point[1] - top[1]);
    if (other.peak == j || other.isNoise || distance >= nearest) return;
    nearest = distance;
    owner = other.peak;
  });
  return owner;
}

/// The peak that is most often at the same point, if that is nearer to its place in most of these spectra.
std::optional<PeakTrouble> TroubleFinder::findMeeting(std::size_t j) const {
  PeakTrouble trouble{.kind = TroubleKind::SamePoint};
  for (const auto& [other, numbers] : records[j].meetings) {
    const auto& its = records[other].meetings;
    const auto reverse = its.find(j);
    std::vector<int> all = numbers;
    if (reverse != its.end()) {
      if (std::pair(reverse->second.size(), other) > std::pair(numbers.size(), j)) continue;
      all.insert(all.end(), reverse->second.begin(), reverse->second.end());
      std::sort(all.begin(), all.end());
    }
    if (all.size() <= trouble.spectra.size()) continue;
    trouble.spectra = all;
    trouble.other = other;
  }
  return trouble.other ? std::optional(trouble) : std::nullopt;
}

/// A top that is off in the strongest spectrum is a flank, but where it is nobody else's and the first spectrum has the
/// peak in its box, the peak has moved; and so it has if that is seen in nearly all later ones.
std::optional<PeakTrouble> TroubleFinder::findDeparture(std::size_t j) const {
  const Record& record = records[j];
  if (record.departures.empty()) return std::nullopt;
  PeakTrouble trouble{.kind = TroubleKind::Moved, .worst = record.departures.back().spectrum};
  bool isFlank = false;
  for (const Departure& departure : record.departures) {
    trouble.spectra.push_back(series.getIndices()[departure.spectrum] + 1);
    if (departure.spectrum != record.judged) continue;
    isFlank = true;
    trouble.worst = departure.spectrum;
    trouble.other = departure.owner;
  }
  if (hasMoved(j) && !trouble.other) {
    // Farther off still, it shows nothing in its box.
    for (const std::size_t n : spectra) {
      const bool isGone = n > records[j].departures.front().spectrum && !stands(n, j);
      if (isGone) trouble.spectra.push_back(series.getIndices()[n] + 1);
    }
    std::sort(trouble.spectra.begin(), trouble.spectra.end());
    return trouble;
  }
  trouble.kind = TroubleKind::OnFlank;
  return isFlank ? std::optional(trouble) : std::nullopt;
}

bool TroubleFinder::hasMoved(std::size_t j) const {
  const std::vector<Departure>& departures = records[j].departures;
  const auto isOwn = [&](const Departure& departure) {
    const std::array<double, 2>& first = series.getSighting(0, j).top;
    const std::array<double, 2>& top = series.getSighting(departure.spectrum, j).top;
    return !departure.owner && std::hypot(top[0] - first[0], top[1] - first[1]) > kOffPoints;
  };
  const auto own = std::count_if(departures.begin(), departures.end(), isOwn);
  const auto since = std::count_if(spectra.begin(), spectra.end(),
                                   [&](std::size_t n) { return n >= departures.front().spectrum && stands(n, j); });
  const bool isFirstSound = stands(0, j) && departures.front().spectrum > 0;
  return isFirstSound && own * 10 >= since * 8 && (own > 1 || series.getIndices().size() == 2);
}

std::vector<int> TroubleFinder::findOverlapping(std::size_t j) const {
  std::vector<int> numbers;
  const std::size_t other = records[j].worst.other;
  for (const std::size_t n : spectra) {
    if (!stands(n, j) || !stands(n, other)) continue;
    const std::int64_t shared = countShared(series.getSighting(n, j).point, series.getSighting(n, other).point);
    if (shared > 0) numbers.push_back(series.getIndices()[n] + 1);
  }
  return numbers;
}

std::vector<PeakTrouble> TroubleFinder::describe(std::size_t j) const {
  const Record& record = records[j];
  std::vector<PeakTrouble> troubles;
  if (const auto& loss = series.getLoss(j)) troubles.push_back({TroubleKind::LeavesPlane, {loss->index + 1}});
  if (const auto meeting = findMeeting(j)) troubles.push_back(*meeting);
  if (isNoise(j) || !record.strongest) return troubles;
  const std::size_t strongest = *record.strongest;
  if (!stands(strongest, j)) {
    const int number = series.getIndices()[strongest] + 1;
    troubles.push_back({.kind = TroubleKind::NoPeak, .spectra = {number}, .worst = strongest});
    return troubles;
  }
  const std::optional<PeakTrouble> departure = findDeparture(j);
  if (departure && departure->kind == TroubleKind::OnFlank) troubles.push_back(*departure);
  const auto isSaid = [&](const PeakTrouble& one) {
    return one.kind == TroubleKind::SamePoint && one.other == record.worst.other;
  };
  if (record.worst.points > 0 && std::none_of(troubles.begin(), troubles.end(), isSaid)) {
    troubles.push_back({.kind = TroubleKind::SharesPoints,
                        .spectra = findOverlapping(j),
                        .worst = record.worst.spectrum,
                        .other = record.worst.other,
                        .sharedPoints = record.worst.points,
                        .moreOthers = record.worst.count - 1});
  }
  if (departure && departure->kind == TroubleKind::Moved) troubles.push_back(*departure);
  return troubles;
}

}  // namespace

std::vector<std::vector<PeakTrouble>> findTroubles(const Series& series, const RunSettings& settings,
                                                   const PeakList& peaks, const std::vector<bool>& explained) {
  const TroubleFinder finder(series, settings, peaks, explained);
  std::vector<std::vector<PeakTrouble>> troubles;
  for (std::size_t j = 0; j < series.getPeakCount(); ++j) troubles.push_back(finder.describe(j));
  return troubles;
}

}  // namespace peakbox
