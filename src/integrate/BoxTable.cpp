#include "integrate/BoxTable.h"

namespace peakbox {

BoxTable::BoxTable(unsigned peakCount, double tolerance1, double tolerance2)
    : tolerance{tolerance1, tolerance2},
      extents1(peakCount),
      extents2(peakCount),
      intensities(peakCount),
      foldCount1(peakCount),
      foldCount2(peakCount) {}

void BoxTable::convertTolerance(const Spectrum& spectrum) {
  tolerancePoints = {spectrum.hzToPoints(tolerance[0], 0), spectrum.hzToPoints(tolerance[1], 1)};
}

void BoxTable::recentreBoxes(int count) {
  const auto recentre = [](BoxExtent& extent, double points) {
    extent.low = extent.centre - points;
    extent.high = extent.centre + points;
  };
  for (std::size_t j = 0; j < static_cast<std::size_t>(count); ++j) {
    recentre(extents1[j], tolerancePoints[0]);
    recentre(extents2[j], tolerancePoints[1]);
  }
}

}  // namespace peakbox
