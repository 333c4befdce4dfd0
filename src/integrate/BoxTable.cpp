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
  for (int j = 0; j < count; ++j) {
    recentre(extents1[static_cast<std::size_t>(j)], tolerancePoints[0]);
    recentre(extents2[static_cast<std::size_t>(j)], tolerancePoints[1]);
  }
}

void BoxTable::measureSpectrum(int index, const Spectrum& spectrum, const RunSettings& settings) {
  const auto peakCount = static_cast<int>(intensities.size());
  for (int j = 0; j < peakCount; ++j) integratePeak(j, spectrum, settings.getBoxSize(0), settings.getBoxSize(1));
  if (index == 0) recentreBoxes(peakCount);
}

void BoxTable::writeReport(const RunSettings& settings, Spectrum& spectrum, const PeakList& peaks) {
  settings.getBoxSize(0);  // without half-widths the run ends here, where an existing report is still untouched
  std::ofstream report(settings.getOutputFile());
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), settings.getVerbose());
    measureSpectrum(k, spectrum, settings);
    writeSpectrumTable(k, report, settings, spectrum, peaks);
  }
}

}  // namespace peakbox
