#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace peakbox {

/// What a file of peakbox-noise says of one spectrum.
struct SpectrumNoise {
  double box;                        // standard deviation of a box's sum
  double error;                      // of that
  double tail;                       // above 1 where signal is in the estimate
  double point;                      // standard deviation of a data point
  std::array<std::int64_t, 2> size;  // of the box in points, direct dimension first
  std::string file;                  // as the parameter file names it
};

/// Its header and the line of a spectrum, counted from 1, each with its end.
std::string writeNoiseHeader();
std::string writeNoiseLine(int number, const SpectrumNoise& noise);

/// Reads such a file; refuses one that is not whole.
std::vector<SpectrumNoise> readNoiseFile(const std::string& path);

}  // namespace peakbox
