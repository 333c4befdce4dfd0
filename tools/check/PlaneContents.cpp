#include "check/PlaneContents.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <string_view>

namespace peakbox {

PlaneContents::PlaneContents(const Spectrum& spectrum) {
  const auto toBits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
  const std::uint64_t first = toBits(spectrum.getData()[0][0]);
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    // Dimension 1 runs fastest.
    const std::span row(&spectrum.getData()[0][j], static_cast<std::size_t>(spectrum.getSize(0)));
    const std::string_view bytes(reinterpret_cast<const char*>(row.data()), row.size_bytes());
    fingerprint = 31 * fingerprint + std::hash<std::string_view>()(bytes);
    notFinite += std::count_if(row.begin(), row.end(), [](double value) { return !std::isfinite(value); });
    zeroRows = std::all_of(row.begin(), row.end(), [](double value) { return value == 0; }) ? zeroRows + 1 : 0;
    const auto isFirst = [&](double value) { return toBits(value) == first; };
    isConstant = isConstant && std::all_of(row.begin(), row.end(), isFirst);
  }
}

}  // namespace peakbox
