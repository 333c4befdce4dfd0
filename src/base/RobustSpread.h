#pragma once

#include <cstddef>
#include <vector>

namespace peakbox {

/// The middle value, of an even number the upper one of two; changes the order of `values`, of which there is at least
/// one.
double takeMedian(std::vector<double>& values);

/// Centre and standard deviation of Gaussian noise, estimated from values of which the outliers are signal.
struct Spread {
  double centre = 0.0;
  double deviation = 0.0;
  std::size_t used = 0;
};

/// Median, and 1.4826 times the median absolute deviation; both 0 without values. All values are to be finite.
Spread takeMedianSpread(std::vector<double> values);

/// Mean and standard deviation of the values within three standard deviations of the mean, begun with the median's
/// spread and repeated until nothing changes. All values are to be finite.
Spread estimateClippedSpread(const std::vector<double>& values);

}  // namespace peakbox
