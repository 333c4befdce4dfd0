#include "peaks/PeakList.h"

namespace peakbox {

void Peak::toPoints(const Spectrum& spectrum) {
  for (int dim = 0; dim < 2; ++dim) {
    const auto d = static_cast<std::size_t>(dim);
    position[d] = spectrum.ppmToPoint(position[d], dim);
    boundsWidth[d] = spectrum.ppmWidthToPoints(boundsWidth[d], dim);
  }
}

}  // namespace peakbox
