#include "results/Uncertainties.h"

#include <cmath>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "results/NoiseFile.h"

namespace peakbox {

namespace {

/// A word behind a spectrum's file: numbers are the same where their values are, as 0.1 and 0.10.
using Word = std::variant<double, std::string>;

Word readWord(std::string_view text) {
  const std::optional<double> number = textToDecimal(std::string(text));
  if (number) return *number;
  return std::string(text);
}

/// The groups of spectra, counted from 0, that have the same parameters.
std::map<std::pair<Word, Word>, std::vector<std::size_t>> findRepeats(const Report& report) {
  std::map<std::pair<Word, Word>, std::vector<std::size_t>> groups;
  for (std::size_t s = 0; s < report.getSpectra().size(); ++s) {
    const Report::Spectrum& spectrum = report.getSpectra()[s];
    if (!spectrum.hasParameters) continue;
    groups[{readWord(spectrum.parameter1), readWord(spectrum.parameter2)}].push_back(s);
  }
  return groups;
}

}  // namespace

std::vector<double> readUncertainties(const std::string& noiseFile, const Report& report,
                                      const std::array<std::int64_t, 2>& box) {
  const std::vector<SpectrumNoise> noise = readNoiseFile(noiseFile);
  const std::vector<Report::Spectrum>& spectra = report.getSpectra();
  if (noise.size() != spectra.size()) {
    refuse(noiseFile, "has the noise of " + std::to_string(noise.size()) + " spectra, and " + report.getName() +
                          " has " + std::to_string(spectra.size()) + " spectra");
  }
  std::vector<double> uncertainties;
  for (std::size_t s = 0; s < noise.size(); ++s) {
    const std::string place = "line " + std::to_string(s + 2) + ": ";
    if (noise[s].file != spectra[s].file) {
      refuse(noiseFile, place + "the noise of " + noise[s].file + ", and spectrum " + std::to_string(s + 1) + " of " +
                            report.getName() + " is " + std::string(spectra[s].file));
    }
    const bool isOtherBox = box[0] != 0 && box != noise[s].size;
    if (isOtherBox) refuse(noiseFile, place + "the noise of another box; run peakbox-noise again");
    uncertainties.push_back(noise[s].box);
  }
  return uncertainties;
}

std::vector<double> poolRepeats(const Report& report) {
  double squares = 0;
  std::size_t freedom = 0;
  for (const auto& [parameters, group] : findRepeats(report)) {
    const auto& first = report.getSpectra()[group[0]].rows;
    for (std::size_t p = 0; p < first.size(); ++p) {
      if (report.getPeaks()[p].isNoise) continue;
      // Deviations from the first one, so that values that are all the same leave nothing.
      double sum = 0;
      double sumOfSquares = 0;
      for (const std::size_t s : group) {
        const double deviation = report.getSpectra()[s].rows[p].value - first[p].value;
        sum += deviation;
        sumOfSquares += deviation * deviation;
      }
      squares += sumOfSquares - sum * sum / static_cast<double>(group.size());
      freedom += group.size() - 1;
    }
  }
  const std::string& name = report.getName();
  if (freedom == 0) refuse(name, "-r needs spectra that repeat a parameter, and peaks other than noise in them");
  if (squares == 0) refuse(name, "-r finds repeats that do not differ at all: is a spectrum named twice?");
  std::vector<double> uncertainties(report.getSpectra().size(), std::sqrt(squares / static_cast<double>(freedom)));
  return uncertainties;
}

}  // namespace peakbox
