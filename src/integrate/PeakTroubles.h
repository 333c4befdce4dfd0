#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "integrate/Series.h"

namespace peakbox {

/// What can be wrong with a peak, the worst first.
enum class TroubleKind { LeavesPlane, SamePoint, NoPeak, OnFlank, SharesPoints, Moved };

struct PeakTrouble {
  TroubleKind kind;
  std::vector<int> spectra{};          // that show it, counted from 1
  std::size_t worst = 0;               // the one of all measured in which it is to be seen best, from 0
  std::optional<std::size_t> other{};  // the peak at the point, or at the top uphill, or whose box shares most
  std::int64_t sharedPoints = 0;       // with it, in the spectrum where they are most
  std::size_t moreOthers = 0;          // whose boxes share points there
};

/// For each peak of a series what is wrong with it, the worst first.
///
/// Of peaks at the same point all are in trouble but the one whose listed place is nearest. Boxes count where both
/// peaks stand out of the noise. What else is wrong is judged in the spectrum in which the peak is strongest: whether
/// it stands out of the noise at all, and whether its point is a top. A peak has moved if its top, which the first
/// spectrum shows in its box, is farther on in nearly all later ones than the search went. Noise peaks only leave the
/// plane or meet others. What spectra show that are `explained`, by their index in the run, counts for nothing but a
/// loss.
std::vector<std::vector<PeakTrouble>> findTroubles(const Series& series, const RunSettings& settings,
                                                   const PeakList& peaks, const std::vector<bool>& explained = {});

}  // namespace peakbox
