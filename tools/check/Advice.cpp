#include "check/Advice.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <map>
#include <optional>
#include <sstream>

#include "base/Refusal.h"
#include "base/RobustSpread.h"
#include "check/Checks.h"
#include "integrate/Uphill.h"
#include "spectrum/PlaneNoise.h"

namespace peakbox {

namespace {

constexpr double kClearHeight = 10.0;    // times the noise, at which a peak is measured
constexpr double kFollowedHeight = 8.0;  // and at which it is followed further

/// A peak that has been found, and how far its top went from there.
struct Found {
  std::size_t peak;
  Point start;
  std::array<double, 2> exact;   // of the start, between the points
  std::array<double, 2> errors;  // of that
  double height;
  Point last;
  std::array<double, 2> moved{};  // whole points
  double drift = 0;               // the greatest of both dimensions that is more than an error
};

/// By how much noise may move a top between its neighbours, in points.
std::array<double, 2> estimateErrors(const Spectrum& spectrum, const Point& top, double noise) {
  std::array<double, 2> errors{};
  for (const std::size_t d : {0U, 1U}) {
    Point before = top;
    Point after = top;
    --before[d];
    ++after[d];
    if (!spectrum.getAxes().contains(before) || !spectrum.getAxes().contains(after)) continue;
    const auto value = [&](const Point& point) { return spectrum.getData()[point[0]][point[1]]; };
    const double curvature = std::fabs(value(before) - 2 * value(top) + value(after));
    errors[d] = curvature > 2 * noise ? 2 * noise / curvature : 1.0;
  }
  return errors;
}

/// How far the line reaches from its top to half the height, along a dimension to one side; nothing where it rises
/// before or leaves the plane.
std::optional<double> findHalf(const Spectrum& spectrum, Point point, std::size_t dim, int step, double noise) {
  const DataPlane& data = spectrum.getData();
  const double height = data[point[0]][point[1]];
  double before = 1.0;
  for (double distance = 1;; ++distance) {
    point[dim] += step;
    if (!spectrum.getAxes().contains(point)) return std::nullopt;
    const double value = data[point[0]][point[1]] / height;
    if (!std::isfinite(value)) return std::nullopt;
    if (value <= 0.5) return distance - (0.5 - value) / (before - value);
    if (value > before + noise / std::fabs(height)) return std::nullopt;
    before = value;
  }
}

class Adviser {
 public:
  explicit Adviser(const std::string& parameterFile);
  std::string write();

 private:
  void place();
  void search(std::size_t j, double noise);
  void measureWidths(const Point& top, double noise);
  void follow(double noise);
  Found sight(std::size_t j, const Point& point, double noise) const;
  std::string describeClosest(const std::array<double, 2>& widths, double& closest) const;
  std::array<double, 2> findReach() const;

  RunSettings settings;
  Spectrum spectrum;
  Axes axes;  // of the first spectrum
  PeakList peaks;
  std::optional<BoxTable> areas;
  std::vector<bool> isFound;
  std::vector<Found> found;
  std::array<std::vector<double>, 2> widths;
};

Adviser::Adviser(const std::string& parameterFile) {
  const char* const arguments[] = {"peakbox", "-i", parameterFile.c_str()};
  settings.parseArguments(3, arguments);
  if (*settings.getPeakListFile() == '\0') refuse(parameterFile, "no PEAKLIST specified");
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  axes = spectrum.getAxes();
  if (!axes.isUsable(0) || !axes.isUsable(1)) refuse(settings.getSpectrumFile(0), "its axes are not usable");
  peaks.read(settings.getPeakListFile(), spectrum, false);
  place();
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), false);
    const double noise = estimatePointNoise(spectrum);
    follow(noise);
    for (std::size_t j = 0; j < isFound.size(); ++j) {
      if (!isFound[j]) search(j, noise);
    }
  }
}

