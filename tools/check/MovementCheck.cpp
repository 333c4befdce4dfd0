#include "check/MovementCheck.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "integrate/Uphill.h"

namespace peakbox {

namespace {

/// By how many points, up to 64, a plane is displaced against the one that has these tops; nothing where it shows too
/// few of them anywhere else.
std::optional<Point> findDisplacement(const Spectrum& spectrum, double noise, std::vector<PeakTop> tops) {
  constexpr std::int64_t kReach = 64;
  constexpr std::size_t kEnoughPeaks = 40;
  tops.resize(std::min(tops.size(), kEnoughPeaks));
  double mostShown = 0;
  std::size_t count = 0;
  Point displacement{};
  for (std::int64_t a = -kReach; a <= kReach; ++a) {
    for (std::int64_t b = -kReach; b <= kReach; ++b) {
      std::vector<double> shown;
      for (const PeakTop& top : tops) {
        const Point point{top.point[0] + a, top.point[1] + b};
        if (!spectrum.getAxes().contains(point)) continue;
        const double value = spectrum.getData()[point[0]][point[1]];
        if (isSure(value, noise) && (value > 0) == (top.height > 0)) shown.push_back(std::min(value / top.height, 1.0));
      }
      const double sum = std::accumulate(shown.begin(), shown.end(), 0.0);
      if (sum <= mostShown) continue;
      mostShown = sum;
      count = shown.size();
      displacement = {a, b};
    }
  }
  const bool isFound = count >= kFewestPeaks && count * 10 >= tops.size() * 6 && displacement != Point{};
  return isFound ? std::optional(displacement) : std::nullopt;
}

bool areNearlyAll(std::ptrdiff_t some, std::size_t all) { return static_cast<std::size_t>(some) * 10 >= all * 8; }

}  // namespace

void MovementCheck::follow(const Series& series, const Spectrum& spectrum) {
  const std::size_t last = series.getIndices().size() - 1;
  if (last == 0) return findTops(series, spectrum);
  compareTops(series.getIndices()[last], series.getNoise(last), spectrum);
}

/// If the tops of most peaks are not where they were found, the list is displaced.
void MovementCheck::findTops(const Series& series, const Spectrum& spectrum) {
  std::array<std::vector<double>, 2> moved;
  const double noise = series.getNoise(0);
  for (std::size_t j = 0; j < series.getPeakCount(); ++j) {
    const Sighting& found = series.getSighting(0, j);  // a lost one has no height
    if (isNoiseLabel(peaks.getLabel(j)) || !isSure(found.height, noise)) continue;
    const Point top = climb(spectrum, found.point, noise);
    tops.push_back({top, interpolateTop(spectrum, top), spectrum.getData()[top[0]][top[1]]});
    for (const std::size_t d : {0U, 1U}) moved[d].push_back(static_cast<double>(top[d] - found.point[d]));
  }
  noteMovement(peaks.file, "most peaks of the list are off their tops in the first spectrum", moved);
}

void MovementCheck::compareTops(int k, double noise, const Spectrum& spectrum) {
  std::array<std::vector<double>, 2> moved;
  OddTops missing{2 * kSureHeight * noise, {}};
  OddTops turned{0, {}};
  for (std::size_t t = 0; t < tops.size(); ++t) {
    PeakTop& top = tops[t];
    const Point point = climb(spectrum, top.point, noise);
    const double value = spectrum.getData()[point[0]][point[1]];
    if (!isSure(value, noise)) {
      missing.tops.push_back(t);
      continue;
    }
    const bool isTurned = (value > 0) != (top.height > 0);
    if (isTurned) turned.tops.push_back(t);
    if (!isTurned) std::tie(top.lastSeen, top.lastHeight) = std::pair(k, value);
    const std::array<double, 2> exact = interpolateTop(spectrum, point);
    for (const std::size_t d : {0U, 1U}) moved[d].push_back(exact[d] - top.exact[d]);
  }
  if (missing.tops.size() > moved[0].size() / 2) {
    const std::optional<Point> displacement = findDisplacement(spectrum, noise, tops);
    if (!displacement) {
      oddTops[{false, k}] = missing;
      return;
    }
    for (const std::size_t d : {0U, 1U}) moved[d].assign(kFewestPeaks, static_cast<double>((*displacement)[d]));
  } else if (areNearlyAll(std::ssize(turned.tops), moved[0].size())) {
    oddTops[{true, k}] = turned;
  }
  noteMovement(settings.getSpectrumFile(k), "all peaks have moved against the first spectrum", moved);
}

/// Notes what most peaks share.
void MovementCheck::noteMovement(const std::string& file, const std::string& what,
                                 std::array<std::vector<double>, 2> moved) {
  constexpr double kMovedPoints = 0.85;  // tops are known to a fraction
  for (const std::size_t d : {0U, 1U}) {
    if (moved[d].size() < kFewestPeaks) return;
    const double median = takeMedian(moved[d]);
    const auto follows = [=](double points) { return std::fabs(points - median) < 0.5 * std::fabs(median); };
    const auto followers = std::count_if(moved[d].begin(), moved[d].end(), follows);
    if (std::fabs(median) < kMovedPoints || !areNearlyAll(followers, moved[d].size())) continue;
    const std::string points = realToText(std::round(10 * median) / 10);
    movements.emplace_back(file, what + ", by about " + points + " points in dimension " + std::to_string(d + 1));
  }
}

void MovementCheck::tell(Findings& findings) const {
  for (const auto& [file, text] : movements) findings.add(Findings::Measurement, file, 0, "warning: " + text);
  for (const auto& [key, odd] : oddTops) {
    const FileFindings ofSpectrum{findings, Findings::Measurement, settings.getSpectrumFile(key.second)};
    const std::string text = describeOdd(key.first, key.second, odd);
    ofSpectrum.add(!text.empty(), 0, "warning: ", text);
  }
}

/// Empty where a later spectrum shows too few of the tops.
std::string MovementCheck::describeOdd(bool areTurned, int k, const OddTops& odd) const {
  const auto isExpected = [&](std::size_t t) {
    return tops[t].lastSeen > k && std::min(std::fabs(tops[t].height), std::fabs(tops[t].lastHeight)) >= odd.height;
  };
  const auto count = std::count_if(odd.tops.begin(), odd.tops.end(), isExpected);
  const bool areMost = areTurned ? areNearlyAll(count, odd.tops.size()) : 2 * count > std::ssize(tops);
  if (!areMost || count < std::ptrdiff_t{kFewestPeaks}) return "";
  return areTurned ? "the peaks have the other sign than in the first and in a later spectrum: was it phased alike?"
                   : std::to_string(count) + " of " + std::to_string(tops.size()) +
                         " peaks that the first and a later spectrum show are not seen here: another sample, a wrong "
                         "plane or one that was not processed?";
}

}  // namespace peakbox
