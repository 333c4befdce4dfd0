#include "rates/ExponentialFit.h"

#include <cminpack.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <set>

namespace peakbox {

namespace {

/// What has the rate in a curve whose times run from 0 to 1, and its derivative by the rate.
struct Shape {
  double value;
  double slope;
};

/// exp(-R t) / (1 + exp(-R)), which is never more than 1, be it a decay or a rise.
Shape decay(double t, double rate) {
  if (rate < 0) return {decay(1 - t, -rate).value, -decay(1 - t, -rate).slope};
  const double end = std::exp(-rate);
  const double value = std::exp(-rate * t) / (1 + end);
  return {value, value * (end / (1 + end) - t)};
}

/// (1 - exp(-R t)) / (1 - exp(-R)), which goes from 0 to 1, with the rate 0 in a straight line.
Shape recovery(double t, double rate) {
  if (rate < 0) return {1 - recovery(1 - t, -rate).value, recovery(1 - t, -rate).slope};
  const auto share = [](double y) { return y > 0 ? y / std::expm1(y) : 1; };
  const double value = rate > 0 ? std::expm1(-rate * t) / std::expm1(-rate) : t;
  return {value, value * (rate < 1e-4 ? (1 - t) / 2 : (share(rate * t) - share(rate)) / rate)};
}

/// What MINPACK is to fit: x[0] times a shape of rate x[1] and, for a recovery, x[2].
struct Task {
  const std::vector<double>& times;
  const std::vector<double>& weights;
  const std::vector<double>& targets;  // the weighted values
  bool hasPlateau;
};

/// Weighted deviations, or their derivatives, as MINPACK asks for them.
int calculate(void* data, int, int, const double* x, double* deviations, double* derivatives, int rows, int wanted) {
  const auto& task = *static_cast<const Task*>(data);
  const auto column = static_cast<std::size_t>(rows);
  for (std::size_t n = 0; n < task.times.size(); ++n) {
    const auto [value, slope] = task.hasPlateau ? recovery(task.times[n], x[1]) : decay(task.times[n], x[1]);
    const double weight = task.weights[n];
    if (wanted == 1) deviations[n] = weight * (x[0] * value + (task.hasPlateau ? x[2] : 0)) - task.targets[n];
    if (wanted != 2) continue;
    derivatives[n] = weight * value;
    derivatives[column + n] = weight * x[0] * slope;
    if (task.hasPlateau) derivatives[2 * column + n] = weight;
  }
  return 0;
}

double multiply(const std::vector<double>& a, const std::vector<double>& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

/// The amounts of x[0], x[1] and x[2] in a parameter of the curve that is asked for: its value and its derivatives.
struct Parameter {
  double value;
  std::array<double, 3> slopes;

  double getError(const double* covariance, std::size_t rows, std::size_t columns) const {
    double variance = 0;
    for (std::size_t a = 0; a < columns; ++a) {
      for (std::size_t b = 0; b < columns; ++b) variance += slopes[a] * slopes[b] * covariance[a * rows + b];
    }
    return variance > 0 ? std::sqrt(variance) : NAN;
  }
};

}  // namespace

ExponentialFitter::ExponentialFitter(const std::vector<double>& unscaledTimes, const std::vector<double>& uncertainties,
                                     bool plateau)
    : hasPlateau(plateau), times(unscaledTimes), weights(times.size(), 1.0) {
  const auto [first, last] = std::minmax_element(unscaledTimes.begin(), unscaledTimes.end());
  range = *last - *first;
  start = *first / range;
  distinct = std::isfinite(range) ? std::set<double>(times.begin(), times.end()).size() : 1;
  if (distinct < (hasPlateau ? 3 : 2)) return;
  double beforeLast = 0;
  for (double& t : times) {
    t = (t - *first) / range;
    if (t > 0) second = std::min(second, t);
    if (t < 1) beforeLast = std::max(beforeLast, t);
  }
  if (!uncertainties.empty()) {
    const double least = *std::min_element(uncertainties.begin(), uncertainties.end());
    for (std::size_t n = 0; n < weights.size(); ++n) weights[n] = least / uncertainties[n];
    unit = 1 / least;
  }
  constexpr double kSlowest = 0.01;
  constexpr double kGone = 50;  // nothing is seen of what is so many time constants old
  for (double rate = kGone / (1 - beforeLast); rate > kSlowest; rate /= 1.3) addTrial(-rate);
  addTrial(0);
  for (double rate = kSlowest; rate < kGone / second; rate *= 1.3) addTrial(rate);
}

void ExponentialFitter::addTrial(double rate) {
  Trial trial{.rate = rate, .rest = weights};
  for (std::size_t n = 0; n < times.size(); ++n) {
    trial.rest[n] *= hasPlateau ? recovery(times[n], rate).value : decay(times[n], rate).value;
  }
  if (hasPlateau) trial.offset = multiply(trial.rest, weights) / multiply(weights, weights);
  for (std::size_t n = 0; n < times.size(); ++n) trial.rest[n] -= trial.offset * weights[n];
  trial.length = std::sqrt(multiply(trial.rest, trial.rest));
  for (double& value : trial.rest) value /= trial.length;
  trials.push_back(std::move(trial));
}

/// The minimum that is reached from a trial, of the curve whose times run from 0 to 1, with the errors that deviations
/// of 1 would leave.
ExponentialFit ExponentialFitter::descend(const std::vector<double>& targets, const Trial& trial) const {
  const std::size_t rows = times.size();
  const auto count = static_cast<int>(rows);
  const std::size_t columns = hasPlateau ? 3 : 2;
  Task task{times, weights, targets, hasPlateau};
  std::array<double, 3> x{multiply(targets, trial.rest) / trial.length, trial.rate, 0};
  x[2] = multiply(targets, weights) / multiply(weights, weights) - x[0] * trial.offset;
  std::array<int, 3> order{};
  std::vector<double> deviations(rows);
  std::vector<double> matrix(columns * rows);
  std::vector<double> work(rows + 5 * columns);
  lmder1(calculate, &task, count, static_cast<int>(columns), &x[0], &deviations[0], &matrix[0], count, 1e-12, &order[0],
         &work[0], static_cast<int>(work.size()));
  covar(static_cast<int>(columns), &matrix[0], count, &order[0], 1e-15, &work[0]);

  // How A and B follow from x.
  const double rate = x[1];
  const double end = std::exp(-std::fabs(rate));
  const double toZero = std::exp(rate * start - (rate < 0 ? -rate : 0)) / (1 + end);  // of a decay
  const double later = (rate < 0 ? 1 : end) / (1 + end);
  const double whole = -1 / std::expm1(-rate);  // of a recovery
  const double bend = whole * (1 - whole);
  const double back = std::exp(rate * start);
  const Parameter amplitude =
      hasPlateau ? Parameter{x[0] * whole * back, {whole * back, x[0] * (bend + start * whole) * back, 0}}
                 : Parameter{x[0] * toZero, {toZero, x[0] * toZero * (start + later), 0}};
  const Parameter plateau{x[2] + x[0] * whole, {whole, x[0] * bend, 1}};
  return {.rate = rate,
          .rateError = Parameter{rate, {0, 1, 0}}.getError(&matrix[0], rows, columns),
          .amplitude = amplitude.value,
          .amplitudeError = amplitude.getError(&matrix[0], rows, columns),
          .plateau = plateau.value,
          .plateauError = plateau.getError(&matrix[0], rows, columns),
          .chi2 = multiply(deviations, deviations)};
}

ExponentialFit ExponentialFitter::fit(const std::vector<double>& values) const {
  if (trials.empty()) return {};
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  const double scale = *least == 0 && *greatest == 0 ? 1 : std::max(-*least, *greatest);
  std::vector<double> targets = weights;
  for (std::size_t n = 0; n < targets.size(); ++n) targets[n] *= values[n] / scale;
  std::vector<double> gains{-1};
  for (const Trial& trial : trials) gains.push_back(std::pow(multiply(targets, trial.rest), 2));
  gains.push_back(-1);
  ExponentialFit fit;
  for (std::size_t n = 1; n + 1 < gains.size(); ++n) {
    if (gains[n] <= gains[n - 1] || gains[n] < gains[n + 1]) continue;
    const ExponentialFit other = descend(targets, trials[n - 1]);
    if (!(fit.chi2 <= other.chi2)) fit = other;
  }
  fit.freedom = static_cast<double>(times.size()) - (hasPlateau ? 3 : 2);
  fit.isAtEdge = fit.rate <= 0.01 || fit.rate * second >= std::log(100);
  const double noise = unit > 0 ? 1 / (unit * scale) : std::sqrt(fit.chi2 / fit.freedom);
  const double toChi2 = unit > 0 ? std::pow(unit * scale, 2) : scale * scale;
  const double mean = multiply(targets, weights) / multiply(weights, weights);
  fit.constantChi2 = toChi2 * (multiply(targets, targets) - mean * multiply(targets, weights));
  fit.chi2 *= toChi2;
  fit.rate /= range;
  fit.rateError *= noise / range;
  fit.amplitude *= scale;
  fit.amplitudeError *= noise * scale;
  fit.plateau *= scale;
  fit.plateauError *= noise * scale;
  return fit;
}

}  // namespace peakbox
