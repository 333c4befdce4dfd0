#pragma once

#include <cmath>
#include <optional>

#include "results/Report.h"

namespace peakbox {

/// What a file of peakbox-rates says of a peak, of what is unknown NaN.
struct PeakRate {
  double rate;
  double error;  // scaled to the scatter
  double amplitude;
  double chi2;
  double freedom;
  std::string remark;

  double getHeight(double t) const { return amplitude * std::exp(-rate * t); }
};

/// Reads such a file; nothing of noise peaks, which it leaves out. Refuses one whose peaks are not the report's, and
/// one whose fits leave another Chi2 at these times with these uncertainties, of which there may be none.
std::vector<std::optional<PeakRate>> readRates(const std::string& file, const Report& report,
                                               const std::vector<double>& times,
                                               const std::vector<double>& uncertainties);

}  // namespace peakbox
