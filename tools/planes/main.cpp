#include <filesystem>
#include <set>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "common/Tool.h"
#include "planes/Delays.h"
#include "planes/FileOrder.h"
#include "planes/PlaneWriter.h"

namespace {

using namespace peakbox;
using namespace peakbox::planes;
namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

/// The files, all of which must hold the same.
std::vector<PipeFile> readFiles(const Texts& names) {
  std::vector<PipeFile> files;
  std::set<fs::path> known;
  for (const std::string& name : names) {
    const PipeFile& file = files.emplace_back(name);
    std::error_code isNameless;  // a file that has been removed, and is still open, has no path
    const fs::path path = fs::canonical(name, isNameless);
    if (!known.insert(isNameless ? fs::path(name) : path).second) refuse(name, "is given twice");
    if (file.planeCount > 1 && names.size() > 1) refuse(name, "this is a whole cube, which can only be given alone");
    if (file.dimensionCount != files[0].dimensionCount || file.axes != files[0].axes) {
      refuse(name, "its sizes or axes differ from those of " + names[0]);
    }
  }
  return files;
}

/// Where each plane comes from; says so where some are left out.
Texts nameSources(const std::vector<PipeFile>& files) {
  Texts sources;
  for (const PipeFile& file : files) sources.push_back(file.path);
  const std::string name = sources[0] + ", plane ";
  if (files[0].planeCount > 1) sources.clear();
  while (sources.size() < files[0].planeCount) sources.push_back(name + std::to_string(sources.size() + 1));
  const std::string claimed = std::to_string(files[0].claimedCount);
  const std::string count = std::to_string(sources.size());
  if (files[0].claimedCount > 1 && claimed != count) {
    warn(files[0].path, "its header counts " + claimed + " planes, and there are " + count);
  }
  return sources;
}

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

  const std::vector<PipeFile> files = readFiles(names);
  if (!arguments.has('k')) refuseFallingNumbers(names);
  const Texts sources = nameSources(files);
  const Texts delays = list.empty() ? Texts(sources.size()) : readDelays(list, secondsPerCount);
  const auto count = [](const Texts& texts) { return std::to_string(texts.size()); };
  if (delays.size() != sources.size()) {
    refuse(list, "has " + count(delays) + " delays, and there are " + count(sources) + " planes");
  }
  std::string lines;
  for (std::size_t n = 0; n < sources.size(); ++n) {
    const std::string path = namePlane(folder, n + 1);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(path, ignored))) refuse(path, "exists already");
    lines += "# " + showControls(path + ": " + sources[n]) + "\n";
    lines += "SPECTRUM " + path + (list.empty() ? "" : " ") + delays[n] + "\n";
  }
  writePlanes(files, folder, lines);
  return 0;
}

}  // namespace

int peakboxPlanes(int count, char** words) {
  return runTool({"peakbox-planes", "[-k] [-l LIST [-t SECONDS]] -o DIR FILE...", "kl:o:t:", convert}, count, words);
}
