#include "results/Ratios.h"

#include <algorithm>
#include <cmath>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "rates/Models.h"

namespace peakbox {

std::string writeRatios(const Report& report, const std::vector<double>& uncertainties,
                        const std::vector<std::size_t>& references, double time) {
  const bool areRates = time > 0;
  std::string text = "Num\tLabel\tSpectrum\tParameter\t";
  text += areRates ? "R2eff\tR2eff_err\tRemark\n" : "Ratio\tRatio_err\tRemark\n";
  for (std::size_t p = 0; p < report.getPeaks().size(); ++p) {
    const Report::Peak& peak = report.getPeaks()[p];
    if (peak.isNoise) continue;
    const Measured reference = takeReference(report, p, uncertainties, references);
    const bool isLost =
        isBare(getIntensities(report, p), uncertainties) || std::fabs(reference.value) < 3 * reference.error;
    for (std::size_t s = 0; s < report.getSpectra().size(); ++s) {
      if (std::find(references.begin(), references.end(), s) != references.end()) continue;
      const Report::Spectrum& spectrum = report.getSpectra()[s];
      const Measured ratio = divide({spectrum.rows[p].value, uncertainties[s]}, reference);
      const Measured result = areRates ? takeEffectiveRate(ratio, time) : ratio;
      text.append(peak.number).append("\t").append(peak.label).append("\t").append(std::to_string(s + 1));
      text.append("\t").append(spectrum.parameter1.empty() ? "nan" : spectrum.parameter1);
      for (const double number : {result.value, result.error}) {
        text.append("\t").append(std::isfinite(number) ? realToText(number) : "nan");
      }
      text.append(areRates && !(ratio.value > 0) ? "\tnot above 0\n" : isLost ? "\tno curve\n" : "\t\n");
    }
  }
  return text;
}

}  // namespace peakbox
