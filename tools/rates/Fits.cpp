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

/// Whether there are intensities of both signs that neither noise, which lies on both sides of zero, nor a baseline
/// that is off a little explains.
bool changesSign(const std::vector<double>& values, const std::vector<double>& uncertainties) {
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  const double turned = std::max(-*least, *greatest) * (uncertainties.empty() ? 1.0 / 3 : 0.1);
  bool hasSign[2] = {};
  for (std::size_t n = 0; n < values.size(); ++n) {
    const double noise = uncertainties.empty() ? 0 : uncertainties[n];
    hasSign[values[n] > 0] |= std::fabs(values[n]) >= std::max(turned, 4 * noise);
  }
  return hasSign[0] && hasSign[1];
}

/// What a reader of the rate must know first; nothing where all is well.
const char* findRemark(const std::vector<double>& values, const std::vector<double>& uncertainties,
                       const ExponentialFit& fit, bool hasPlateau) {
  const bool hasNoise = !uncertainties.empty();
  if (isBare(values, uncertainties)) return "no curve";
  if (hasPlateau && hasNoise && fit.constantChi2 - fit.chi2 < 9) return "no curve";  // three standard deviations
  if (!hasPlateau && changesSign(values, uncertainties)) return "changes sign: no decay";
  if (!hasPlateau && fit.rate < -fit.rateError) return "grows";
  if (!(fit.rateError <= std::fabs(fit.rate))) return "rate not determined";
  if (fit.isAtEdge) return "at the edge of what the parameters show";
  return hasNoise && estimateChance(fit.chi2, fit.freedom) < 1e-4 ? "poor fit" : "";
}

}  // namespace

std::vector<double> getIntensities(const Report& report, std::size_t p) {
  std::vector<double> values;
  for (const Report::Spectrum& spectrum : report.getSpectra()) values.push_back(spectrum.rows[p].value);
  return values;
}

bool isBare(const std::vector<double>& values, const std::vector<double>& uncertainties) {
  const bool isFlat = std::all_of(values.begin(), values.end(), [&](double value) { return value == values[0]; });
  bool isSeen = uncertainties.empty();
  for (std::size_t n = 0; n < uncertainties.size(); ++n) isSeen |= std::fabs(values[n]) >= 3 * uncertainties[n];
  return isFlat || !isSeen;
}

std::string writeFits(const Report& report, const std::vector<double>& uncertainties, bool hasPlateau) {
  const ExponentialFitter fitter(readParameters(report, "a fit"), uncertainties, hasPlateau);
  const bool areEnough = fitter.countTimes() > (hasPlateau ? 3 : 2);
  const char* tooFew = hasPlateau ? "fewer than four distinct parameters" : "fewer than three distinct parameters";
  std::string text = "Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\t";
  text += hasPlateau ? "B\tB_err\tChi2\tDof\tRemark\n" : "Chi2\tDof\tRemark\n";
  for (std::size_t p = 0; p < report.getPeaks().size(); ++p) {
    const Report::Peak& peak = report.getPeaks()[p];
    if (peak.isNoise) continue;
    const std::vector<double> values = getIntensities(report, p);
    const ExponentialFit fit = fitter.fit(values);
    const bool isScaled = !uncertainties.empty() && fit.chi2 > fit.freedom && fit.freedom > 0;
    const double scaled = fit.rateError * (isScaled ? std::sqrt(fit.chi2 / fit.freedom) : 1);
    std::vector<double> numbers{fit.rate, fit.rateError, scaled, fit.amplitude, fit.amplitudeError};
    if (hasPlateau) numbers.insert(numbers.end(), {fit.plateau, fit.plateauError});
    numbers.insert(numbers.end(), {fit.chi2, fit.freedom});
    text.append(peak.number).append("\t").append(peak.label);
    for (const double number : numbers) text.append("\t").append(std::isfinite(number) ? realToText(number) : "nan");
    text.append("\t").append(areEnough ? findRemark(values, uncertainties, fit, hasPlateau) : tooFew).append("\n");
  }
  return text;
}

}  // namespace peakbox
