#pragma once

#include <optional>
#include <vector>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// Peaks that say something of a whole list or spectrum.
inline constexpr std::size_t kFewestPeaks = 3;

/// The top of a peak in the first spectrum.
struct PeakTop {
  double sign;  // of its value, 1 or -1
  Point point;
  std::array<double, 2> exact;  // between the points
  double height;                // without the sign
  int lastSeen = 0;             // the last spectrum, from 0, that shows it with this sign
  double lastHeight = 0;        // and its height there
};

/// By how many points, up to 64, a plane with this noise is displaced against the one that has these tops; nothing
/// where it shows too few of them anywhere else.
std::optional<Point> findDisplacement(const Spectrum& spectrum, double noise, std::vector<PeakTop> tops);

}  // namespace peakbox
