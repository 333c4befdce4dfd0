#include <filesystem>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "common/Tool.h"
#include "planes/Delays.h"
#include "planes/FileOrder.h"
#include "planes/PlaneWriter.h"
#include "planes/Series.h"

namespace {

using namespace peakbox;
using namespace peakbox::planes;
namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

int convert(const Arguments& arguments) {
  const std::string list = arguments.get('l');
  std::string folder = arguments.get('o');
  const Texts& names = arguments.getOperands();
  if (names.empty() || folder.empty() || (arguments.has('l') && list.empty())) arguments.refuseUsage();
  const std::optional<double> secondsPerCount = textToDecimal(arguments.get('t'));
  if (arguments.has('t') && (list.empty() || !(secondsPerCount > 0.0))) arguments.refuseUsage();
  while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
  if (folder.find_first_of(" \t\r\n,") != std::string::npos) {
    refuse(folder, "a name in a parameter file has no blanks and no commas");
  }

  const std::vector<std::size_t> before = arguments.has('a') ? findPlanes(folder) : std::vector<std::size_t>();
  const std::vector<Layout> series = readSeries(names, before.empty() ? "" : namePlane(folder, before.front()));
  if (!arguments.has('k')) refuseFallingNumbers(names);
  const Texts sources = nameSources(series);
  const Texts delays = list.empty() ? Texts(sources.size()) : readDelays(list, secondsPerCount);
  const auto count = [](const Texts& texts) { return std::to_string(texts.size()); };
  if (delays.size() != sources.size()) {
    refuse(list, "has " + count(delays) + " delays, and there are " + count(sources) + " planes");
  }
  const std::size_t number = before.empty() ? 1 : before.back() + 1;
  std::string lines;
  for (std::size_t n = 0; n < sources.size(); ++n) {
    const std::string path = namePlane(folder, number + n);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(path, ignored))) refuse(path, "exists already");
    lines += "# " + showControls(path + ": " + sources[n]) + "\n";
    lines += "SPECTRUM " + path + (list.empty() ? "" : " ") + delays[n] + "\n";
  }
  writePlanes(series, folder, number, lines);
  return 0;
}

}  // namespace

int peakboxPlanes(int count, char** words) {
  return runTool({"peakbox-planes", "[-ak] [-l LIST [-t SECONDS]] -o DIR FILE...", "akl:o:t:", convert}, count, words);
}
