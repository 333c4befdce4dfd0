#include <algorithm>
#include <unordered_map>

#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "check/Checks.h"
#include "check/InputFile.h"
#include "peaks/LineSplitter.h"
#include "peaks/ListKind.h"

namespace peakbox {

namespace {

constexpr std::size_t kHeaderLines = 6;
constexpr const char* kNoList = "error: not a peak list of the kind that peakbox reads: ";

/// A column that a run reads: where it is, its name in line 6, and what it holds.
struct Column {
  std::int32_t field;
  std::string name;
  std::string meaning;
};

struct ListReader {
  const Spectrum& spectrum;
  const FileFindings& findings;
  ListedPeaks peaks{.file = findings.file};
  LineSplitter fields{};  // of the line in hand
  std::vector<Column> columns{};
  std::unordered_map<std::string, std::int64_t> lineOf{};  // labels and numbers

  bool readHeader(const std::vector<std::string>& lines) {
    const ListKind kind = recogniseList(lines);
    const bool isForeign = kind != ListKind::Own && kind != ListKind::Unknown;
    const std::string foreign = kind == ListKind::Sparky      ? "a list of Sparky or POKY"
                                : kind == ListKind::PipeTable ? "a table of NMRPipe"
                                : kind == ListKind::TopSpin   ? "a list of TopSpin"
                                                              : "a table";
    if (findings.add(isForeign, 0, kNoList, "this is ", foreign, "; peakbox-list converts it")) return false;
    if (findings.add(lines.size() < kHeaderLines, 0, kNoList, "fewer than six header lines")) return false;
    std::istringstream header("\n" + lines[1] + "\n\n\n\n" + lines[5] + "\n");
    const std::string end = tryStep([&] { peaks.list.readHeader(header); });
    findings.add(!end.empty(), 2, kNoList, "line 2 does not name two dimensions (", end, ")");
    return end.empty() && checkColumns(lines[1], splitWords(lines[5]));
  }

  bool checkColumns(const std::string& dimensionLine, const std::vector<std::string>& names) {
    fields.split(dimensionLine);
    const std::string name1 = fields.getField(0);
    const std::string name2 = fields.getField(1);
    const PeakList& list = peaks.list;
    columns = {{list.getLabelColumn(), name1 + ".L", "label"},
               {list.getPositionColumn(0), name1 + ".P", "position in dimension 1"},
               {list.getBoundsColumn(0), name1 + ".B", "width in dimension 1"},
               {list.getPositionColumn(1), name2 + ".P", "position in dimension 2"},
               {list.getBoundsColumn(1), name2 + ".B", "width in dimension 2"}};
    const auto isMissing = [](const Column& column) { return column.field == 0; };
    const auto missing = std::count_if(columns.begin(), columns.end(), isMissing);
    peaks.isUsable = missing == 0;
    if (findings.add(missing == 5, 6, kNoList, "none of the columns ", name1, ".L, ", name1, ".P, ", name1, ".B, ",
                     name2, ".P and ", name2, ".B that line 2 asks for")) {
      return false;
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
      findings.add(names[i] == "stat" && i + 1 != kDeletedColumn, 6, "warning: the column stat is field ", i + 2,
                   " of a line, but peakbox looks for deleted peaks in the 18th");
    }
    for (const Column& column : columns) {
      findings.add(column.field == 0, 6, "error: no column ", column.name, ": the peak number would be read as the ",
                   column.meaning);
    }
    return true;
  }

  void readPeak(const std::string& text, std::int64_t line) {
    fields.split(text);
    bool isPeak = false;
    const std::string end = tryStep([&] { isPeak = peaks.list.addPeak(fields, spectrum); });
    const bool isEmpty = text.find_first_not_of(" \t") == std::string::npos;
    const std::string what = isEmpty ? "empty line" : "too few fields (it begins with '" + text.substr(0, 20) + "')";
    findings.add(!end.empty(), line, "error: ", what, ", which ends the run: ", end);
    if (!isPeak) return;
    peaks.entries.push_back({.line = line, .position = peaks.entries.size(), .hasNumbers = true});
    for (const Column& column : columns) {
      if (column.field > 0 && column.meaning != "label") checkNumber(column, peaks.entries.back());
    }
    checkRepetition(peaks.entries.back());
  }

  void checkNumber(const Column& column, ListedPeaks::Entry& entry) const {
    const std::string text = fields.getField(column.field);
    const std::string what = peaks.nameOf(entry.position) + ": " + column.meaning + " '" + text + "' is ";
    const double value = textToReal(text.c_str());
    const NumberPart part = findNumber(text);
    const bool isBadWidth = part == NumberPart::All && column.meaning.starts_with("width") && value <= 0;
    entry.hasNumbers = entry.hasNumbers && part != NumberPart::None;
    findings.add(part == NumberPart::None, entry.line, "error: ", what, "no number and is read as 0");
    findings.add(part == NumberPart::Some, entry.line, "warning: ", what, "read as ", value);
    findings.add(isBadWidth, entry.line, "warning: ", what, "not above 0");
  }

  void checkRepetition(const ListedPeaks::Entry& entry) {
    const std::string& label = peaks.getLabel(entry.position);
    const std::string number = std::to_string(peaks.list.getNumber(static_cast<int>(entry.position)));
    const auto check = [&](const std::string& key, const std::string& what) {
      const auto [earlier, isNew] = lineOf.emplace(key, entry.line);
      findings.add(!isNew, entry.line, "warning: ", label, ": the peak of line ", earlier->second, " has ", what,
                   " too");
    };
    if (!label.empty() && !isNoiseLabel(label)) check("label " + label, "this label");
    check("number " + number, "the number " + number);
  }
};

}  // namespace

ListedPeaks readPeaks(const Spectrum& first, bool hasAxes, const RunSettings& settings, Findings& findings) {
  const FileFindings ofList{findings, Findings::Peaks, settings.getPeakListFile()};
  const std::optional<std::string> text = ofList.file.empty() ? std::nullopt : readText(ofList);
  if (!text) return {};
  ListReader reader{first, ofList};
  const std::vector<std::string> lines = splitLines(*text);
  if (!reader.readHeader(lines)) return {};
  for (std::size_t i = kHeaderLines; i < lines.size(); ++i) reader.readPeak(lines[i], static_cast<std::int64_t>(i) + 1);
  ListedPeaks peaks = reader.peaks;
  const auto last = static_cast<std::int64_t>(lines.size());
  const bool isEmpty = ofList.add(peaks.entries.empty(), 0, "error: no peaks");
  if (!isEmpty && !text->ends_with('\n') && peaks.entries.back().line == last) {
    const std::string name = peaks.nameOf(peaks.entries.size() - 1);
    ofList.add(true, last, "error: no newline ends the last line, so that peak ", name, " is lost");
  }
  peaks.isUsable = peaks.isUsable && hasAxes && !isEmpty;
  if (hasAxes) checkPlacement(peaks, lines[4], first, settings, ofList);
  return peaks;
}

}  // namespace peakbox
