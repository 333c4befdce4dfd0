// peakbox-table [-n NOISE | -r] [-l | -d DIR] [REPORT]: one line or one file for each peak of a report, or a line for
// each peak and spectrum, see peakbox-table(1).

#include <string>
#include <string_view>
#include <vector>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "common/Tool.h"
#include "results/Report.h"
#include "results/Uncertainties.h"
#include "table/CurveFiles.h"

namespace {

using namespace peakbox;

/// As texts, one for each spectrum; none where none are asked for.
std::vector<std::string> findUncertainties(const Arguments& arguments, const Report& report) {
  const std::vector<double> values = arguments.has('n')   ? readUncertainties(arguments.get('n'), report)
                                     : arguments.has('r') ? poolRepeats(report)
                                                          : std::vector<double>();
  std::vector<std::string> texts;
  for (const double value : values) texts.push_back(realToText(value));
  return texts;
}

std::string writeTable(const Report& report, const std::vector<std::string>& uncertainties) {
  std::string text = "# Num\tLabel";
  for (std::size_t s = 0; s < report.getSpectra().size(); ++s) {
    const Report::Spectrum& spectrum = report.getSpectra()[s];
    const std::string name = spectrum.hasParameters ? std::string(spectrum.parameter1) : std::to_string(s + 1);
    text += "\t" + name;
    if (!uncertainties.empty()) text += "\terr(" + name + ")";
  }
  for (std::size_t p = 0; p < report.getPeaks().size(); ++p) {
    const Report::Peak& peak = report.getPeaks()[p];
    text.append("\n").append(peak.number).append("\t").append(peak.label);
    for (std::size_t s = 0; s < report.getSpectra().size(); ++s) {
      text.append("\t").append(report.getSpectra()[s].rows[p].intensity);
      if (!uncertainties.empty()) text.append("\t").append(uncertainties[s]);
    }
  }
  return text + "\n";
}

std::string writeLongTable(const Report& report, const std::vector<std::string>& uncertainties) {
  std::string text = "Num\tLabel\tSpectrum\tParameter1\tParameter2\tPos1\tPos2\tIntensity\tUncertainty\n";
  for (std::size_t p = 0; p < report.getPeaks().size(); ++p) {
    const Report::Peak& peak = report.getPeaks()[p];
    for (std::size_t s = 0; s < report.getSpectra().size(); ++s) {
      const Report::Spectrum& spectrum = report.getSpectra()[s];
      const Report::Row& row = spectrum.rows[p];
      text.append(peak.number).append("\t").append(peak.label).append("\t").append(std::to_string(s + 1));
      for (const std::string_view word : {spectrum.parameter1, spectrum.parameter2}) {
        text.append("\t").append(word.empty() ? "nan" : word);
      }
      for (const std::string_view number : {row.ppm1, row.ppm2, row.intensity}) text.append("\t").append(number);
      text.append("\t").append(uncertainties.empty() ? "nan" : uncertainties[s]).append("\n");
    }
  }
  return text;
}

/// What is wrong with the report is told before anything is written.
int writeFiles(const Arguments& arguments, const Report& report) {
  readParameters(report, "-d");
  const std::vector<std::string> names = nameCurveFiles(report);
  const std::vector<std::string> uncertainties = findUncertainties(arguments, report);
  if (uncertainties.empty()) {
    warn(report.getName(),
         "the files have no uncertainties: -n NOISE (of peakbox-noise) or -r (from repeats) would give them");
  }
  writeCurveFiles(report, uncertainties, names, arguments.get('d'));
  return 0;
}

int run(const Arguments& arguments) {
  const std::vector<std::string>& operands = arguments.getOperands();
  const bool hasFolder = arguments.has('d');
  if (operands.size() > 1 || (hasFolder && (arguments.get('d').empty() || arguments.has('l'))) ||
      (arguments.has('n') && arguments.has('r'))) {
    arguments.refuseUsage();
  }
  const Report report = readReport(operands.empty() ? "-" : operands[0]);
  if (hasFolder) return writeFiles(arguments, report);
  const std::vector<std::string> uncertainties = findUncertainties(arguments, report);
  return answer(arguments.has('l') ? writeLongTable(report, uncertainties) : writeTable(report, uncertainties));
}

}  // namespace

int peakboxTable(int argc, char** argv) {
  return runTool({"peakbox-table", "[-n NOISE | -r] [-l | -d DIR] [REPORT]", "n:rld:", run}, argc, argv);
}
