#include "plot/Plane.h"

#include <algorithm>

#include "plot/Contours.h"
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
  Grid grid;
  std::string axes;
  for (const auto d : kDims) {
    first[d] = static_cast<int>(std::max(0.0, std::floor(window.low[d])));
    last[d] = static_cast<int>(std::min(run.axes.sizes[d] - 1.0, std::ceil(window.high[d])));
    step[d] = (last[d] - first[d]) / mostPoints + 1;
    for (int point = first[d]; point <= last[d]; point += step[d]) {
      grid.places[d].push_back(run.axes.pointToPpm(point + 0.5 * (step[d] - 1), d));
    }
    const auto [low, high] =
        std::minmax({run.axes.pointToPpm(window.low[d], d), run.axes.pointToPpm(window.high[d], d)});
    axes += writeAxis("xy"[d], high, low, 0.1);
  }
  for (int b = first[1]; b <= last[1]; b += step[1]) {
    for (int a = first[0]; a <= last[0]; a += step[0]) {
      const std::array<int, 2> end{std::min(a + step[0] - 1, last[0]), std::min(b + step[1] - 1, last[1])};
      grid.values.push_back(findExtreme(run.spectrum.getData(), {a, b}, end));
    }
  }
  const auto [lowest, highest] = std::minmax_element(grid.values.begin(), grid.values.end());
  const double tallest = std::max(*highest, -*lowest);
  const bool hasNegative = -*lowest >= base;
  // A point that is not seen: there must be one.
  std::string contours = compose(grid.places[0][0], " ", grid.places[1][0], " 0\n\n");
  for (double level = base; level > 0 && level <= tallest && level < 1e300; level *= factor) {
    contours += traceContours(grid, level);
    if (hasNegative) contours += traceContours(grid, -level);
  }
  return compose("$contours << EOD\n", contours, "EOD\ncontours = ", hasNegative ? "bothSigns\n" : "oneSign\n", axes);
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
