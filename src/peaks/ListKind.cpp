#include "peaks/ListKind.h"

#include <algorithm>

#include "base/TextFile.h"

namespace peakbox {

namespace {

constexpr std::size_t kHeaderLines = 6;

/// Whether one of the first lines names columns of positions, as the last header line of peakbox's own lists does.
bool namesPositions(const std::vector<std::string>& lines) {
  const auto end = lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), kHeaderLines));
  return std::any_of(lines.begin(), end, [](const auto& line) { return line.find(".P") != std::string::npos; });
}

}  // namespace

ListKind recogniseList(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty() || words[0] == "REMARK" || words[0] == "DATA") continue;
    if (words[0] == "Assignment") return ListKind::Sparky;
    if (words[0] == "VARS" || words[0] == "FORMAT") return ListKind::PipeTable;
    break;
  }
  if (namesPositions(lines)) return ListKind::Own;
  return !lines.empty() && lines[0].find_first_of("\t,") != std::string::npos ? ListKind::Table : ListKind::Unknown;
}

}  // namespace peakbox
