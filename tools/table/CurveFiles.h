#pragma once

#include <string>
#include <vector>

#include "results/Report.h"

namespace peakbox {

/// For each peak of the report the name of its file, empty for noise peaks: its label where it is the only one of its
/// kind, else with its number before it. Refuses peaks that would be written to one file all the same.
std::vector<std::string> nameCurveFiles(const Report& report);

/// Writes the file of each peak that has a name into a folder, which is made where there is none. `uncertainties` are
/// texts, one for each spectrum, or none.
void writeCurveFiles(const Report& report, const std::vector<std::string>& uncertainties,
                     const std::vector<std::string>& names, const std::string& folder);

}  // namespace peakbox
