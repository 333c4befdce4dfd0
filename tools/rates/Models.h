#pragma once

#include <string>
#include <vector>

#include "results/Report.h"

namespace peakbox {

/// The table of fits, with a header line: I = A exp(-R t), or with a plateau I = B - A exp(-R t). `uncertainties` are
/// one for each spectrum of the report, or none.
std::string writeFits(const Report& report, const std::vector<double>& uncertainties, bool hasPlateau);

/// The table of ratios to the references, which are spectra counted from 0, or with a time that of -ln(ratio) / time.
std::string writeRatios(const Report& report, const std::vector<double>& uncertainties,
                        const std::vector<std::size_t>& references, double time);

/// The intensities of a peak, one in each spectrum, and whether they are all the same or all below three times their
/// uncertainties.
std::vector<double> getIntensities(const Report& report, std::size_t p);
bool isBare(const std::vector<double>& values, const std::vector<double>& uncertainties);

}  // namespace peakbox
