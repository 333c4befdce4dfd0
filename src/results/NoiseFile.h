#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace peakbox {

/// What a file of peakbox-noise says of one spectrum.
struct SpectrumNoise {
  double box;    // standard deviation of a box's sum
  double point;  // and of a data point
  std::int64_t boxCount;
  std::int64_t used;
};

/// Its header and the line of a spectrum, counted from 1, each with its end.
std::string writeNoiseHeader();
std::string writeNoiseLine(int number, const SpectrumNoise& noise);

/// Reads such a file; refuses one that is not whole, or not that of the `spectrumCount` spectra of `owner`.
std::vector<SpectrumNoise> readNoiseFile(const std::string& path, std::size_t spectrumCount, const std::string& owner);

}  // namespace peakbox
