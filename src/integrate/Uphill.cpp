#include "integrate/Uphill.h"

#include <algorithm>
#include <cmath>

namespace peakbox {

std::optional<Point> findHigher(const Spectrum& spectrum, const Point& point, double noise) {
  const DataPlane& data = spectrum.getData();
  const double value = data[point[0]][point[1]];
  if (!isSure(value, noise)) return std::nullopt;
  const double sign = value < 0 ? -1.0 : 1.0;
  double highest = sign * value + noise;
  std::optional<Point> higher;
  for (std::int64_t a = point[0] - 1; a <= point[0] + 1; ++a) {
    for (std::int64_t b = point[1] - 1; b <= point[1] + 1; ++b) {
      if (!spectrum.getAxes().contains({a, b}) || !(sign * data[a][b] > highest)) continue;
      highest = sign * data[a][b];
      higher = {a, b};
    }
  }
  return higher;
}

Point climb(const Spectrum& spectrum, Point point, double noise) {
  constexpr int kMostSteps = 10;
  for (int step = 0; step < kMostSteps; ++step) {
    const std::optional<Point> higher = findHigher(spectrum, point, noise);
    if (!higher) break;
    point = *higher;
  }
  return point;
}

std::array<double, 2> interpolateTop(const Spectrum& spectrum, const Point& top) {
  std::array<double, 2> exact{};
  for (const std::size_t d : {0U, 1U}) {
    exact[d] = static_cast<double>(top[d]);
    Point before = top;
    Point after = top;
    --before[d];
    ++after[d];
    if (!spectrum.getAxes().contains(before) || !spectrum.getAxes().contains(after)) continue;
    const auto value = [&](const Point& point) { return spectrum.getData()[point[0]][point[1]]; };
    const double curvature = value(before) - 2 * value(top) + value(after);
    const double shift = 0.5 * (value(before) - value(after)) / curvature;
    if (std::isfinite(shift)) exact[d] += std::clamp(shift, -0.5, 0.5);
  }
  return exact;
}

}  // namespace peakbox
