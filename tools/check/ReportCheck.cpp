#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>

#include "check/Checks.h"

namespace peakbox {

namespace {

namespace fs = std::filesystem;

/// What is wrong with the report; empty where nothing is.
std::string describeRefusal(const fs::path& report) {
  std::error_code ignored;
  if (fs::is_directory(report, ignored)) return "cannot be written: this is a folder";
  if (fs::exists(report, ignored)) {
    if (access(report.c_str(), W_OK) != 0) return "cannot be written: no permission";
    std::ifstream stream;
    if (fs::is_regular_file(report, ignored)) stream.open(report);
    std::string line;
    std::getline(stream, line);
    const bool isReport = !stream || line.starts_with("# FIELD(MHz): ") || line.starts_with("# SPECTRUM ");
    return isReport ? "" : "would overwrite a file that is no report";
  }
  // What a link points to is created.
  const bool isLink = fs::is_symlink(report, ignored);
  const fs::path target = isLink ? report.parent_path() / fs::read_symlink(report, ignored) : report;
  const fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
  if (!fs::is_directory(folder, ignored)) return "cannot be created: no such folder";
  if (target.filename().native().size() > NAME_MAX) return "cannot be created: its name is too long";
  return access(folder.c_str(), W_OK | X_OK) == 0 ? "" : "cannot be created: no permission in its folder";
}

}  // namespace

void checkReport(const std::string& report, const std::string& parameterFile, const RunSettings& settings,
                 Findings& findings) {
  const FileFindings ofReport{findings, Findings::Parameters, report.empty() ? "-o" : report};
  std::vector<std::string> inputs{parameterFile, settings.getPeakListFile()};
  for (int k = 0; k < settings.getSpectrumCount(); ++k) inputs.emplace_back(settings.getSpectrumFile(k));
  const std::string refusal = describeRefusal(report);
  const auto isReport = [&](const std::string& input) {
    std::error_code ignored;
    return fs::equivalent(report, input, ignored);
  };
  const auto input = std::find_if(inputs.begin(), inputs.end(), isReport);
  if (input != inputs.end()) {
    ofReport.add(true, 0, "error: the report would overwrite the input ", *input);
  } else if (report.empty()) {
    ofReport.add(true, 0, "error: the report has no name");
  } else {
    ofReport.add(!refusal.empty(), 0, "error: the report ", refusal);
  }
}

}  // namespace peakbox
