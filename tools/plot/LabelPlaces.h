#pragma once

#include <array>
#include <vector>

namespace peakbox {

/// The middle of a box or a label on the map, and half its size, in parts of the map.
struct Area {
  std::array<double, 2> middle{};
  std::array<double, 2> half{};
};

/// Moves each label, which has its size, to the nearest free place beside its box, those in front first, and the middle
/// of the box to where a line to it begins; returns for each whether there is such a place.
std::vector<bool> placeLabels(std::vector<Area>& boxes, std::vector<Area>& labels);

}  // namespace peakbox
