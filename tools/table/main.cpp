// peakbox-table [-n NOISE | -r] [-d DIR] [REPORT]: one line or one file for each peak of a report, see
// peakbox-table(1).

#include <string>
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
  if (operands.size() > 1 || (hasFolder && arguments.get('d').empty()) || (arguments.has('n') && arguments.has('r'))) {
    arguments.refuseUsage();
  }
  const Report report = readReport(operands.empty() ? "-" : operands[0]);
  return hasFolder ? writeFiles(arguments, report) : answer(writeTable(report, findUncertainties(arguments, report)));
}

}  // namespace

int peakboxTable(int argc, char** argv) {
  return runTool({"peakbox-table", "[-n NOISE | -r] [-d DIR] [REPORT]", "n:rd:", run}, argc, argv);
}
