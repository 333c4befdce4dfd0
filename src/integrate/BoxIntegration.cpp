#include <algorithm>
#include <cfloat>
#include <cmath>
#include <string>
#include <utility>

#include "base/Messages.h"
#include "integrate/BoxTable.h"

#ifdef __FAST_MATH__
#error "-ffast-math changes which values are equal, what a NaN does and the order of a sum: digits would differ"
#endif
#if FLT_EVAL_METHOD != 0
#error "arithmetic with more digits than its type has (x87: use -msse2 -mfpmath=sse) would change the last digit"
#endif

namespace peakbox {

namespace {

void refuseNaN(const BoxExtent& extent, int j, int dim) {
  if (!std::isnan(extent.low) && !std::isnan(extent.high)) return;
  fail("ERROR: Search area of peak #" + std::to_string(j) + " is not a number in dimension " + std::to_string(dim + 1) +
       ".\n");
}

/// The points of the plane that are searched. An extent between two points is widened to these two, and each end that
/// lies outside the plane moves to its nearest point.
Range findSearchRange(const BoxExtent& extent, int j, int dim, std::int64_t size) {
  double first = extent.firstPoint();
  double last = extent.lastPoint();
  if (first > last) {
    printMessage("WARNING: No data points are contained within the box for peak #" + std::to_string(j) +
                 "\nThe box was modified to contain the nearest two data points in the dimension " +
                 std::to_string(dim + 1) + ".\n");
    std::swap(first, last);
  }
  const auto toPlane = [&](double edge) {
    return static_cast<std::int64_t>(std::clamp(edge, 0.0, std::max(0.0, static_cast<double>(size - 1))));
  };
  return {toPlane(first), toPlane(last)};
}

/// The point of greatest magnitude; among equals the first, dimension 2 running fastest, and the positive one before
/// the negative one. A NaN is never greater or smaller, so it is found only where it is the first point.
Point findExtreme(const DataPlane& data, const Region& area) {
  Point maximumPoint{area[0].first, area[1].first};
  Point minimumPoint = maximumPoint;
  double maximum = data[maximumPoint[0]][maximumPoint[1]];
  double minimum = maximum;
  for (std::int64_t a = area[0].first; a <= area[0].last; ++a) {
    for (std::int64_t b = area[1].first; b <= area[1].last; ++b) {
      const double value = data[a][b];
      if (value > maximum) {
        maximum = value;
        maximumPoint = {a, b};
      }
      if (value < minimum) {
        minimum = value;
        minimumPoint = {a, b};
      }
    }
  }
  return maximum + minimum >= 0.0 ? maximumPoint : minimumPoint;
}

/// One value after the other, dimension 2 running fastest, so that the rounding of the sum never depends on the
/// compiler or the machine.
double sumBox(const DataPlane& data, const Region& box) {
  double sum = 0.0;
  for (std::int64_t a = box[0].first; a <= box[0].last; ++a) {
    for (std::int64_t b = box[1].first; b <= box[1].last; ++b) sum += data[a][b];
  }
  return sum;
}

}  // namespace

void BoxTable::integratePeak(int j, const Spectrum& spectrum, std::int32_t halfWidth1, std::int32_t halfWidth2) {
  const auto entry = static_cast<std::size_t>(j);
  const DataPlane& data = spectrum.getData();

  // What is no number in either dimension ends the run before a warning is given of the first.
  refuseNaN(extents1[entry], j, 0);
  refuseNaN(extents2[entry], j, 1);
  const Region area{findSearchRange(extents1[entry], j, 0, spectrum.getSize(0)),
                    findSearchRange(extents2[entry], j, 1, spectrum.getSize(1))};
  const Axes& axes = spectrum.getAxes();
  const Point peak = axes.contains({0, 0}) ? findExtreme(data, area) : Point{0, 0};
  const Region box{Range{peak[0] - halfWidth1, peak[0] + halfWidth1},
                   Range{peak[1] - halfWidth2, peak[1] + halfWidth2}};
  if (!axes.contains({box[0].first, box[1].first}) || !axes.contains({box[0].last, box[1].last})) {
    fail("ERROR: Box for peak #" + std::to_string(j) + " centered at (" + std::to_string(peak[0]) + "," +
             std::to_string(peak[1]) + ") --\n\tBox extends outside bounds of data array!\n",
         0);
  }
  intensities[entry] = sumBox(data, box);
  extents1[entry].centre = static_cast<double>(peak[0]);
  extents2[entry].centre = static_cast<double>(peak[1]);
}

}  // namespace peakbox
