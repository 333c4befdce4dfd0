#pragma once

#include <array>
#include <optional>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// Times the noise of a point below which a peak is not trusted.
inline constexpr double kSureHeight = 5.0;

inline bool isSure(double height, double noise) {
  return std::fabs(height) > 0 && std::fabs(height) >= kSureHeight * noise;
}

/// The highest neighbour of a point that is higher than it by more than the noise; of a negative point the lowest.
/// Nothing where there is none, or where the point itself is in the noise.
std::optional<Point> findHigher(const Spectrum& spectrum, const Point& point, double noise);

/// The top that is reached uphill from a point in a few steps.
Point climb(const Spectrum& spectrum, Point point, double noise);

/// A top between the points, from the parabolas through it and its neighbours.
std::array<double, 2> interpolateTop(const Spectrum& spectrum, const Point& top);

}  // namespace peakbox
