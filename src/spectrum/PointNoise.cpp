#include "spectrum/PointNoise.h"

#include <cmath>
#include <utility>
#include <vector>

#include "base/RobustSpread.h"

namespace peakbox {

double estimatePointNoise(const Spectrum& spectrum, std::int64_t sampleSize) {
  const std::int64_t size1 = spectrum.getSize(0);
  const std::int64_t count = size1 * spectrum.getSize(1);
  const std::int64_t step = count / sampleSize | 1;
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(count / step + 1));
  for (std::int64_t n = 0; n < count; n += step) {
    const double value = spectrum.getData()[n % size1][n / size1];
    if (std::isfinite(value) && value != 0.0) values.push_back(value);
  }
  return takeMedianSpread(std::move(values)).deviation;
}

}  // namespace peakbox
