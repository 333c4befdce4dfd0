#pragma once

#include <vector>

#include "results/Report.h"

namespace peakbox {

/// A value with its standard deviation.
struct Measured {
  double value;
  double error;
};

/// The mean of a peak in the references, which are spectra counted from 0, weighted by the uncertainties.
Measured takeReference(const Report& report, std::size_t p, const std::vector<double>& uncertainties,
                       const std::vector<std::size_t>& references);

/// The ratio of two, with its error by propagation of both; not finite where the second one is 0.
Measured divide(const Measured& one, const Measured& other);

/// -ln(ratio) / time, NaN where the ratio is not above 0.
Measured takeEffectiveRate(const Measured& ratio, double time);

}  // namespace peakbox
