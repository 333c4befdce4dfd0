#include "check/PlaneContents.h"

#include <bit>

namespace peakbox {

// The bits of the values, which is several times as fast as the values.
PlaneContents::PlaneContents(const Spectrum& spectrum) {
  constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15u;
  constexpr std::uint64_t kExponent = 0x7ff0000000000000u;
  const auto first = std::bit_cast<std::uint64_t>(spectrum.getData()[0][0]);
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    std::uint64_t rowSum = 0;
    std::uint64_t anyBits = 0;
    std::uint64_t differences = 0;
    std::uint64_t weight = kFactor;
    const double* row = &spectrum.getData()[0][j];  // dimension 1 runs fastest
    for (int i = 0; i < spectrum.getSize(0); ++i, weight += 2 * kFactor) {
      const auto bits = std::bit_cast<std::uint64_t>(row[i]);
      rowSum += bits * weight;
      anyBits |= bits << 1;  // without the sign of a zero
      differences |= bits ^ first;
      notFinite += (bits & kExponent) == kExponent;
    }
    fingerprint = (fingerprint ^ (rowSum >> 29 | rowSum << 35)) * kFactor;
    zeroRows = anyBits == 0 ? zeroRows + 1 : 0;
    isConstant = isConstant && differences == 0;
  }
}

}  // namespace peakbox
