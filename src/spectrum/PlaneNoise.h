#pragma once

#include <array>
#include <cstdint>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// The noise of the sum of a box of points.
struct PlaneNoise {
  double deviation = 0.0;  // standard deviation, in the unit of the data
  double error = 0.0;      // that of the deviation itself
  double tail = 1.0;       // above 1 where signal is left in the estimate
  std::size_t values = 0;  // that it rests upon, in that of its parts that has fewest
};

/// Estimates it for boxes of `box` points, direct dimension first. The noise of a linearly processed plane is
/// separable: its covariance is the product of one along each dimension. So the variance of a box is that of its rows
/// in a plane filtered along the columns, times that of its columns in one filtered along the rows, divided by that of
/// points filtered both ways; and filters take away feet of peaks, baselines and ridges, which boxes are full of.
/// Zeros, with which planes are filled up, and what is not finite are no noise.
PlaneNoise estimateNoise(const Spectrum& spectrum, const std::array<std::int64_t, 2>& box);

/// Values that an estimate rests upon, in each of its parts.
inline constexpr std::int64_t kSampleSize = 60000;

/// The noise of a point, estimated alike from so many values or fewer; 0 where there is none or too little to tell.
double estimatePointNoise(const Spectrum& spectrum, std::int64_t sampleSize = 1 << 14);

}  // namespace peakbox
