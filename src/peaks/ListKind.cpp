#include "peaks/ListKind.h"

#include <algorithm>

namespace peakbox {

namespace {

constexpr std::size_t kHeaderLines = 6;

std::string takeFirstWord(const std::string& line) {
  constexpr const char* kBlanks = " \t\r\n\v\f";
  const std::size_t first = std::min(line.find_first_not_of(kBlanks), line.size());
  return line.substr(first, line.find_first_of(kBlanks, first) - first);
}

/// Whether one of the first lines names columns of positions, as the last header line of peakbox's own lists does.
bool namesPositions(const std::vector<std::string>& lines) {
  const auto end = lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), kHeaderLines));
  return std::any_of(lines.begin(), end, [](const auto& line) { return line.find(".P") != std::string::npos; });
}

}  // namespace

ListKind recogniseList(const std::vector<std::string>& lines) {
  bool isFirst = true;
  for (const std::string& line : lines) {
    const std::string word = takeFirstWord(line);
    if (word == "VARS" || (isFirst && word == "FORMAT")) return ListKind::PipeTable;
    if (isFirst && word == "Assignment") return ListKind::Sparky;
    if (isFirst && (word.starts_with("<?xml") || word.starts_with("<Peak"))) return ListKind::TopSpin;
    isFirst = isFirst && (word.empty() || word[0] == '#' || word == "REMARK" || word == "DATA");
  }
  if (namesPositions(lines)) return ListKind::Own;
  return !lines.empty() && lines[0].find_first_of("\t,;") != std::string::npos ? ListKind::Table : ListKind::Unknown;
}

}  // namespace peakbox
