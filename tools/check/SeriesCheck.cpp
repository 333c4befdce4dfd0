#include "check/SeriesCheck.h"

#include "check/SampledSeries.h"

namespace peakbox {

void SeriesCheck::follow(const Series& series, const Spectrum& spectrum, bool isTold) {
  if (planes.empty()) axes = spectrum.getAxes();
  planes.emplace_back(spectrum, series.getPeakCount());
  profiles.emplace_back(series, spectrum);
  told.push_back(isTold);
}

/// The order is that in which causes explain one another: what a finding has taken out is looked at no more.
Explained SeriesCheck::tell(const Series& series, Findings& findings) const {
  SampledSeries all{parameters, peaks, series, axes, planes, profiles, findings, told};
  checkContents(all);
  if (!peaks.isMisread) checkPhase(all);
  const bool areMostFree = 2 * all.findFree().size() > planes.size();
  Explained explained{.list = peaks.isMisread || (areMostFree && checkListPlace(all)), .planes = {}};
  const std::vector<Displacement> displaced = findDisplaced(all);
  checkForeign(all, displaced);
  tellDisplaced(all, displaced);
  checkScale(all);
  if (!explained.list) {
    checkZeroBoxes(all);
    checkSigns(all);
    checkRepeats(all);
    if (!checkOrder(all)) checkWeakest(all);
    checkMovement(all);
  }
  explained.planes.resize(static_cast<std::size_t>(parameters.settings.getSpectrumCount()));
  for (std::size_t n = 0; n < planes.size(); ++n) {
    explained.planes[static_cast<std::size_t>(series.getIndices()[n])] = all.taken[n];
  }
  return explained;
}

}  // namespace peakbox
