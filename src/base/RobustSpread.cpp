#include "base/RobustSpread.h"

#include <algorithm>
#include <cmath>

namespace peakbox {

namespace {

/// The deviation of noise of which the values within `reach` deviations are taken: these have `kept` of it. Begun with
/// `deviation`, and repeated until it stays.
double cut(const std::vector<double>& magnitudes, double reach, double kept, double deviation) {
  constexpr double kSettled = 1e-4;  // relative, far less than the estimate's own error
  constexpr int kMostRounds = 1000;  // a value at the edge may go in and out for ever
  for (int round = 0; round < kMostRounds; ++round) {
    const double limit = reach * deviation;
    double squares = 0;
    double used = 0;
    for (const double magnitude : magnitudes) {
      const double isUsed = magnitude <= limit ? 1 : 0;
      squares += isUsed * magnitude * magnitude;
      used += isUsed;
    }
    const double last = deviation;
    deviation = std::sqrt(squares / used) / kept;
    if (!(std::fabs(deviation - last) > kSettled * last)) break;
  }
  return deviation;
}

}  // namespace

double takeMedian(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Spread takeMedianSpread(std::vector<double> values) {
  if (values.empty()) return {};
  const double median = takeMedian(values);
  for (double& value : values) value = std::fabs(value - median);
  return {.centre = median, .deviation = 1.4826 * takeMedian(values)};
}

Core estimateCore(std::vector<double> values) {
  constexpr double kQuartile = 0.318639;     // the lower one of the magnitudes of noise, in deviations
  constexpr double kKeptWithin2 = 0.879626;  // of a deviation, by the noise within two and within three of them
  constexpr double kKeptWithin3 = 0.986578;
  // A flat background of outliers raises the logarithm of the one by 2.9 and of the other by 7.0 times its share, which
  // would make 0.7; feet of peaks lie closer to the noise.
  constexpr double kOutliers = 0.8;
  if (values.empty()) return {};
  for (double& value : values) value = std::fabs(value);
  const auto quartile = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 4);
  std::nth_element(values.begin(), quartile, values.end());
  if (*quartile == 0) return {};
  const double within2 = cut(values, 2, kKeptWithin2, *quartile / kQuartile);
  const double within3 = cut(values, 3, kKeptWithin3, within2);
  return {.deviation = within2 * std::pow(within2 / within3, kOutliers), .tail = within3 / within2};
}

}  // namespace peakbox
