#include <algorithm>
#include <cmath>
#include <string>

#include "driver/Messages.h"
#include "integrate/BoxTable.h"

namespace peakbox {

namespace {

/// How many steps like the one from `middle` to `after` an edge can take from `after` on without leaving its binade,
/// with a margin; 0 when it was not in one binade since `before`.
double countStepsInBinade(double before, double middle, double after) {
  if (std::ilogb(before) != std::ilogb(after) || std::signbit(before) != std::signbit(after)) return 0.0;
  const double magnitude = std::fabs(after);
  const double lowest = std::ldexp(1.0, std::ilogb(after));
  const double room = magnitude > std::fabs(before) ? 2.0 * lowest - magnitude : magnitude - lowest;
  return std::max(0.0, std::floor(room / std::fabs(after - middle)) - 2.0);
}

/// Adds `shift` to both edges for as long as `isOutside(extent)`; returns how often.
///
/// The edges come out as from that many single additions, each with its rounding, but in a time that hardly grows with
/// their number: from the second addition within one binade on, all of them round alike and make equal steps.
template <typename IsOutside>
std::int64_t shiftWhile(const IsOutside& isOutside, BoxExtent& extent, double shift) {
  std::int64_t count = 0;
  const auto stepOnce = [&] {
    extent.high += shift;
    extent.low += shift;
    ++count;
    return isOutside(extent);
  };
  while (isOutside(extent)) {
    const BoxExtent before = extent;
    if (!stepOnce()) break;
    const BoxExtent middle = extent;
    if (!stepOnce()) break;

    const double steps = std::min(countStepsInBinade(before.low, middle.low, extent.low),
                                  countStepsInBinade(before.high, middle.high, extent.high));
    extent.low += steps * (extent.low - middle.low);
    extent.high += steps * (extent.high - middle.high);
    count += static_cast<std::int64_t>(steps);
  }
  return count;
}

/// Folds peak j's extent in dimension `dim` (0 or 1) into [0, size]. Returns the signed number of folds, negative for
/// an extent that was moved up.
std::int64_t foldExtent(BoxExtent& extent, int j, int dim, double size) {
  const double limit = 2147483648.0 * size;
  if (!(std::fabs(extent.low) < limit) || !(std::fabs(extent.high) < limit)) {
    fail("ERROR: Peak " + std::to_string(j) + " has no valid position in dimension " + std::to_string(dim + 1) + ".\n");
  }
  const std::int64_t up = shiftWhile([](const BoxExtent& e) { return e.low < 0.0; }, extent, size);
  const std::int64_t down = shiftWhile([=](const BoxExtent& e) { return e.high > size; }, extent, -size);
  const std::int64_t folds = down - up;
  if (folds != 0) {
    warn("WARNING: Peak " + std::to_string(j) + " folded " + std::to_string(std::abs(folds)) + " times in the " +
         (dim == 0 ? "direct" : "indirect") + " dimension.\n");
  }
  return folds;
}

BoxExtent placeExtent(const PeakList& peaks, int j, int dim) {
  const double centre = peaks.getPosition(j, dim);
  const double width = peaks.getBoundsWidth(j, dim);
  return {centre, centre - 0.5 * width, centre + 0.5 * width};
}

}  // namespace

void BoxTable::placeBoxes(const Spectrum& spectrum, const PeakList& peaks) {
  convertTolerance(spectrum);
  for (int j = 0; j < peaks.getCount(); ++j) {
    extents1[static_cast<std::size_t>(j)] = placeExtent(peaks, j, 0);
    foldDirect(j, spectrum.getSize(0));
    extents2[static_cast<std::size_t>(j)] = placeExtent(peaks, j, 1);
    foldIndirect(j, spectrum.getSize(1));
  }
}

void BoxTable::foldDirect(int j, int size) {
  const auto entry = static_cast<std::size_t>(j);
  foldCount1[entry] = static_cast<std::int32_t>(foldExtent(extents1[entry], j, 0, size));
}

void BoxTable::foldIndirect(int j, int size) {
  const auto entry = static_cast<std::size_t>(j);
  foldCount2[entry] = static_cast<std::int32_t>(foldExtent(extents2[entry], j, 1, size));
}

}  // namespace peakbox
