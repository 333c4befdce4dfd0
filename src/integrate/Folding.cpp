#include <cmath>
#include <string>

#include "base/Messages.h"
#include "integrate/BoxTable.h"

namespace peakbox {

namespace {

/// Folds peak j's extent in dimension `dim` (0 or 1) into [0, size]. Returns the signed number of folds, negative for
/// an extent that was moved up.
std::int32_t foldExtent(BoxExtent& extent, int j, int dim, double size) {
  // Nearer than 2^31 sizes, so that the loops end and the number of folds is one of 32 bits.
  const double limit = 2147483648.0 * size;
  if (!(std::fabs(extent.low) < limit) || !(std::fabs(extent.high) < limit)) {
    fail("ERROR: Peak " + std::to_string(j) + " has no valid position in dimension " + std::to_string(dim + 1) + ".\n");
  }
  std::int64_t folds = 0;
  for (; extent.low < 0.0; --folds) {
    extent.low += size;
    extent.high += size;
  }
  for (; extent.high > size; ++folds) {
    extent.low -= size;
    extent.high -= size;
  }
  if (folds != 0) {
    printMessage("WARNING: Peak " + std::to_string(j) + " folded " + std::to_string(std::abs(folds)) +
                 " times in the " + (dim == 0 ? "direct" : "indirect") + " dimension.\n");
  }
  return static_cast<std::int32_t>(folds);
}

BoxExtent placeExtent(const PeakList& peaks, int j, int dim) {
  const double centre = peaks.getPosition(j, dim);
  const double width = peaks.getBoundsWidth(j, dim);
  return {.centre = centre, .low = centre - 0.5 * width, .high = centre + 0.5 * width};
}

}  // namespace

void BoxTable::placeBoxes(const Spectrum& spectrum, const PeakList& peaks) {
  convertTolerance(spectrum);
  for (int j = 0; j < peaks.getCount(); ++j) placeBox(j, spectrum, peaks);
}

void BoxTable::placeBox(int j, const Spectrum& spectrum, const PeakList& peaks) {
  extents1[static_cast<std::size_t>(j)] = placeExtent(peaks, j, 0);
  foldDirect(j, spectrum.getSize(0));
  extents2[static_cast<std::size_t>(j)] = placeExtent(peaks, j, 1);
  foldIndirect(j, spectrum.getSize(1));
}

void BoxTable::foldDirect(int j, int size) {
  const auto entry = static_cast<std::size_t>(j);
  foldCount1[entry] = foldExtent(extents1[entry], j, 0, size);
}

void BoxTable::foldIndirect(int j, int size) {
  const auto entry = static_cast<std::size_t>(j);
  foldCount2[entry] = foldExtent(extents2[entry], j, 1, size);
}

}  // namespace peakbox
