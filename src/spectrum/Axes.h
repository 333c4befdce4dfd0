#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace peakbox {

/// A data point of a plane, direct dimension first, counted from 0.
using Point = std::array<std::int64_t, 2>;

/// Points from first to last of one dimension, both included.
struct Range {
  std::int64_t first;
  std::int64_t last;
};

/// A rectangle of points, direct dimension first.
using Region = std::array<Range, 2>;

/// The two axes of a plane, direct dimension (`dim` 0) first. Points count from 0 and may be fractional; for a positive
/// sweep width the ppm axis falls as the point rises:
///     ppm = originPpm - (point + 1) * hzPerPoint / observeMHz.
/// A header with a size, a frequency or a sweep width of zero makes conversions infinite or NaN.
struct Axes {
  std::array<std::int32_t, 2> sizes{};
  std::array<double, 2> observeMHz{};
  std::array<double, 2> hzPerPoint{};
  std::array<double, 2> originPpm{};

  /// Widths, in points; the sign is kept.
  double hzToPoints(double hz, int dim) const { return hz / hzPerPoint[index(dim)]; }
  double ppmWidthToPoints(double ppm, int dim) const { return ppm * observeMHz[index(dim)] / hzPerPoint[index(dim)]; }

  /// Positions.
  double pointToPpm(double point, int dim) const {
    return originPpm[index(dim)] - (1 + point) * hzPerPoint[index(dim)] / observeMHz[index(dim)];
  }
  double ppmToPoint(double ppm, int dim) const {
    return (originPpm[index(dim)] - ppm) * observeMHz[index(dim)] / hzPerPoint[index(dim)] - 1;
  }

  /// Whether there are points, and points and ppm can be turned into each other.
  bool isUsable(int dim) const {
    const double perPoint = pointToPpm(0, dim) - pointToPpm(1, dim);
    return sizes[index(dim)] > 0 && std::isfinite(perPoint) && perPoint != 0;
  }

  /// How far a dimension is off from that of `first`, in points of that, at the end where it is farther.
  double findShift(const Axes& first, int dim) const {
    const int last = sizes[index(dim)] - 1;
    const double ppmPerPoint = (first.pointToPpm(0, dim) - first.pointToPpm(last, dim)) / (last > 1 ? last : 1);
    const double shift = (pointToPpm(0, dim) - first.pointToPpm(0, dim)) / ppmPerPoint;
    const double lastShift = (pointToPpm(last, dim) - first.pointToPpm(last, dim)) / ppmPerPoint;
    return std::fabs(shift) > std::fabs(lastShift) ? shift : lastShift;
  }

  /// Whether a point lies in the plane.
  bool contains(const Point& point) const {
    return point[0] >= 0 && point[0] < sizes[0] && point[1] >= 0 && point[1] < sizes[1];
  }

 private:
  static constexpr std::size_t index(int dim) { return static_cast<std::size_t>(dim); }
};

}  // namespace peakbox
