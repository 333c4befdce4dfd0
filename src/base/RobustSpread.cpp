#include "base/RobustSpread.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace peakbox {

double takeMedian(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Spread takeMedianSpread(std::vector<double> values) {
  if (values.empty()) return {};
  const double median = takeMedian(values);
  for (double& value : values) value = std::fabs(value - median);
  return {.centre = median, .deviation = 1.4826 * takeMedian(values), .used = values.size()};
}

Spread estimateClippedSpread(const std::vector<double>& values) {
  constexpr double kReach = 3.0;
  constexpr double kKeptByReach = 0.9866;  // of a Gaussian's standard deviation, when its tails are cut there
  constexpr double kSettled = 1e-9;        // relative; the last digits may go to and fro for ever
  constexpr int kMostRounds = 1000;        // and so may a value at the edge

  Spread spread = takeMedianSpread(values);
  for (int round = 0; round < kMostRounds; ++round) {
    // Deviations from the last centre, since the squares of the values themselves could cancel.
    double sum = 0.0;
    double sumOfSquares = 0.0;
    std::size_t used = 0;
    for (const double value : values) {
      const double deviation = value - spread.centre;
      if (!(std::fabs(deviation) <= kReach * spread.deviation)) continue;
      sum += deviation;
      sumOfSquares += deviation * deviation;
      ++used;
    }
    if (used < 2) return {.centre = spread.centre, .deviation = 0.0, .used = used};
    const auto count = static_cast<double>(used);
    const double variance = std::max(0.0, sumOfSquares - sum * sum / count) / (count - 1);
    const Spread next{
        .centre = spread.centre + sum / count, .deviation = std::sqrt(variance) / kKeptByReach, .used = used};
    const Spread last = std::exchange(spread, next);
    const double change = std::fabs(next.centre - last.centre) + std::fabs(next.deviation - last.deviation);
    if (next.used == last.used && change <= kSettled * next.deviation) break;
  }
  return spread;
}

}  // namespace peakbox
