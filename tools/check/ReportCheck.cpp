#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>

#include "check/Checks.h"

namespace peakbox {

namespace {

namespace fs = std::filesystem;

bool isReport(const std::string& file) {
  std::ifstream stream(file);
  std::string line;
  if (!std::getline(stream, line)) return true;  // an empty one may become one
  return line.starts_with("# FIELD(MHz): ") || line.starts_with("# SPECTRUM ");
}

/// Why a report cannot be written; empty where it can.
std::string describeRefusal(const fs::path& report) {
  std::error_code ignored;
  if (fs::is_directory(report, ignored)) return "written: this is a folder";
  if (fs::exists(report, ignored)) return access(report.c_str(), W_OK) == 0 ? "" : "written: no permission";
  // What a link points to is created.
  const bool isLink = fs::is_symlink(report, ignored);
  const fs::path target = isLink ? report.parent_path() / fs::read_symlink(report, ignored) : report;
  const fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
  if (!fs::is_directory(folder, ignored)) return "created: no such folder";
  if (target.filename().native().size() > NAME_MAX) return "created: its name is too long";
  return access(folder.c_str(), W_OK | X_OK) == 0 ? "" : "created: no permission in its folder";
}

}  // namespace

void checkReport(const std::string& report, const std::string& parameterFile, const RunSettings& settings,
                 Findings& findings) {
  const FileFindings ofReport{findings, Findings::Parameters, report.empty() ? "-o" : report};
  std::vector<std::string> inputs{parameterFile, settings.getPeakListFile()};
  for (int k = 0; k < settings.getSpectrumCount(); ++k) inputs.emplace_back(settings.getSpectrumFile(k));
  std::error_code ignored;
  for (const std::string& input : inputs) {
    if (fs::equivalent(report, input, ignored))
      return ofReport.add(0, "error: the report would overwrite the input ", input);
  }
  const std::string refusal = describeRefusal(report);
  if (report.empty()) {
    ofReport.add(0, "error: the report has no name");
  } else if (!refusal.empty()) {
    ofReport.add(0, "error: the report cannot be ", refusal);
  } else if (fs::is_regular_file(report, ignored) && !isReport(report)) {
    ofReport.add(0, "error: the report would overwrite a file that is no report");
  }
}

}  // namespace peakbox
