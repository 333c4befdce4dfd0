#include <algorithm>
#include <cmath>
#include <map>

#include "base/TextNumbers.h"
#include "check/SampledSeries.h"

namespace peakbox {

namespace {

constexpr std::size_t kFewestTops = 8;

/// The tops of a peak, by plane.
using Track = std::map<std::size_t, const Extreme*>;

double distance(const Extreme& a, const Extreme& b) {
  return std::max(std::fabs(a.place[0] - b.place[0]), std::fabs(a.place[1] - b.place[1]));
}

/// Follows a peak from where it is strongest, from plane to plane, to the first and to the last.
Track followTop(const SampledSeries& all, const StrongPeak& peak, const std::vector<std::size_t>& planes) {
  const RunSettings& settings = all.parameters.settings;
  const auto reachOf = [&](int dim) { return std::clamp<double>(settings.getBoxSize(dim) + 1.5, 2.5, 6.5); };
  const std::array<double, 2> reach{reachOf(0), reachOf(1)};
  const Point& point = all.series.getSighting(peak.plane, peak.j).point;
  const bool isPositive = all.heightOf(peak.plane, peak.j) > 0;
  const std::array<double, 2> start{static_cast<double>(point[0]), static_cast<double>(point[1])};
  const Extreme* first = all.isFree(peak.plane) ? all.planes[peak.plane].findTop(start, reach, isPositive) : nullptr;
  if (first == nullptr) return {};
  Track track{{peak.plane, first}};
  const auto follow = [&](std::size_t n, const Extreme*& last) {
    const double height = all.heightOf(n, peak.j);
    if (std::fabs(height) > 5 && (height > 0) != isPositive) return;
    const Extreme* top = all.planes[n].findTop({last->place[0], last->place[1]}, reach, isPositive);
    if (top == nullptr) return;
    track[n] = top;
    last = top;
  };
  const Extreme* last = first;
  for (const std::size_t n : planes) {
    if (n > peak.plane) follow(n, last);
  }
  last = first;
  for (auto n = planes.rbegin(); n != planes.rend(); ++n) {
    if (*n < peak.plane) follow(*n, last);
  }
  return track;
}

/// What the tops of a series tell about its tolerance.
class ToleranceCheck {
 public:
  explicit ToleranceCheck(const SampledSeries& sampled) : all(sampled), planes(all.findFree()) {
    const RunSettings& settings = all.parameters.settings;
    const std::array<double, 2> hz{settings.getTolerance1(), settings.getTolerance2()};
    for (const std::size_t d : {0U, 1U}) {
      const double points = all.axes.hzToPoints(hz[d], static_cast<int>(d));
      tolerance[d] = std::floor(std::max(0.0, points) + 1e-6);
      if (points > 0 && points < 0.999) below.push_back(d);
    }
    isGiven = all.parameters.toleranceLine > 0;
    name = "TOLERANCE " + realToText(hz[0]) + " " + realToText(hz[1]) + (isGiven ? "" : " (the default)");
    for (const StrongPeak& peak : all.findPeaks(10)) take(peak);
  }

  void tell() const {
    const bool isEnough = tops >= kFewestTops;
    const bool doMove = isEnough && 100 * moved > 15 * tops;
    if (seen >= kFewestTops && walking >= kFewestPeaks && 100 * walking > 15 * seen) {
      tellTolerance(" is too small: " + std::to_string(walking) + " of " + std::to_string(seen) +
                    " peaks move out of it, from " + all.nameOf(firstLeft) +
                    " on; make it larger, or go from plane to "
                    "plane with the places found last");
    } else if (!below.empty() && (isGiven || doMove)) {
      tellTolerance(" is below a point of " + describePoints() + " and acts as 0 there" +
                    (doMove ? ", but peaks move: give at least a point" : "; write 0 if that is meant"));
    } else if (isEnough && !doMove && boxesMoved >= kFewestPeaks) {
      tellTolerance(": the boxes of " + std::to_string(boxesMoved) + " of " + std::to_string(tops) +
                    " peaks move although the peaks stay; TOLERANCE 0 0 keeps them");
    }
  }

