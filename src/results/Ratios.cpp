#include "results/Ratios.h"

#include <cmath>

namespace peakbox {

Measured takeReference(const Report& report, std::size_t p, const std::vector<double>& uncertainties,
                       const std::vector<std::size_t>& references) {
  double sum = 0;
  double weights = 0;
  for (const std::size_t s : references) {
    // In parts of the first one's, of which the square is a number.
    const double weight = std::pow(uncertainties[references[0]] / uncertainties[s], 2);
    sum += weight * report.getSpectra()[s].rows[p].value;
    weights += weight;
  }
  return {sum / weights, uncertainties[references[0]] / std::sqrt(weights)};
}

Measured divide(const Measured& one, const Measured& other) {
  const double ratio = one.value / other.value;
  return {ratio, std::hypot(one.error, ratio * other.error) / std::fabs(other.value)};
}

Measured takeEffectiveRate(const Measured& ratio, double time) {
  if (!(ratio.value > 0)) return {NAN, NAN};
  return {-std::log(ratio.value) / time, ratio.error / ratio.value / time};
}

}  // namespace peakbox
