#include "spectrum/Spectrum.h"

#include <ostream>

#include "driver/Messages.h"

namespace peakbox {

void Spectrum::noteByteSwap() {
  byteSwapped = true;
  warn("Correcting data for apparent byte-swap.\n");
}

void Spectrum::checkSizes() const {
  for (int dim = 0; dim < 2; ++dim) {
    if (getSize(dim) < 1) {
      fail("ERROR: Dimension " + std::to_string(dim + 1) + " has no data points (" + std::to_string(getSize(dim)) +
           ").\n");
    }
  }
}

void Spectrum::allocateData() {
  if (!data.resize(sizes[0], sizes[1])) {
    fail("ERROR: Not enough memory for a data plane of " + std::to_string(sizes[0]) + " x " + std::to_string(sizes[1]) +
         " points.\n");
  }
}

std::ostream& Spectrum::printDimensions(std::ostream& stream) const {
  const bool labelled = formatCode == SpectrumFormat::NMRView;
  stream << (labelled ? "Dim\t\tNuc\t\tSize\t\tObs\t\t1pt\n" : "Dim\t\tSize\t\tObs\t\t1pt\n");
  for (std::size_t d = 0; d < 2; ++d) {
    stream << d + 1 << "\t\t";
    if (labelled) stream << labels[d] << "\t\t";
    stream << sizes[d] << "pt\t\t" << observeMHz[d] << "MHz\t" << hzPerPoint[d] << "Hz\n";
  }
  return stream << "\n";
}

}  // namespace peakbox
