#pragma once

#include "plot/MeasuredRun.h"

namespace peakbox {

/// Peaks beyond which the map shows numbers in place of labels.
inline constexpr std::size_t kMostLabels = 80;

/// The first spectrum, which is loaded, with the boxes and their labels, of many peaks the numbers.
std::string writeMap(const MeasuredRun& run);

/// What was found of all peaks over their numbers; nothing where nothing was found.
std::string writeSummary(const MeasuredRun& run);

/// The frame and the texts of the cell of peak j; its surroundings in spectrum k, which is loaded, with its search area
/// and all of its boxes that are drawn; and its intensities, and below a fit what this leaves over.
std::string writeCell(const MeasuredRun& run, std::size_t j);
std::string writePanel(const MeasuredRun& run, std::size_t j, std::size_t k);
std::string writeCurve(const MeasuredRun& run, std::size_t j);

}  // namespace peakbox
