#pragma once

#include "list/ForeignList.h"
#include "spectrum/Spectrum.h"

namespace peakbox::list {

/// How often a peak must be folded to lie in the spectrum, in the dimension that needs more, where column `direct`, 0
/// or 1, is the direct dimension.
double countFoldings(const ListEntry& peak, const Axes& axes, std::size_t direct);

/// The column of the direct dimension: the one of the name `wanted`, or without that by the nuclei that are named, the
/// format of the list or the positions. It is refused where none of these tells, or the positions fit only the other
/// way round; `spectrumFile` is for messages.
std::size_t findDirect(const ForeignList& list, const std::vector<Entry>& entries, const Spectrum& spectrum,
                       const std::string& spectrumFile, const std::string& wanted);

}  // namespace peakbox::list
