#pragma once

#include <cmath>
#include <vector>

namespace peakbox {

/// A curve as it was fitted, with standard deviations. What is not determined is NaN, what is beyond all numbers NaN or
/// infinite.
struct ExponentialFit {
  double rate = NAN;  // R, per unit of time
  double rateError = NAN;
  double amplitude = NAN;  // A, at time 0, in the unit of the values
  double amplitudeError = NAN;
  double plateau = NAN;  // B
  double plateauError = NAN;
  double chi2 = NAN;  // sum of the squared deviations, each divided by its uncertainty
  double freedom = NAN;
  double constantChi2 = NAN;  // what the best constant leaves
  bool isAtEdge = false;  // no more than a hundredth of the curve is gone at the last time, or left at the second one
};

/// Fits A exp(-R t) or, with a plateau, B - A exp(-R t) to values at times of any unit and order. There is one
/// uncertainty for each value or none at all: then all are 1, and the errors follow from the scatter.
class ExponentialFitter {
 public:
  ExponentialFitter(const std::vector<double>& unscaledTimes, const std::vector<double>& uncertainties, bool plateau);

  /// How many times differ: a fit determines nothing where they are fewer than its parameters.
  std::size_t countTimes() const { return distinct; }

  /// The curve that has the least Chi2 of all, with a rate of either sign.
  ExponentialFit fit(const std::vector<double>& values) const;

 private:
  /// A rate, and what it makes of the curve: a shape that is the weights times `offset` and a rest, which is kept
  /// divided by its length.
  struct Trial {
    double rate;
    double offset = 0;
    double length = 0;
    std::vector<double> rest;
  };

  void addTrial(double rate);
  ExponentialFit descend(const std::vector<double>& targets, const Trial& trial) const;

  const bool hasPlateau;
  double unit = 0;   // of the weights, 0 without uncertainties
  double start = 0;  // the first time, in ranges
  double range = 0;
  double second = 1;  // the time behind the first one
  std::size_t distinct = 0;
  std::vector<double> times;    // from 0 to 1
  std::vector<double> weights;  // 1 at most
  std::vector<Trial> trials;
};

}  // namespace peakbox
