#include "check/CommonShift.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/RobustSpread.h"

namespace peakbox {

namespace {

/// From a place to a target.
struct Difference {
  std::size_t place;
  std::array<double, 2> shift;
};

/// Differences within `close` of a shift.
std::vector<Difference> findNear(const std::vector<Difference>& differences, const std::array<double, 2>& shift,
                                 const std::array<double, 2>& close) {
  std::vector<Difference> near;
  for (const Difference& difference : differences) {
    const bool isNear1 = std::fabs(difference.shift[0] - shift[0]) <= close[0];
    if (isNear1 && std::fabs(difference.shift[1] - shift[1]) <= close[1]) near.push_back(difference);
  }
  return near;
}

/// Differences come in the order of their places.
double countPlaces(const std::vector<Difference>& differences) {
  double count = 0;
  for (std::size_t i = 0; i < differences.size(); ++i) {
    if (i == 0 || differences[i].place != differences[i - 1].place) ++count;
  }
  return count;
}

/// The middle of the three by three cells, as large as `close`, that hold most differences.
std::array<double, 2> findCrowd(const std::vector<Difference>& differences, const std::array<double, 2>& reach,
                                const std::array<double, 2>& close) {
  std::array<std::int64_t, 2> half{};
  for (const std::size_t d : {0U, 1U}) half[d] = static_cast<std::int64_t>(reach[d] / close[d]) + 2;
  const std::int64_t width = 2 * half[1] + 1;
  std::vector<int> counts(static_cast<std::size_t>((2 * half[0] + 1) * width));
  std::size_t crowd = 0;
  for (const auto& [place, shift] : differences) {
    const std::int64_t cell =
        (std::llround(shift[0] / close[0]) + half[0]) * width + std::llround(shift[1] / close[1]) + half[1];
    for (const std::int64_t beside : {-width, std::int64_t{0}, width}) {
      for (const std::int64_t k : {-1, 0, 1}) {
        const auto n = static_cast<std::size_t>(cell + beside + k);
        if (++counts[n] > counts[crowd]) crowd = n;
      }
    }
  }
  const auto n = static_cast<std::int64_t>(crowd);
  return {static_cast<double>(n / width - half[0]) * close[0], static_cast<double>(n % width - half[1]) * close[1]};
}

}  // namespace

CommonShift findCommonShift(const Places& places, const Places& targets, const std::array<double, 2>& reach,
                            const std::array<double, 2>& close) {
  std::vector<Difference> differences;
  for (std::size_t i = 0; i < places.size(); ++i) {
    for (const auto& target : targets) {
      const std::array<double, 2> shift{target[0] - places[i][0], target[1] - places[i][1]};
      if (std::fabs(shift[0]) <= reach[0] && std::fabs(shift[1]) <= reach[1]) differences.push_back({i, shift});
    }
  }
  if (differences.empty()) return {};
  const std::vector<Difference> crowd =
      findNear(differences, findCrowd(differences, reach, close), {1.5 * close[0], 1.5 * close[1]});
  CommonShift common;
  for (const std::size_t d : {0U, 1U}) {
    std::vector<double> values;
    for (const Difference& difference : crowd) values.push_back(difference.shift[d]);
    common.shift[d] = takeMedian(values);
  }
  const auto count = static_cast<double>(places.size());
  common.hits = countPlaces(findNear(differences, common.shift, close)) / count;
  common.hitsUnshifted = countPlaces(findNear(differences, {0, 0}, close)) / count;
  return common;
}

}  // namespace peakbox
