#pragma once

#include <array>
#include <vector>

#include "check/Checks.h"

namespace peakbox {

/// Values along both dimensions through the points at which peaks of the list were found in the first plane, NaN
/// outside the plane. Of a long list every so manieth peak is taken.
struct PeakProfiles {
  static constexpr std::int64_t kReach = 10;
  using Profile = std::array<float, 2 * kReach + 1>;

  PeakProfiles(const Series& series, const Spectrum& spectrum);

  static bool isTaken(std::size_t j, std::size_t peakCount) { return j % (peakCount / 128 + 1) == 0; }

  std::vector<std::array<Profile, 2>> profiles{};  // of the peaks that are taken
};

}  // namespace peakbox
