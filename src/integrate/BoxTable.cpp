#include "integrate/BoxTable.h"

#include <fstream>

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

void BoxTable::writeReport(const RunSettings& settings, Spectrum& spectrum, const PeakList& peaks) {
  // Settings without half-widths end the run here, where an existing report is still untouched.
  const std::int32_t halfWidth1 = settings.getBoxSize(0);
  const std::int32_t halfWidth2 = settings.getBoxSize(1);
  std::ofstream report(settings.getOutputFile());
  const int peakCount = peaks.getCount();
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), settings.getVerbose());
    for (int j = 0; j < peakCount; ++j) integratePeak(j, spectrum, halfWidth1, halfWidth2);
    // Later spectra are searched around the points found in the first.
    if (k == 0) recentreBoxes(peakCount);
    writeSpectrumTable(k, report, settings, spectrum, peaks);
  }
}

}  // namespace peakbox
