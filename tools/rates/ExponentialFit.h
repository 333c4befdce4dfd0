#pragma once

#include <cmath>
#include <vector>

namespace peakbox {

/// A exp(-R t) as it was fitted, with standard deviations. What is not determined is NaN, what is beyond all numbers
/// NaN or infinite.
struct ExponentialFit {
  double rate = NAN;  // R, per unit of time
  double rateError = NAN;
  double amplitude = NAN;  // A, at time 0, in the unit of the values
  double amplitudeError = NAN;
  double chi2 = NAN;  // sum of the squared deviations, each divided by its uncertainty
  double freedom = NAN;
  bool hasThreeTimes = false;
  bool isAtEdge = false;  // no more than a hundredth of the decay is gone at the last time, or left at the second one
};

/// Fits the A and R, of either sign, that give the least Chi2 of all to values at times of any unit and order. There is
/// one uncertainty for each value or none at all: then all are 1, and the errors follow from the scatter.
ExponentialFit fitExponential(const std::vector<double>& times, const std::vector<double>& values,
                              const std::vector<double>& uncertainties);

}  // namespace peakbox
