#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "results/Report.h"

namespace peakbox {

/// The uncertainties of a report's intensities, one for each spectrum, which is that of all its peaks, since their
/// boxes have one size: a standard deviation in the unit of the intensities.
///
/// From a file of peakbox-noise: the noise of a box. Refuses the noise of other spectra and, where it is known, that of
/// another `box`, in points, direct dimension first.
std::vector<double> readUncertainties(const std::string& noiseFile, const Report& report,
                                      const std::array<std::int64_t, 2>& box = {});

/// From spectra that have the same parameters: their scatter, pooled over all of them and all peaks but noise peaks,
/// whose boxes lie on whatever is largest nearby. Refuses a report without such spectra.
std::vector<double> poolRepeats(const Report& report);

}  // namespace peakbox
