#pragma once

#include <cstdint>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// What a plane holds, as far as it matters for telling planes apart and good ones from bad.
struct PlaneContents {
  /// Goes through all values, of which there is at least one.
  explicit PlaneContents(const Spectrum& spectrum);

  std::uint64_t fingerprint = 0;
  std::int64_t notFinite = 0;
  std::int64_t zeroRows = 0;  // at the plane's end
  bool isConstant = true;
  bool isMisordered = false;  // magnitudes as they are when the bytes of the values are in the wrong order
};

}  // namespace peakbox