void Adviser::place() {
  constexpr double kMostSizes = 1e4;  // beyond which no spectrum can mean it, and folding it would take seconds
  areas.emplace(static_cast<unsigned>(peaks.getCount()), 0.0, 0.0);
  for (int j = 0; j < peaks.getCount(); ++j) {
    for (const int dim : {0, 1}) {
      const double reach = std::fabs(peaks.getPosition(j, dim)) + std::fabs(peaks.getBoundsWidth(j, dim));
      if (reach > kMostSizes * spectrum.getSize(dim))
        refuse(settings.getPeakListFile(),
               peaks.getLabel(j) + ": more than 10000 spectral widths outside the spectrum");
    }
    areas->placeBox(j, spectrum, peaks);
    isFound.push_back(isNoiseLabel(peaks.getLabel(j)));  // of these nothing is to be found
  }
}

void Adviser::search(std::size_t j, double noise) {
  const int peak = static_cast<int>(j);
  areas->integratePeak(peak, spectrum, 0, 0);
  const Point point{std::llround(areas->getExtent1(peak).centre), std::llround(areas->getExtent2(peak).centre)};
  const double height = spectrum.getData()[point[0]][point[1]];
  if (!(std::fabs(height) > 0 && std::fabs(height) >= kClearHeight * noise)) return;
  const Point top = climb(spectrum, point, noise);
  isFound[j] = true;
  found.push_back(sight(j, top, noise));
  measureWidths(top, noise);
}

Found Adviser::sight(std::size_t j, const Point& top, double noise) const {
  const double height = spectrum.getData()[top[0]][top[1]];
  return {j, top, interpolateTop(spectrum, top), estimateErrors(spectrum, top, noise), height, top};
}

void Adviser::measureWidths(const Point& top, double noise) {
  for (const std::size_t d : {0U, 1U}) {
    const std::optional<double> before = findHalf(spectrum, top, d, -1, noise);
    const std::optional<double> after = findHalf(spectrum, top, d, 1, noise);
    if (before || after) widths[d].push_back(before.value_or(after.value_or(0)) + after.value_or(before.value_or(0)));
  }
}

/// Goes uphill from the last places. Of peaks that come to one top it is that of the nearest.
void Adviser::follow(double noise) {
  constexpr double kGrown = 3.0;  // times its height: the peak is known better than before
  std::map<Point, std::pair<double, Found*>> tops;
  for (Found& one : found) {
    const Point top = climb(spectrum, one.last, 0.5 * noise);  // a step may lead to the foot of the line
    const double way = std::hypot(top[0] - one.last[0], top[1] - one.last[1]);
    const auto [other, isFirst] = tops.emplace(top, std::pair(way, &one));
    if (!isFirst && way < other->second.first) other->second = {way, &one};
  }
  for (const auto& [top, nearest] : tops) {
    Found& one = *nearest.second;
    const Found now = sight(one.peak, top, noise);
    const bool isClear = std::fabs(now.height) >= kFollowedHeight * noise && (now.height > 0) == (one.height > 0);
    if (!isClear) continue;
    one.last = top;
    if (std::fabs(now.height) > kGrown * std::fabs(one.height)) {
      one = now;
      continue;
    }
    for (const std::size_t d : {0U, 1U}) {
      one.moved[d] = std::max(one.moved[d], std::fabs(static_cast<double>(top[d] - one.start[d])));
      const double way = std::fabs(now.exact[d] - one.exact[d]);
      one.drift = std::max(one.drift, way - now.errors[d] - one.errors[d]);
    }
  }
}

/// The two tops that are closest, measured in widths by the dimension in which they are farther apart.
std::string Adviser::describeClosest(const std::array<double, 2>& width, double& closest) const {
  std::vector<Found> order = found;
  std::sort(order.begin(), order.end(), [](const Found& a, const Found& b) { return a.exact < b.exact; });
  const auto areSame = [](const Found& a, const Found& b) { return a.start == b.start; };
  order.erase(std::unique(order.begin(), order.end(), areSame), order.end());
  std::pair<std::size_t, std::size_t> pair{0, 1};
  const auto measure = [&](std::size_t d, std::size_t i, std::size_t k) {
    return std::fabs(order[i].exact[d] - order[k].exact[d]);
  };
  closest = HUGE_VAL;
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t k = i + 1; k < order.size() && measure(0, i, k) < closest * width[0]; ++k) {
      if (std::max(measure(0, i, k), measure(1, i, k)) < 1) continue;  // one top, which the check tells
      const double distance = std::max(measure(0, i, k) / width[0], measure(1, i, k) / width[1]);
      if (distance >= closest) continue;
      closest = distance;
      pair = {i, k};
    }
  }
  if (!std::isfinite(closest)) return "";
  if (order[pair.first].peak > order[pair.second].peak) std::swap(pair.first, pair.second);
  std::ostringstream text;
  const auto name = [&](std::size_t i) { return peaks.getLabel(static_cast<int>(order[i].peak)); };
  text << std::fixed << std::setprecision(1) << "# The closest pair, " << name(pair.first) << " and "
       << name(pair.second) << ", is " << measure(0, pair.first, pair.second) << " and "
       << measure(1, pair.first, pair.second) << " points apart.\n";
  return text.str();
}

