#include "check/Findings.h"

#include <iostream>

#include "base/Messages.h"
#include "base/TextFile.h"

namespace peakbox {

void Findings::add(Stage stage, const std::string& file, std::int64_t line, const std::string& text) {
  constexpr std::size_t kMost = 1000;  // findings of one stage, and characters of one finding
  hasErrors = hasErrors || text.starts_with("error: ");
  if (stages[stage].size() == kMost) {
    ++leftOut[stage];
    return;
  }
  std::string finding = line > 0 ? file + ":" + std::to_string(line) : file;
  finding += ": " + text;
  if (finding.size() > kMost) finding.erase(kMost) += "...";
  stages[stage].emplace(line, showControls(finding));
}

bool Findings::print() const {
  for (std::size_t k = 0; k < stages.size(); ++k) {
    for (const auto& [line, finding] : stages[k]) std::cout << finding << '\n';
    if (leftOut[k] > 0) std::cout << "peakbox-check: warning: " << leftOut[k] << " more findings of this stage\n";
  }
  if (!std::cout.flush()) fail("peakbox-check: the findings cannot be written\n");
  return !hasErrors;
}

std::string textOf(const RunEnd& end) {
  std::string text = end.message.substr(0, end.message.find_last_not_of('\n') + 1);
  const std::size_t lineEnd = text.find("\n\t");
  return lineEnd == std::string::npos ? text : text.replace(lineEnd, 2, 1, ' ');
}

}  // namespace peakbox
