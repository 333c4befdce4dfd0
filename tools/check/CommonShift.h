#pragma once

#include <array>
#include <vector>

namespace peakbox {

using Places = std::vector<std::array<double, 2>>;  // in points

/// The shift, up to `reach` in each dimension, by which most of some places come within `close` of a target, the share
/// of them that do, and the share that do where they are.
struct CommonShift {
  std::array<double, 2> shift{};
  double hits = 0;
  double hitsUnshifted = 0;
};

CommonShift findCommonShift(const Places& places, const Places& targets, const std::array<double, 2>& reach,
                            const std::array<double, 2>& close);

}  // namespace peakbox
