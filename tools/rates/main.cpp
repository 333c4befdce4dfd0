// peakbox-rates [-n NOISE | -r] [-m MODEL] [REPORT]: what the intensities of each peak say, see peakbox-rates(1).

#include <map>
#include <string>
#include <vector>

#include "common/Tool.h"
#include "rates/Models.h"
#include "results/Uncertainties.h"

namespace {

using namespace peakbox;

int run(const Arguments& arguments) {
  const std::map<std::string, decltype(&writeDecays)> models{{"decay", writeDecays}};
  const std::vector<std::string>& files = arguments.getOperands();
  const auto model = models.find(arguments.has('m') ? arguments.get('m') : "decay");
  if (files.size() > 1 || model == models.end() || (arguments.has('n') && arguments.has('r'))) arguments.refuseUsage();
  const Report report = readReport(files.empty() ? "-" : files[0]);
  const std::vector<double> uncertainties = arguments.has('n')   ? readUncertainties(arguments.get('n'), report)
                                            : arguments.has('r') ? poolRepeats(report)
                                                                 : std::vector<double>();
  return answer(model->second(report, uncertainties));
}

}  // namespace

int peakboxRates(int argc, char** argv) {
  return runTool({"peakbox-rates", "[-n NOISE | -r] [-m decay] [REPORT]", "n:rm:", run}, argc, argv);
}
