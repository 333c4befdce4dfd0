// peakbox-rates [-n NOISE | -r] [-m MODEL] [-z SPECTRA] [-T TIME] [REPORT]: what the intensities of each peak say, see
// peakbox-rates(1).

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "common/Tool.h"
#include "rates/Models.h"
#include "results/Uncertainties.h"

namespace {

using namespace peakbox;

/// The numbers of -z, which counts spectra from 1.
std::set<double> readNumbers(const Arguments& arguments) {
  const std::string text = arguments.get('z');
  std::set<double> numbers;
  for (const std::string_view field : splitFields(text, ',')) {
    if (field.empty() || field.find_first_not_of("0123456789") != std::string_view::npos) arguments.refuseUsage();
    numbers.insert(textToReal(std::string(field).c_str()));
  }
  return numbers;
}

/// The spectra with these numbers, counted from 0.
std::vector<std::size_t> findReferences(const std::set<double>& numbers, const Report& report) {
  const std::size_t count = report.getSpectra().size();
  std::vector<std::size_t> references;
  for (const double number : numbers) {
    if (number < 1 || number > static_cast<double>(count)) {
      refuse(report.getName(), "there is no spectrum " + realToText(number) + ", which -z names");
    }
    references.push_back(static_cast<std::size_t>(number) - 1);
  }
  if (references.size() == count) refuse(report.getName(), "-z leaves no spectrum");
  return references;
}

int run(const Arguments& arguments) {
  const std::vector<std::string>& files = arguments.getOperands();
  const std::string model = arguments.has('m') ? arguments.get('m') : "decay";
  const bool isFit = model == "decay" || model == "recovery";
  const bool hasTime = model == "r2eff";
  const double time = textToDecimal(arguments.get('T')).value_or(0);
  if (files.size() > 1 || !(isFit || model == "ratio" || hasTime) || (arguments.has('n') && arguments.has('r')) ||
      arguments.has('z') == isFit || arguments.has('T') != hasTime || (time > 0) != hasTime) {
    arguments.refuseUsage();
  }
  const std::set<double> numbers = isFit ? std::set<double>() : readNumbers(arguments);
  const Report report = readReport(files.empty() ? "-" : files[0]);
  const std::vector<double> uncertainties = arguments.has('n')   ? readUncertainties(arguments.get('n'), report)
                                            : arguments.has('r') ? poolRepeats(report)
                                                                 : std::vector<double>();
  if (isFit) return answer(writeFits(report, uncertainties, model == "recovery"));
  if (uncertainties.empty())
    refuse(report.getName(), "-m " + model + " needs -n NOISE (of peakbox-noise) or -r (repeats)");
  return answer(writeRatios(report, uncertainties, findReferences(numbers, report), time));
}

}  // namespace

int peakboxRates(int argc, char** argv) {
  return runTool({"peakbox-rates", "[-n NOISE | -r] [-m MODEL] [-z SPECTRA] [-T TIME] [REPORT]", "n:rm:z:T:", run},
                 argc, argv);
}
