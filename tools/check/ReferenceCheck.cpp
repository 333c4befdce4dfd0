#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "base/RobustSpread.h"
#include "check/CommonShift.h"
#include "check/SampledSeries.h"

namespace peakbox {

namespace {

constexpr std::size_t kFewestShiftedPeaks = 8;
constexpr double kSurelyExtreme = 8;  // times the noise

/// Values of dimension 1 that share a band; what water leaves, and the noise of strong signals, makes many in few
/// bands.
int findBand(double place) { return static_cast<int>(place) / 4; }

/// Whether a band holds too many of all.
bool isCrowded(std::size_t some, std::size_t all) { return some > 4 && 100 * some > 15 * all; }

/// The places of the strongest extremes, but those in crowded bands.
Places findPlaces(const PlaneSample& plane, std::size_t most) {
  const std::vector<Extreme> strongest = plane.getStrongest(4 * most, kSurelyExtreme);
  std::map<int, std::size_t> counts;
  for (const Extreme& extreme : strongest) ++counts[findBand(extreme.place[0])];
  Places places;
  for (const auto& [place, value] : strongest) {
    if (places.size() < most && !isCrowded(counts[findBand(place[0])], strongest.size()))
      places.push_back({place[0], place[1]});
  }
  return places;
}

std::array<double, 2> shareOfAxes(const Axes& axes, double share1, double share2) {
  return {share1 * axes.sizes[0], share2 * axes.sizes[1]};
}

bool isWithin(const std::array<double, 2>& shift, const std::array<double, 2>& close) {
  return std::fabs(shift[0]) <= close[0] && std::fabs(shift[1]) <= close[1];
}

/// At most so many of the planes that are free, from the first to the last.
std::vector<std::size_t> spread(const std::vector<std::size_t>& free, std::size_t most) {
  if (free.size() <= most) return free;
  std::vector<std::size_t> some;
  for (std::size_t i = 0; i < most; ++i) some.push_back(free[i * (free.size() - 1) / (most - 1)]);
  return some;
}

/// "+0.050 ppm (+12 points) in dimension 1 and ..."
std::string describeShift(const Axes& axes, const std::array<double, 2>& points) {
  std::string text;
  for (const std::size_t d : {0U, 1U}) {
    if (std::fabs(points[d]) < 0.5) continue;
    const double ppm = -points[d] * axes.hzPerPoint[d] / axes.observeMHz[d];
    text += text.empty() ? "" : " and ";
    text +=
        writeSigned(ppm, 3) + " ppm (" + writeSigned(points[d], 0) + " points) in dimension " + std::to_string(d + 1);
  }
  return text;
}

/// Listed peaks inside the spectrum that stand for signals.
struct Listed {
  Places places;
  std::array<std::vector<double>, 2> widths;
};

Listed findListed(const SampledSeries& all) {
  constexpr std::size_t kEnough = 300;
  Listed listed;
  for (std::size_t j = 0; j < all.series.getPeakCount() && listed.places.size() < kEnough; ++j) {
    const int peak = static_cast<int>(j);
    const PeakList& list = all.peaks.list;
    const std::array<double, 2> place{list.getPosition(peak, 0), list.getPosition(peak, 1)};
    const bool isInside = all.axes.contains({std::llround(place[0]), std::llround(place[1])});
    if (!isInside || isNoiseLabel(list.getLabel(peak))) continue;
    listed.places.push_back(place);
    for (const int d : {0, 1}) listed.widths[static_cast<std::size_t>(d)].push_back(list.getBoundsWidth(peak, d));
  }
  return listed;
}

/// By which shift each plane is displaced from a reference; nothing of those that are not.
std::vector<Displacement> compareWith(const SampledSeries& all, std::size_t reference, std::size_t& fitting) {
  constexpr std::array<double, 2> kClose{1.5, 1.5};
  const std::size_t most = std::clamp<std::size_t>(all.series.getPeakCount() / 2, 16, 100);  // few but peaks
  std::vector<Displacement> displaced;
  for (const std::size_t n : all.findFree()) {
    Places own = findPlaces(all.planes[n], most);
    Places others = findPlaces(all.planes[reference], most + most / 2);
    const std::size_t count = std::min(own.size(), others.size());
    if (n == reference || count < kFewestShiftedPeaks) continue;
    own.resize(count);
    others.resize(std::min(others.size(), count + count / 2));
    const CommonShift common = findCommonShift(own, others, shareOfAxes(all.axes, 0.06, 0.1), kClose);
    fitting += common.hitsUnshifted > 0.5;
    if (common.hits < 0.5 || common.hits - common.hitsUnshifted < 0.3 || isWithin(common.shift, kClose)) continue;
    displaced.push_back({n, reference, {-common.shift[0], -common.shift[1]}});
  }
  return displaced;
}

/// An extreme of a plane that counts as signal there.
struct Signal {
  std::array<float, 2> place;
  std::uint32_t plane;
  bool isStrong;
};

/// The signals of all planes, by their place.
std::vector<Signal> findSignals(const SampledSeries& all, const std::vector<std::size_t>& planes) {
  const std::size_t depth = std::max<std::size_t>(5, all.series.getPeakCount() / 3);
  std::vector<double> heights;
  for (const std::size_t n : planes) {
    const std::vector<Extreme> strongest = all.planes[n].getStrongest(depth + 1, 0);
    heights.push_back(strongest.empty() ? 0 : std::fabs(strongest.back().value));
  }
  std::vector<double> sorted = heights;
  const double usual = takeMedian(sorted);
  std::vector<Signal> signals;
  for (std::size_t i = 0; i < planes.size(); ++i) {
    const double least = std::max({kSurelyExtreme * all.planes[planes[i]].noise, 0.4 * heights[i], 0.15 * usual});
    for (const auto& [place, value] : all.planes[planes[i]].extremes) {
      const double height = std::fabs(value);
      if (height > 0.12 * heights[i]) signals.push_back({place, static_cast<std::uint32_t>(planes[i]), height > least});
    }
  }
  std::sort(signals.begin(), signals.end(), [](const Signal& a, const Signal& b) { return a.place < b.place; });
  return signals;
}

/// Whether fewer than so many other planes have a signal beside it.
bool isAlone(const Signal& signal, const std::vector<Signal>& signals, std::size_t fewest) {
  const auto isBefore = [](const Signal& other, float x) { return other.place[0] < x; };
  std::set<std::size_t> planes;
  auto other = std::lower_bound(signals.begin(), signals.end(), signal.place[0] - 4.5F, isBefore);
  for (; other != signals.end() && other->place[0] <= signal.place[0] + 4.5F; ++other) {
    if (other->plane != signal.plane && std::fabs(other->place[1] - signal.place[1]) <= 2.5F)
      planes.insert(other->plane);
    if (planes.size() >= fewest) return false;
  }
  return true;
}

/// The share of a plane's strong signals that other planes do not have, 0 where they are few.
double findAloneShare(const std::vector<Signal>& signals, std::size_t plane, std::size_t fewest) {
  constexpr std::size_t kFewest = 10;
  std::vector<const Signal*> own;
  std::map<int, std::size_t> counts;
  for (const Signal& signal : signals) {
    if (signal.plane != plane || !signal.isStrong) continue;
    own.push_back(&signal);
    ++counts[findBand(signal.place[0])];
  }
  std::size_t count = 0;
  std::size_t alone = 0;
  for (const Signal* signal : own) {
    if (isCrowded(counts[findBand(signal->place[0])], own.size())) continue;
    ++count;
    alone += isAlone(*signal, signals, fewest);
  }
  return count < kFewest ? 0 : static_cast<double>(alone) / static_cast<double>(count);
}

}  // namespace

bool checkListPlace(const SampledSeries& all) {
  Listed listed = findListed(all);
  if (listed.places.size() < kFewestShiftedPeaks) return false;
  std::array<double, 2> close{};
  for (const std::size_t d : {0U, 1U}) close[d] = std::max(1.5, takeMedian(listed.widths[d]) / 4);
  std::vector<std::pair<CommonShift, std::size_t>> found;
  for (const std::size_t n : spread(all.findFree(), 8)) {
    const Places targets = findPlaces(all.planes[n], 400);
    if (targets.size() < kFewestShiftedPeaks) continue;
    found.emplace_back(findCommonShift(listed.places, targets, shareOfAxes(all.axes, 0.1, 0.15), close), n);
  }
  if (found.empty()) return false;
  const auto& [best, plane] = *std::max_element(
      found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first.hits < b.first.hits; });
  std::size_t agreeing = 0;
  for (const auto& [common, n] : found) {
    if (common.hitsUnshifted >= 0.5) return false;
    agreeing += isWithin({common.shift[0] - best.shift[0], common.shift[1] - best.shift[1]}, {1.5, 1.5});
  }
  if (best.hits < 0.6 || best.hits - best.hitsUnshifted < 0.35 || isWithin(best.shift, close)) return false;
  if (agreeing < std::min<std::size_t>(2, found.size())) return false;
  const auto countOf = [&](double share) { return std::lround(share * static_cast<double>(listed.places.size())); };
  const FileFindings ofList{all.findings, Findings::Peaks, all.peaks.file};
  return ofList.add(true, 0, "warning: the list is off: moved by ", describeShift(all.axes, best.shift),
                    " it would hit ", countOf(best.hits), " of ", listed.places.size(), " peaks of ", all.nameOf(plane),
                    ", and as it is ", countOf(best.hitsUnshifted), "; correct its reference");
}

