#include "table/CurveFiles.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

#include "base/Refusal.h"

namespace peakbox {

namespace {

/// The label without what means something to a file system or a shell: neither hidden, nor "..", nor like an option.
std::string makePlain(const Report::Peak& peak) {
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._+-";
  if (peak.label.empty()) return "peak-" + std::string(peak.number);
  std::string name(peak.label);
  for (char& c : name) {
    if (kPlain.find(c) == std::string_view::npos) c = '_';
  }
  if (name[0] == '.' || name[0] == '-') name[0] = '_';
  return name;
}

std::string writeCurve(const Report& report, std::size_t p, const std::vector<std::string>& uncertainties) {
  const Report::Peak& peak = report.getPeaks()[p];
  std::string text = "# Peak " + std::string(peak.number) + ": " + std::string(peak.label) + "\n";
  text += uncertainties.empty() ? "# Parameter\tIntensity\n" : "# Parameter\tIntensity\tUncertainty\n";
  for (std::size_t s = 0; s < report.getSpectra().size(); ++s) {
    const Report::Spectrum& spectrum = report.getSpectra()[s];
    text.append(spectrum.parameter1).append("\t").append(spectrum.rows[p].intensity);
    if (!uncertainties.empty()) text += "\t" + uncertainties[s];
    text += '\n';
  }
  return text;
}

}  // namespace

std::vector<std::string> nameCurveFiles(const Report& report) {
  std::vector<std::string> names;
  std::map<std::string, int> bearers;
  for (const Report::Peak& peak : report.getPeaks()) {
    names.push_back(peak.isNoise ? "" : makePlain(peak));
    ++bearers[names.back()];
  }
  std::map<std::string, std::string_view> owners;
  for (std::size_t p = 0; p < names.size(); ++p) {
    if (names[p].empty()) continue;
    const std::string_view number = report.getPeaks()[p].number;
    if (bearers[names[p]] > 1) names[p] = std::string(number) + "-" + names[p];
    const auto [owner, isNew] = owners.emplace(names[p], number);
    if (!isNew) {
      refuse(report.getName(), "peaks " + std::string(owner->second) + " and " + std::string(number) +
                                   " would both be written to " + names[p]);
    }
  }
  return names;
}

void writeCurveFiles(const Report& report, const std::vector<std::string>& uncertainties,
                     const std::vector<std::string>& names, const std::string& folder) {
  std::error_code failed;
  std::filesystem::create_directories(folder, failed);
  if (failed || !std::filesystem::is_directory(folder, failed)) refuse(folder, "is no folder and cannot be made one");
  for (std::size_t p = 0; p < names.size(); ++p) {
    if (names[p].empty()) continue;
    const std::string path = folder + "/" + names[p];
    std::ofstream file(path, std::ios::binary);
    file << writeCurve(report, p, uncertainties) << std::flush;
    if (!file) refuse(path, "cannot be written");
  }
}

}  // namespace peakbox