 private:
  void take(const StrongPeak& peak);
  bool doBoxesMove(std::size_t j) const;
  bool isLeft(const Extreme& top, std::size_t n, std::size_t j) const;
  void findWalk(const Track& track, std::size_t j);

  std::string describePoints() const {
    std::string text;
    for (const std::size_t d : below) {
      text += std::string(text.empty() ? "" : " and ") + "dimension " + std::to_string(d + 1) + " (" +
              realToText(std::fabs(all.axes.hzPerPoint[d])) + " Hz)";
    }
    return text;
  }

  void tellTolerance(const std::string& text) const {
    const FileFindings ofRun{all.findings, Findings::Parameters, all.parameters.file};
    ofRun.add(true, all.parameters.toleranceLine, "warning: ", name, text);
  }

  const SampledSeries& all;
  const std::vector<std::size_t> planes;
  std::array<double, 2> tolerance{};  // whole points
  std::vector<std::size_t> below{};   // dimensions in which it is less than a point and more than 0
  bool isGiven = false;
  std::string name;
  std::size_t tops = 0;   // peaks that were followed
  std::size_t moved = 0;  // those of them that move
  std::size_t boxesMoved = 0;
  std::size_t seen = 0;  // peaks whose box is on the top in the first plane
  std::size_t walking = 0;
  std::size_t firstLeft = SIZE_MAX;
};

void ToleranceCheck::take(const StrongPeak& peak) {
  const Track track = followTop(all, peak, planes);
  if (track.empty()) return;
  ++tops;
  const Extreme& strongest = *track.at(peak.plane);
  double farthest = 0;
  for (const auto& [n, top] : track) {
    const double error = 5 * all.planes[n].noise / std::fabs(top->value);
    farthest = std::max(farthest, distance(*top, strongest) - error);
  }
  moved += farthest > 1.0 / 3;
  boxesMoved += doBoxesMove(peak.j);
  findWalk(track, peak.j);
}

bool ToleranceCheck::doBoxesMove(std::size_t j) const {
  const auto isStrong = [&](std::size_t n) { return std::fabs(all.heightOf(n, j)) > 10; };
  const auto hasMoved = [&](std::size_t n) {
    return isStrong(n) && all.series.getSighting(n, j).point != all.series.getSighting(0, j).point;
  };
  return all.isFree(0) && isStrong(0) && std::any_of(planes.begin(), planes.end(), hasMoved);
}

/// Whether a top lies where the search for it does not reach.
bool ToleranceCheck::isLeft(const Extreme& top, std::size_t n, std::size_t j) const {
  const Point& found = all.series.getSighting(0, j).point;
  const auto isBeyond = [&](std::size_t d) {
    return std::fabs(top.place[d] - static_cast<double>(found[d])) > tolerance[d] + 0.75;
  };
  return (isBeyond(0) || isBeyond(1)) &&
         std::fabs(top.value) > std::fabs(all.series.getSighting(n, j).height) + 2 * all.planes[n].noise;
}

void ToleranceCheck::findWalk(const Track& track, std::size_t j) {
  const auto& [start, top] = *track.begin();
  const Point& found = all.series.getSighting(0, j).point;
  const Extreme measured{{static_cast<float>(found[0]), static_cast<float>(found[1])}, 0};
  if (start != 0 || track.size() < 2 || distance(*top, measured) > 1) return;
  ++seen;
  std::size_t left = 0;
  std::size_t later = 0;
  std::size_t firstPlane = 0;
  for (const auto& [n, other] : track) {
    const bool isOut = n > 0 && distance(*other, *top) > 0.6 && isLeft(*other, n, j);
    if (isOut && left == 0) firstPlane = n;
    left += isOut;
    later += left > 0;
  }
  const bool isAlways = 10 * left >= 8 * later && (left > 1 || planes.size() == 2);
  if (left == 0 || !isAlways) return;
  ++walking;
  firstLeft = std::min(firstLeft, firstPlane);
}

}  // namespace

void checkMovement(const SampledSeries& all) {
  if (all.planes.size() > 1) ToleranceCheck(all).tell();
}

}  // namespace peakbox
