#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "integrate/Series.h"

namespace peakbox {

/// What can be wrong with a peak.
enum class TroubleKind { LeavesPlane, NoPeak, SamePoint, SharesPoints, OnFlank };

struct PeakTrouble {
  TroubleKind kind;
  std::vector<int> spectra;       // that show it, counted from 1
  std::size_t other = 0;          // the peak, earlier in the list, at the same point or whose box shares points
  std::int64_t sharedPoints = 0;  // in the spectrum where they are most
};

/// For each peak of a series what is wrong with it. A peak that is lost leaves the plane; there is no peak where the
/// first spectrum shows none above the noise, and noise peaks are neither missed nor on a flank, nor do their boxes
/// matter. What two peaks share is told of the later one, and of one peak not more than a few.
std::vector<std::vector<PeakTrouble>> findTroubles(const Series& series, const RunSettings& settings,
                                                   const PeakList& peaks);

}  // namespace peakbox
