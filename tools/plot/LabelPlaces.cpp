#include "plot/LabelPlaces.h"

#include <algorithm>
#include <cmath>

namespace peakbox {

namespace {

constexpr std::array<double, 6> kGaps{0.004, 0.012, 0.022, 0.034, 0.05, 0.07};
constexpr std::array<std::array<int, 2>, 8> kSides{
    {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {-1, 1}, {1, -1}, {-1, -1}}};
constexpr std::size_t kTrials = kGaps.size() * kSides.size();

/// What is left between two areas along a dimension, of which the second one is widened.
double findRoom(const Area& a, const Area& b, std::size_t d, double widening) {
  return std::fabs(a.middle[d] - b.middle[d]) - a.half[d] - widening * b.half[d];
}

}  // namespace

std::vector<bool> placeLabels(std::vector<Area>& boxes, std::vector<Area>& labels) {
  std::vector<Area> taken = boxes;
  std::vector<bool> arePlaced(labels.size());
  for (std::size_t n = 0; n < labels.size(); ++n) {
    for (std::size_t trial = 0; trial < 2 * kTrials && !arePlaced[n]; ++trial) {
      const double widening = trial < kTrials ? 1.7 : 1;  // contours reach beyond boxes: room for them is sought first
      bool isFree = true;
      for (const std::size_t d : {0U, 1U}) {
        const double way =
            widening * boxes[n].half[d] + kGaps[trial / kSides.size() % kGaps.size()] + labels[n].half[d];
        labels[n].middle[d] = boxes[n].middle[d] + kSides[trial % kSides.size()][d] * way;
        isFree = isFree && std::fabs(labels[n].middle[d] - 0.5) + labels[n].half[d] < 0.5;
      }
      arePlaced[n] =
          isFree && std::all_of(taken.begin(), taken.end(), [&](const Area& other) {
            return findRoom(labels[n], other, 0, widening) > 0 || findRoom(labels[n], other, 1, widening) > 0;
          });
    }
    if (!arePlaced[n]) continue;
    taken.push_back(labels[n]);
    for (const std::size_t d : {0U, 1U}) {
      const double way = labels[n].middle[d] - boxes[n].middle[d];
      boxes[n].middle[d] += std::clamp(way, -boxes[n].half[d], boxes[n].half[d]);
    }
  }
  return arePlaced;
}

}  // namespace peakbox