/// What holds nine of ten peaks, in points.
std::array<double, 2> Adviser::findReach() const {
  std::array<std::vector<double>, 2> sorted;
  for (const std::size_t d : {0U, 1U}) {
    for (const Found& one : found) sorted[d].push_back(one.moved[d]);
    std::sort(sorted[d].begin(), sorted[d].end());
  }
  std::array<double, 2> reach{};
  for (std::size_t rank = (9 * found.size() - 1) / 10; rank < found.size(); ++rank) {
    reach = {sorted[0][rank], sorted[1][rank]};
    const auto isHeld = [&](const Found& one) { return one.moved[0] <= reach[0] && one.moved[1] <= reach[1]; };
    if (10 * std::count_if(found.begin(), found.end(), isHeld) >= 9 * std::ssize(found)) break;
  }
  return reach;
}

std::string Adviser::write() {
  if (found.size() < kFewestPeaks || widths[0].empty() || widths[1].empty()) {
    refuse(settings.getPeakListFile(), std::to_string(found.size()) + " of " + std::to_string(peaks.getCount()) +
                                           " peaks are ten times above the noise, too few to go by");
  }
  const std::array<double, 2> hz{std::fabs(axes.hzPerPoint[0]), std::fabs(axes.hzPerPoint[1])};
  const std::array<double, 2> ppm{hz[0] / std::fabs(axes.observeMHz[0]), hz[1] / std::fabs(axes.observeMHz[1])};
  const std::array<double, 2> width{takeMedian(widths[0]), takeMedian(widths[1])};
  double closest = 0;
  const std::string pair = describeClosest(width, closest);
  const double bounds = std::clamp(closest, 1.0, 2.0);  // in widths
  const auto halve = [](double points) { return std::max(0L, std::lround(points / 2 - 0.5)); };
  const auto isMoved = [](const Found& one) { return one.drift > 1.0 / 3; };
  const auto moved = std::count_if(found.begin(), found.end(), isMoved);
  std::ostringstream text;
  text << "# A point has " << hz[0] << " Hz (" << ppm[0] << " ppm) in dimension 1, " << hz[1] << " Hz (" << ppm[1]
       << " ppm) in dimension 2.\n# Median width at half height of " << found.size() << " of " << peaks.getCount()
       << " peaks, those ten times above the noise: " << std::fixed << std::setprecision(1) << width[0] << " and "
       << width[1] << " points.\n"
       << pair << std::defaultfloat << std::setprecision(2) << "# Bounds for the list: peakbox-list -b "
       << bounds * width[0] * ppm[0] << ',' << bounds * width[1] * ppm[1] << "\nBOXSIZE " << halve(width[0]) << ' '
       << halve(width[1]) << '\n'
       << std::setprecision(6);
  if (10 * moved <= std::ssize(found)) return text.str() + "# The peaks stay where they are.\nTOLERANCE 0 0\n";
  const std::array<double, 2> reach = findReach();
  const auto toHz = [&](std::size_t d) { return std::ceil(10 * reach[d] * hz[d]) / 10; };
  text << "# " << moved << " of " << found.size() << " peaks move; nine of ten by no more than " << reach[0] << " and "
       << reach[1] << " points.\n";
  if (std::max(reach[0] / width[0], reach[1] / width[1]) > closest / 2)
    text << "# That is more than half the way from peak to peak: better measure from plane to plane.\n";
  text << "TOLERANCE " << toHz(0) << ' ' << toHz(1) << '\n';
  return text.str();
}

}  // namespace

std::string advise(const std::string& parameterFile) { return Adviser(parameterFile).write(); }

}  // namespace peakbox
