#pragma once

#include <string>
#include <vector>

#include "results/Report.h"

namespace peakbox {

/// The tables of the models, with a header line; `uncertainties` are one for each spectrum of the report, or none.
std::string writeDecays(const Report& report, const std::vector<double>& uncertainties);  // I = A exp(-R t)

}  // namespace peakbox
