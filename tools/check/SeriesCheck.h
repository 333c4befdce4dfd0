#pragma once

#include <vector>

#include "check/Checks.h"
#include "check/PeakProfiles.h"
#include "check/PlaneSample.h"

namespace peakbox {

/// Keeps samples of the planes of a series as they are read, and tells what is wrong with whole planes and with the
/// list when all are.
class SeriesCheck {
 public:
  SeriesCheck(const Parameters& all, const ListedPeaks& listed) : parameters(all), peaks(listed) {}

  /// Takes the plane that the series has measured last, and whether a finding tells already what is wrong with it.
  void follow(const Series& series, const Spectrum& spectrum, bool isTold);

  Explained tell(const Series& series, Findings& findings) const;

 private:
  const Parameters& parameters;
  const ListedPeaks& peaks;
  Axes axes;
  std::vector<PlaneSample> planes;
  std::vector<PeakProfiles> profiles;
  std::vector<bool> told;
};

}  // namespace peakbox
