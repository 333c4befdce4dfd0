#pragma once

#include "list/ForeignList.h"
#include "spectrum/Spectrum.h"

namespace peakbox::list {

/// How often a peak must be folded to lie in the spectrum, in the dimension that needs more, where column `direct`, 0
/// or 1, is the direct dimension.
double countFoldings(const ListEntry& peak, const Axes& axes, std::size_t direct);

/// The column of the direct dimension, by the positions or the names of the columns, or the other one if `isExchanged`.
/// Where that cannot be told it is column 1 then, and else refused; `spectrumFile` is for messages.
std::size_t findDirect(const ForeignList& list, const std::vector<Entry>& entries, const Spectrum& spectrum,
                       const std::string& spectrumFile, bool isExchanged);

}  // namespace peakbox::list
