#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "base/Messages.h"
#include "integrate/BoxTable.h"

#ifdef __FAST_MATH__
#error "-ffast-math changes which values are equal, what a NaN does and the order of a sum: digits would differ"
#endif

namespace peakbox {

namespace {

struct Point {
  std::int64_t a;
  std::int64_t b;
};

/// Points from first to last, both included.
struct Range {
  std::int64_t first;
  std::int64_t last;
};

/// Whole points of a search extent, still as doubles: edges may be infinite or beyond any integer.
struct Edges {
  double first;
  double last;
};

Edges findWholePoints(const BoxExtent& extent, int j, int dim) {
  if (std::isnan(extent.low) || std::isnan(extent.high)) {
    fail("ERROR: Search area of peak #" + std::to_string(j) + " is not a number in dimension " +
         std::to_string(dim + 1) + ".\n");
  }
  return {std::ceil(extent.low), std::floor(extent.high)};
}

/// The points of the plane that are searched. An extent between two points is widened to these two, and each end that
/// lies outside the plane moves to its nearest point.
Range findSearchRange(Edges edges, int j, int dim, std::int64_t size) {
  if (edges.first > edges.last) {
    printMessage("WARNING: No data points are contained within the box for peak #" + std::to_string(j) +
                 "\nThe box was modified to contain the nearest two data points in the dimension " +
                 std::to_string(dim + 1) + ".\n");
    std::swap(edges.first, edges.last);
  }
  const auto toPlane = [&](double edge) {
    return static_cast<std::int64_t>(std::clamp(edge, 0.0, static_cast<double>(size - 1)));
  };
  return {toPlane(edges.first), toPlane(edges.last)};
}

/// The point of greatest magnitude; among equals the first, dimension 2 running fastest, and the positive one before
/// the negative one. A NaN is never greater or smaller, so it is found only where it is the first point.
Point findExtreme(const DataPlane& data, const Range& range1, const Range& range2) {
  Point maximumPoint{range1.first, range2.first};
  Point minimumPoint = maximumPoint;
  double maximum = data[range1.first][range2.first];
  double minimum = maximum;
  for (std::int64_t a = range1.first; a <= range1.last; ++a) {
    for (std::int64_t b = range2.first; b <= range2.last; ++b) {
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
double sumBox(const DataPlane& data, const Range& range1, const Range& range2) {
  double sum = 0.0;
  for (std::int64_t a = range1.first; a <= range1.last; ++a) {
    for (std::int64_t b = range2.first; b <= range2.last; ++b) sum += data[a][b];
  }
  return sum;
}

}  // namespace

void BoxTable::integratePeak(int j, const Spectrum& spectrum, std::int32_t halfWidth1, std::int32_t halfWidth2) {
  const auto entry = static_cast<std::size_t>(j);
  const DataPlane& data = spectrum.getData();
  const std::int64_t size1 = spectrum.getSize(0);
  const std::int64_t size2 = spectrum.getSize(1);

  // What is no number in either dimension ends the run before a warning is given of the first.
  const Edges edges1 = findWholePoints(extents1[entry], j, 0);
  const Edges edges2 = findWholePoints(extents2[entry], j, 1);
  const Range search1 = findSearchRange(edges1, j, 0, size1);
  const Range search2 = findSearchRange(edges2, j, 1, size2);
  const Point peak = findExtreme(data, search1, search2);

  const Range box1{peak.a - halfWidth1, peak.a + halfWidth1};
  const Range box2{peak.b - halfWidth2, peak.b + halfWidth2};
  if (box1.first < 0 || box1.last >= size1 || box2.first < 0 || box2.last >= size2) {
    fail("ERROR: Box for peak #" + std::to_string(j) + " centered at (" + std::to_string(peak.a) + "," +
             std::to_string(peak.b) + ") --\n\tBox extends outside bounds of data array!\n",
         0);
  }
  intensities[entry] = sumBox(data, box1, box2);
  extents1[entry].centre = static_cast<double>(peak.a);
  extents2[entry].centre = static_cast<double>(peak.b);
}

}  // namespace peakbox
