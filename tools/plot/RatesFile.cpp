#include "plot/RatesFile.h"

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"

namespace peakbox {

namespace {

/// Whether a fit leaves the Chi2 that it says, as far as numbers of six digits can show.
bool isOf(const Report& report, std::size_t j, const PeakRate& fit, const std::vector<double>& times,
          const std::vector<double>& uncertainties) {
  constexpr double kRounding = 5.001e-6;
  double chi2 = 0;
  double tolerance = kRounding * fit.chi2;
  for (std::size_t k = 0; k < times.size(); ++k) {
    const double unit = uncertainties.empty() ? 1 : uncertainties[k];
    const double deviation = std::fabs(report.getSpectra()[k].rows[j].value - fit.getHeight(times[k])) / unit;
    const double rounding =
        kRounding * std::fabs(fit.getHeight(times[k])) * (1 + std::fabs(fit.rate * times[k])) / unit;
    chi2 += deviation * deviation;
    tolerance += (2 * deviation + rounding) * rounding;
  }
  return !(std::fabs(chi2 - fit.chi2) > tolerance);
}

}  // namespace

std::vector<std::optional<PeakRate>> readRates(const std::string& file, const Report& report,
                                               const std::vector<double>& times,
                                               const std::vector<double>& uncertainties) {
  const std::optional<std::string> bytes = readFile(file);
  if (!bytes) refuse(file, "cannot be read");
  std::vector<std::string> lines = splitLines(mendLineEnds(*bytes));
  if (lines.empty() || lines[0] != "Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tChi2\tDof\tRemark") {
    refuse(file, "this is no file of peakbox-rates with the model decay");
  }
  std::vector<std::optional<PeakRate>> rates;
  std::size_t line = 1;
  for (const Report::Peak& peak : report.getPeaks()) {
    std::optional<PeakRate>& rate = rates.emplace_back();
    if (peak.isNoise) continue;
    const std::string text = line < lines.size() ? lines[line] : "";
    const auto fields = splitFields(text, '\t');
    const std::string place = "line " + std::to_string(++line) + ": ";
    if (fields.size() != 10 || fields[0] != peak.number || fields[1] != peak.label) {
      refuse(file, place + "not that of peak " + std::string(peak.number) + " of " + report.getName());
    }
    const auto read = [&](std::size_t n) { return textToDecimal(std::string(fields[n])).value_or(NAN); };
    rate = PeakRate{read(2), read(4), read(5), read(7), read(8), std::string(fields[9])};
    if (!isOf(report, rates.size() - 1, *rate, times, uncertainties)) {
      refuse(file, place + report.getName() + " gives another Chi2 with these uncertainties");
    }
  }
  if (line < lines.size()) refuse(file, "line " + std::to_string(line + 1) + ": no peak of " + report.getName());
  return rates;
}

}  // namespace peakbox
