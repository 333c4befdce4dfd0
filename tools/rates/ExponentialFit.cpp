#include "rates/ExponentialFit.h"

#include <cminpack.h>

#include <algorithm>
#include <array>

namespace peakbox {

namespace {

/// A curve whose times run from 0 to 1 and whose values lie between -1 and 1.
struct Curve {
  std::vector<double> times;
  std::vector<double> values;
  std::vector<double> weights;
  double start = 0;   // what the first time was, on this scale
  double origin = 0;  // where the amplitude is: the first time or the last, so that no curve grows beyond all numbers

  double shape(std::size_t n, double rate) const { return weights[n] * std::exp(-rate * (times[n] - origin)); }
};

/// The best amplitude for a rate, and by how much it lowers Chi2.
std::array<double, 2> solveAmplitude(Curve& curve, double rate) {
  curve.origin = rate < 0 ? 1 : 0;
  double product = 0;
  double square = 0;
  for (std::size_t n = 0; n < curve.times.size(); ++n) {
    const double shape = curve.shape(n, rate);
    product += shape * curve.weights[n] * curve.values[n];
    square += shape * shape;
  }
  return {product / square, product * product / square};
}

/// Weighted deviations, or their derivatives by amplitude and rate, as MINPACK asks for them.
int calculate(void* data, int, int, const double* x, double* deviations, double* derivatives, int rows, int wanted) {
  const auto& curve = *static_cast<const Curve*>(data);
  for (std::size_t n = 0; n < curve.times.size(); ++n) {
    const double shape = curve.shape(n, x[1]);
    if (wanted == 1) deviations[n] = x[0] * shape - curve.weights[n] * curve.values[n];
    if (wanted != 2) continue;
    derivatives[n] = shape;
    derivatives[static_cast<std::size_t>(rows) + n] = -x[0] * (curve.times[n] - curve.origin) * shape;
  }
  return 0;
}

/// The minimum that is reached from a rate, on the curve's scale.
ExponentialFit descend(Curve& curve, double rate) {
  const std::size_t size = curve.times.size();
  const auto count = static_cast<int>(size);
  std::array<double, 2> x{solveAmplitude(curve, rate)[0], rate};
  std::array<int, 2> order{};
  std::vector<double> deviations(size);
  std::vector<double> matrix(2 * size);
  std::vector<double> work(size + 10);
  lmder1(calculate, &curve, count, 2, &x[0], &deviations[0], &matrix[0], count, 1e-12, &order[0], &work[0], count + 10);
  if (x[1] * rate < -0.01) return descend(curve, x[1]);  // beyond 0 the origin is at the wrong end
  covar(2, &matrix[0], count, &order[0], 1e-15, &work[0]);
  const double ofRate = matrix[size + 1] > 0 ? matrix[size + 1] : NAN;
  const double sinceZero = curve.start + curve.origin;
  const double slope = x[0] * sinceZero;
  const double variance = matrix[0] + slope * (2 * matrix[size] + slope * ofRate);
  return {.rate = x[1],
          .rateError = std::sqrt(ofRate),
          .amplitude = x[0] * std::exp(x[1] * sinceZero),
          .amplitudeError = std::sqrt(variance) * std::exp(x[1] * sinceZero),
          .chi2 = std::pow(enorm(count, &deviations[0]), 2)};
}

/// The lower one of the minima among decays and among rises, each reached from the best of a grid of rates.
ExponentialFit findMinimum(Curve& curve) {
  std::array<double, 2> starts{0.01, -0.01};
  for (double& start : starts) {
    for (double rate = start; std::fabs(rate) < 1e6; rate *= 1.3) {  // gone within a ten-thousandth of the range
      if (solveAmplitude(curve, rate)[1] > solveAmplitude(curve, start)[1]) start = rate;
    }
  }
  const ExponentialFit decay = descend(curve, starts[0]);
  const ExponentialFit rise = descend(curve, starts[1]);
  return rise.chi2 < decay.chi2 ? rise : decay;
}

}  // namespace

ExponentialFit fitExponential(const std::vector<double>& times, const std::vector<double>& values,
                              const std::vector<double>& uncertainties) {
  const double first = *std::min_element(times.begin(), times.end());
  const double range = *std::max_element(times.begin(), times.end()) - first;
  if (!(range > 0 && std::isfinite(range))) return {};
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  const double scale = std::max(-*least, *greatest);
  Curve curve{.times = {}, .values = {}, .weights = {}, .start = first / range};
  double second = 1;
  for (std::size_t n = 0; n < times.size(); ++n) {
    curve.times.push_back((times[n] - first) / range);
    curve.values.push_back(values[n] / scale);
    curve.weights.push_back(uncertainties.empty() ? 1 : scale / uncertainties[n]);
    if (times[n] > first) second = std::min(second, curve.times[n]);
  }
  ExponentialFit fit = findMinimum(curve);
  fit.freedom = static_cast<double>(times.size()) - 2;
  fit.hasThreeTimes = second < 1;
  fit.isAtEdge = fit.rate <= 0.01 || fit.rate * second >= std::log(100);
  const double noise = uncertainties.empty() ? std::sqrt(fit.chi2 / fit.freedom) : 1;
  if (uncertainties.empty()) fit.chi2 *= scale * scale;
  fit.rate /= range;
  fit.rateError *= noise / range;
  fit.amplitude *= scale;
  fit.amplitudeError *= noise * scale;
  return fit;
}

}  // namespace peakbox
