#pragma once

#include <cstdint>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// The standard deviation of the noise of a point: 1.4826 times the median absolute deviation of the plane's finite
/// values but zeros, with which planes are filled up; of all of them or of about `sampleSize` spread over the plane. 0
/// where there are none.
double estimatePointNoise(const Spectrum& spectrum, std::int64_t sampleSize);

}  // namespace peakbox
