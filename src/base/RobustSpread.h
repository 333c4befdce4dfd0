#pragma once

#include <vector>

namespace peakbox {

/// The middle value, of an even number the upper one of two; changes the order of `values`, of which there is at least
/// one.
double takeMedian(std::vector<double>& values);

/// The median, and 1.4826 times the median absolute deviation from it, which is the standard deviation of Gaussian
/// noise; both 0 without values. All values are to be finite.
struct Spread {
  double centre = 0.0;
  double deviation = 0.0;
};
Spread takeMedianSpread(std::vector<double> values);

/// The standard deviation of Gaussian noise around 0, and how much more there is in its tails than noise leaves there:
/// 1 for noise alone.
struct Core {
  double deviation = 0.0;
  double tail = 1.0;
};

/// From values of which the outliers are signal: what lies within twice the deviation, lowered by as much as the tails
/// tell that outliers are among that, too. All values are to be finite. A deviation of 0 without values, and where a
/// quarter of them is 0.
Core estimateCore(std::vector<double> values);

}  // namespace peakbox
