#include <algorithm>
#include <cmath>

#include "base/TextNumbers.h"
#include "rates/ExponentialFit.h"
#include "rates/Models.h"

namespace peakbox {

namespace {

/// The probability that noise alone gives so large a Chi2 or a larger one.
double estimateChance(double chi2, double freedom) {
  const double least = std::fmod(freedom, 2) / 2;
  const int terms = static_cast<int>(freedom / 2);
  double chance = least > 0 ? std::erfc(std::sqrt(chi2 / 2)) : 0;
  for (int n = 0; n < terms; ++n) {
    const double k = n + least;
    chance += std::exp(k * std::log(chi2 / 2) - chi2 / 2 - std::lgamma(k + 1));
  }
  return chance;
}

/// What a reader of the rate must know first; nothing where all is well.
const char* findRemark(const std::vector<double>& values, const std::vector<double>& uncertainties,
                       const ExponentialFit& fit) {
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  // Noise lies on both sides of zero, and a baseline that is off a little moves all.
  const double turned = std::max(-*least, *greatest) * (uncertainties.empty() ? 1.0 / 3 : 0.1);
  bool isSeen = false;
  bool hasSign[2] = {};
  for (std::size_t n = 0; n < values.size(); ++n) {
    const double noise = uncertainties.empty() ? 0 : uncertainties[n];
    isSeen |= std::fabs(values[n]) >= 3 * noise;
    hasSign[values[n] > 0] |= std::fabs(values[n]) >= std::max(turned, 4 * noise);
  }
  if (!fit.hasThreeTimes) return "fewer than three distinct parameters";
  if (*least == *greatest || !isSeen) return "no curve";
  if (hasSign[0] && hasSign[1]) return "changes sign: no decay";
  if (!(fit.rateError <= std::fabs(fit.rate))) return "rate not determined";
  if (fit.rate < 0) return "grows";
  if (fit.isAtEdge) return "at the edge of what the parameters show";
  return !uncertainties.empty() && estimateChance(fit.chi2, fit.freedom) < 1e-4 ? "poor fit" : "";
}

}  // namespace

std::string writeDecays(const Report& report, const std::vector<double>& uncertainties) {
  const std::vector<double> times = readParameters(report, "a fit");
  std::string text = "Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tChi2\tDof\tRemark\n";
  for (std::size_t p = 0; p < report.getPeaks().size(); ++p) {
    const Report::Peak& peak = report.getPeaks()[p];
    if (peak.isNoise) continue;
    std::vector<double> values;
    for (const Report::Spectrum& spectrum : report.getSpectra()) values.push_back(spectrum.rows[p].value);
    const ExponentialFit fit = fitExponential(times, values, uncertainties);
    const double excess = uncertainties.empty() ? 1 : std::fmax(1, std::sqrt(fit.chi2 / fit.freedom));
    text.append(peak.number).append("\t").append(peak.label);
    for (const double number :
         {fit.rate, fit.rateError, fit.rateError * excess, fit.amplitude, fit.amplitudeError, fit.chi2, fit.freedom}) {
      text.append("\t").append(std::isfinite(number) ? realToText(number) : "nan");
    }
    text.append("\t").append(findRemark(values, uncertainties, fit)).append("\n");
  }
  return text;
}

}  // namespace peakbox
