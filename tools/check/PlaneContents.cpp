#include "check/PlaneContents.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <vector>

namespace peakbox {

namespace {

/// Values of a spectrum span some orders of magnitude, and floats with reversed bytes nearly all that there are.
bool areMisordered(const Spectrum& spectrum) {
  constexpr std::int64_t kEnough = 4096;
  constexpr std::size_t kFewest = 100;
  const std::int64_t size1 = spectrum.getSize(0);
  const std::int64_t count = size1 * spectrum.getSize(1);
  std::vector<double> magnitudes;
  for (std::int64_t n = 0; n < count; n += count / kEnough | 1) {
    const double magnitude = std::fabs(spectrum.getData()[n % size1][n / size1]);
    if (magnitude > 0 && std::isfinite(magnitude)) magnitudes.push_back(magnitude);
  }
  if (magnitudes.size() < kFewest) return false;
  std::sort(magnitudes.begin(), magnitudes.end());
  const double low = magnitudes[magnitudes.size() / 10];
  const double high = magnitudes[magnitudes.size() * 9 / 10];
  return high > 1e10 * low && (high > 1e30 || high < 1e-30);
}

}  // namespace

PlaneContents::PlaneContents(const Spectrum& spectrum) {
  const auto toBits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
  const std::uint64_t first = toBits(spectrum.getData()[0][0]);
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    // Dimension 1 runs fastest.
    const std::span row(&spectrum.getData()[0][j], static_cast<std::size_t>(spectrum.getSize(0)));
    std::uint64_t sum = 0;  // an order of values that is another one gives another sum
    for (std::size_t i = 0; i < row.size(); ++i) sum += toBits(row[i]) * (2 * i + 1);
    fingerprint = 31 * fingerprint + (sum ^ sum >> 32);
    notFinite += std::count_if(row.begin(), row.end(), [](double value) { return !std::isfinite(value); });
    zeroRows = std::all_of(row.begin(), row.end(), [](double value) { return value == 0; }) ? zeroRows + 1 : 0;
    const auto isFirst = [&](double value) { return toBits(value) == first; };
    isConstant = isConstant && std::all_of(row.begin(), row.end(), isFirst);
  }
  isMisordered = areMisordered(spectrum);
}

}  // namespace peakbox
