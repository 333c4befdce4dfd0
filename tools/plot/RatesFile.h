#pragma once

#include <cmath>
#include <optional>
#include <vector>

#include "results/Report.h"

namespace peakbox {

/// A fitted curve, plateau + factor exp(-rate t); NaN is what is unknown.
struct PeakFit {
  double rate;
  double error;  // scaled to the scatter
  double factor;
  double plateau;
  double chi2;
  double freedom;

  double getHeight(double t) const { return plateau + factor * std::exp(-rate * t); }
};

/// What a spectrum, counted from 0, shows of a peak.
struct Reading {
  std::size_t spectrum;
  double value;
  double error;
};

/// What a file of peakbox-rates says of a peak: a fit, or readings that take the place of the intensities.
struct PeakResult {
  std::optional<PeakFit> fit;
  std::vector<Reading> readings;
  std::string remark;
};

struct Results {
  std::string quantity;           // that was found: R, ratio or R2eff; empty without a file
  std::vector<PeakResult> peaks;  // of the report; noise peaks have none
};

/// Reads such a file. Refuses one whose peaks are not the report's, and one whose fits leave another Chi2, or whose
/// ratios are others, with these uncertainties, of which there may be none.
Results readRates(const std::string& file, const Report& report, const std::vector<double>& uncertainties);

}  // namespace peakbox
