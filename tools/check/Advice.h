#pragma once

#include <string>

namespace peakbox {

/// What the spectra suggest for the lines of a parameter file that names list and spectra: box, bounds and tolerance,
/// as lines of such a file, and as comments why. Refuses what a run would not read, and where too few peaks stand out.
std::string advise(const std::string& parameterFile);

}  // namespace peakbox