/// In a series that drifts no plane fits half of the others.
std::vector<Displacement> findDisplaced(const SampledSeries& all) {
  std::vector<Displacement> displaced;
  std::size_t most = 0;
  const std::size_t count = all.findFree().size();
  for (const std::size_t reference : spread(all.findFree(), 3)) {
    std::size_t fitting = 1;
    const std::vector<Displacement> found = compareWith(all, reference, fitting);
    if (fitting <= most) continue;
    most = fitting;
    const bool isOut = count == 2 || (3 * found.size() <= count && 2 * fitting > count);
    displaced = isOut ? found : std::vector<Displacement>();
  }
  return displaced;
}

void checkForeign(SampledSeries& all, const std::vector<Displacement>& displaced) {
  const std::vector<std::size_t> planes = all.findFree();
  if (planes.size() < 3) return;
  const std::vector<Signal> signals = findSignals(all, planes);
  std::vector<std::size_t> foreign;
  double share = 0;
  for (const std::size_t n : planes) {
    const auto isIt = [n](const Displacement& displacement) { return displacement.plane == n; };
    // In a series that drifts only the neighbours have the same signals.
    const bool isBetween = n != planes.front() && n != planes.back();
    const double alone = findAloneShare(signals, n, planes.size() > 5 && isBetween ? 2 : 1);
    if (alone < 0.44 || std::any_of(displaced.begin(), displaced.end(), isIt)) continue;
    if (foreign.empty()) share = alone;
    foreign.push_back(n);
  }
  if (foreign.empty() || foreign.size() > std::max<std::size_t>(1, planes.size() / 3)) return;
  all.tellPlanes(foreign, std::to_string(std::lround(100 * share)) +
                              " % of its strong signals lie where no other spectrum has any: another sample, or a "
                              "dimension reversed");
}

void tellDisplaced(SampledSeries& all, const std::vector<Displacement>& displaced) {
  for (const auto& [n, reference, points] : displaced) {
    if (!all.isFree(n)) continue;
    all.tellPlanes({n}, "its peaks lie " + describeShift(all.axes, points) + " from those of " + all.nameOf(reference) +
                            ": another reference, temperature or processing");
  }
}

}  // namespace peakbox
