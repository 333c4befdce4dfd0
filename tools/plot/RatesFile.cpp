#include "plot/RatesFile.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "results/Ratios.h"

namespace peakbox {

namespace {

constexpr double kRounding = 5.001e-6;  // of a number that has six digits, at most

constexpr std::array<std::pair<const char*, const char*>, 4> kHeaders{
    {{"Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tChi2\tDof\tRemark", "R"},
     {"Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tB\tB_err\tChi2\tDof\tRemark", "R"},
     {"Num\tLabel\tSpectrum\tParameter\tRatio\tRatio_err\tRemark", "ratio"},
     {"Num\tLabel\tSpectrum\tParameter\tR2eff\tR2eff_err\tRemark", "R2eff"}}};

double readNumber(std::string_view field) { return textToDecimal(std::string(field)).value_or(NAN); }

/// The file, which is gone through line by line.
struct Table {
  const std::string& file;
  const Report& report;
  const std::vector<double>& uncertainties;
  std::vector<std::string> lines;
  std::size_t next = 1;

  std::vector<std::string_view> split(std::size_t line) const { return splitFields(lines[line], '\t'); }
  /// The fields of the next line, which is to be one of this peak.
  std::vector<std::string_view> take(const Report::Peak& peak);
  [[noreturn]] void refuseLine(const std::string& reason) const {
    refuse(file, "line " + std::to_string(next) + ": " + reason);
  }
};

std::vector<std::string_view> Table::take(const Report::Peak& peak) {
  const auto fields = next < lines.size() ? split(next) : std::vector<std::string_view>();
  ++next;
  const bool isWhole = fields.size() == split(0).size();
  if (!isWhole || fields[0] != peak.number || fields[1] != peak.label) {
    refuseLine("not that of peak " + std::string(peak.number) + " of " + report.getName());
  }
  return fields;
}

/// Whether a fit leaves the Chi2 that it says, as far as numbers of six digits can show.
bool isOf(const Table& table, std::size_t j, const PeakFit& fit, const std::vector<double>& times) {
  double chi2 = 0;
  double tolerance = kRounding * fit.chi2;
  for (std::size_t k = 0; k < times.size(); ++k) {
    const double unit = table.uncertainties.empty() ? 1 : table.uncertainties[k];
    const double height = fit.getHeight(times[k]);
    const double deviation = std::fabs(table.report.getSpectra()[k].rows[j].value - height) / unit;
    const double decayed = std::fabs(height - fit.plateau);
    const double rounding =
        kRounding * (decayed * (1 + std::fabs(fit.rate * times[k])) + std::fabs(fit.plateau)) / unit;
    chi2 += deviation * deviation;
    tolerance += (2 * deviation + rounding) * rounding;
  }
  return !(std::fabs(chi2 - fit.chi2) > tolerance);
}

PeakResult readFit(Table& table, std::size_t j, const std::vector<double>& times) {
  const auto fields = table.take(table.report.getPeaks()[j]);
  const std::size_t last = fields.size() - 1;
  const auto read = [&](std::size_t n) { return readNumber(fields[n]); };
  const bool hasPlateau = last == 11;
  PeakResult result{.fit = PeakFit{.rate = read(2),
                                   .error = read(4),
                                   .factor = hasPlateau ? -read(5) : read(5),
                                   .plateau = hasPlateau ? read(7) : 0,
                                   .chi2 = read(last - 2),
                                   .freedom = read(last - 1)},
                    .readings = {},
                    .remark = std::string(fields[last])};
  if (!isOf(table, j, *result.fit, times)) {
    table.refuseLine(table.report.getName() + " gives another Chi2 with these uncertainties");
  }
  return result;
}

/// Whether a number of six digits is this one, which has been rounded some times.
bool isRounded(double number, double exact, double times) {
  return std::isfinite(number) ? std::fabs(number - exact) <= times * kRounding * std::fabs(exact)
                               : !std::isfinite(exact);
}

/// The spectra that a file of ratios leaves out, those that the first of its peaks does not have.
std::vector<std::size_t> findReferences(const Table& table) {
  std::vector<std::size_t> references;
  std::size_t line = 1;
  for (std::size_t k = 0; k < table.report.getSpectra().size(); ++k) {
    const bool isThere =
        line < table.lines.size() && table.split(line).size() == 7 && table.split(line)[2] == std::to_string(k + 1);
    if (isThere) ++line;
    if (!isThere) references.push_back(k);
  }
  return references;
}

/// The readings of a peak; `time` is that of effective rates, which their errors tell where it is not yet known.
PeakResult readRatios(Table& table, std::size_t j, const std::vector<std::size_t>& references, bool areRates,
                      double& time) {
  const std::vector<Report::Spectrum>& spectra = table.report.getSpectra();
  const Measured reference = takeReference(table.report, j, table.uncertainties, references);
  PeakResult result;
  std::size_t count = 0;
  for (std::size_t k = 0; k < spectra.size(); ++k) {
    if (std::find(references.begin(), references.end(), k) != references.end()) continue;
    const auto fields = table.take(table.report.getPeaks()[j]);
    const Reading reading{k, readNumber(fields[4]), readNumber(fields[5])};
    Measured exact = divide({spectra[k].rows[j].value, table.uncertainties[k]}, reference);
    if (areRates && time == 0 && exact.value > 0) time = exact.error / exact.value / reading.error;
    if (areRates) exact = takeEffectiveRate(exact, time);
    const double roundings = areRates ? 2 : 1;  // the time has one, too
    if (fields[2] != std::to_string(k + 1) || !isRounded(reading.value, exact.value, roundings) ||
        !isRounded(reading.error, exact.error, roundings)) {
      table.refuseLine(table.report.getName() + " gives another ratio with these uncertainties");
    }
    result.readings.push_back(reading);
    if (!fields[6].empty()) result.remark = fields[6];
    count += fields[6].empty() ? 0 : 1;
  }
  if (count > 0 && count < result.readings.size())
    result.remark += ", in " + std::to_string(count) + " of " + std::to_string(result.readings.size()) + " spectra";
  return result;
}

}  // namespace

Results readRates(const std::string& file, const Report& report, const std::vector<double>& uncertainties) {
  const std::optional<std::string> bytes = readFile(file);
  if (!bytes) refuse(file, "cannot be read");
  Table table{file, report, uncertainties, splitLines(mendLineEnds(*bytes))};
  Results results;
  for (const auto& [header, quantity] : kHeaders) {
    if (!table.lines.empty() && table.lines[0] == header) results.quantity = quantity;
  }
  if (results.quantity.empty()) refuse(file, "this is no file of peakbox-rates");
  const bool areFits = results.quantity == "R";
  const std::vector<double> times = areFits ? readParameters(report, "-f") : std::vector<double>();
  const std::vector<std::size_t> references = areFits ? std::vector<std::size_t>() : findReferences(table);
  if (!areFits && references.empty()) refuse(file, "has no reference among the spectra of " + report.getName());
  if (!areFits && uncertainties.empty()) refuse(file, "holds ratios, which -n or -r must give again");
  double time = 0;
  for (std::size_t j = 0; j < report.getPeaks().size(); ++j) {
    PeakResult& result = results.peaks.emplace_back();
    if (report.getPeaks()[j].isNoise) continue;
    result = areFits ? readFit(table, j, times) : readRatios(table, j, references, results.quantity == "R2eff", time);
  }
  if (table.next < table.lines.size()) {
    ++table.next;
    table.refuseLine("no peak of " + report.getName());
  }
  return results;
}

}  // namespace peakbox
