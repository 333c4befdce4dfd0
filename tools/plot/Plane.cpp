#include "plot/Plane.h"

#include <algorithm>

#include "plot/Drawing.h"
#include "plot/Gnuplot.h"

namespace peakbox {

namespace {

/// The value of greatest magnitude in a part of the plane.
double findExtreme(const DataPlane& data, const std::array<int, 2>& first, const std::array<int, 2>& last) {
  double extreme = 0;
  for (int j = first[1]; j <= last[1]; ++j) {
    for (int i = first[0]; i <= last[0]; ++i) {
      if (std::fabs(data[i][j]) > std::fabs(extreme)) extreme = data[i][j];
    }
  }
  return extreme;
}

}  // namespace

void hold(Window& window, const Window& other) {
  for (const auto d : kDims) {
    window.low[d] = std::min(window.low[d], other.low[d]);
    window.high[d] = std::max(window.high[d], other.high[d]);
  }
}

std::string writeWindow(const MeasuredRun& run, const Window& window, double base, double factor, int mostPoints) {
  std::array<int, 2> first{};
  std::array<int, 2> last{};
  std::array<int, 2> step{};
  for (const auto d : kDims) {
    first[d] = static_cast<int>(std::max(0.0, std::floor(window.low[d])));
    last[d] = static_cast<int>(std::min(run.axes.sizes[d] - 1.0, std::ceil(window.high[d])));
    step[d] = (last[d] - first[d]) / mostPoints + 1;
  }
  const auto toPpm = [&](int point, std::uint8_t d) { return run.axes.pointToPpm(point + 0.5 * (step[d] - 1), d); };
  std::string grid = std::to_string((last[0] - first[0]) / step[0] + 1);
  for (int a = first[0]; a <= last[0]; a += step[0]) grid += compose(" ", toPpm(a, 0));
  double lowest = 0;
  double highest = 0;
  for (int b = first[1]; b <= last[1]; b += step[1]) {
    std::ostringstream row;
    row.precision(4);
    for (int a = first[0]; a <= last[0]; a += step[0]) {
      const std::array<int, 2> end{std::min(a + step[0] - 1, last[0]), std::min(b + step[1] - 1, last[1])};
      const double extreme = findExtreme(run.spectrum.getData(), {a, b}, end);
      row << ' ' << extreme;
      lowest = std::min(lowest, extreme);
      highest = std::max(highest, extreme);
    }
    grid += compose("\n", toPpm(b, 1), row.str());
  }
  const double tallest = std::max(highest, -lowest);
  const bool hasNegative = -lowest >= base;
  std::string levels = compose(tallest > 0 ? 2 * tallest : 1);  // there must be one
  for (double level = base; level > 0 && level <= tallest && level < 1e300; level *= factor) {
    levels += compose(",", level, hasNegative ? compose(",", -level) : "");
  }
  std::string axes;
  for (const auto d : kDims) {
    const auto [low, high] =
        std::minmax({run.axes.pointToPpm(window.low[d], d), run.axes.pointToPpm(window.high[d], d)});
    axes += writeAxis("xy"[d], high, low, 0.1);
  }
  return compose("$grid << EOD\n", grid, "\nEOD\nlevels = '", levels,
                 "'\ncontours = ", hasNegative ? "bothSigns\n" : "oneSign\n", kContours, axes);
}

std::string writeMiddle(const MeasuredRun& run, const Window& window) {
  const auto toPpm = [&](std::uint8_t d) { return run.axes.pointToPpm(0.5 * (window.low[d] + window.high[d]), d); };
  return compose(toPpm(0), ",", toPpm(1));
}

std::string writeOutline(const MeasuredRun& run, const Window& window, const char* style) {
  return compose("set object rectangle from ", writeMiddle(run, {window.low, window.low}), " to ",
                 writeMiddle(run, {window.high, window.high}), " clip fillstyle empty border @", style, "\n");
}

}  // namespace peakbox
