#include "list/ForeignList.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "peaks/ListKind.h"

namespace peakbox::list {

namespace {

const std::string& takeField(const Row& row, std::size_t column) {
  if (column >= row.fields.size()) refuse(row.place, "field " + std::to_string(column + 1) + " is missing");
  return row.fields[column];
}

/// The label in a column as peakbox reads it.
std::string takeLabel(const Row& row, std::size_t column, const ForeignList& list) {
  if (column >= ForeignList::kNone) return "?";
  const std::string& field = takeField(row, column);
  std::string label = cut(field, field.size());
  // CcpNmr writes an atom that is not assigned as {3}H.
  if (!list.hasBracedLabels && label.starts_with('{')) return "?";
  std::erase_if(label, [](char c) { return c == '{' || c == '}'; });
  label = trim(label);
  const bool isUnknown = label.find_first_not_of("?-") == std::string::npos;
  return isUnknown || label == "None" || label == list.noLabel ? "?" : label;
}

Entry takeEntry(const Row& row, const ForeignList& list) {
  if (!row.isWhole) refuse(row.place, "a quote that does not end");
  for (std::size_t column = list.columnCount; column < row.fields.size(); ++column) {
    if (!row.fields[column].empty()) refuse(row.place, "more fields than columns");
  }
  ListEntry peak{.number = 0, .label = "", .ppm = {}, .bounds = {}};
  for (const std::size_t n : {0U, 1U}) {
    peak.ppm[n] = takeField(row, list.ppm[n]);
    const std::size_t comma = list.hasDecimalCommas ? peak.ppm[n].find(',') : std::string::npos;
    if (comma != std::string::npos && peak.ppm[n].find('.') == std::string::npos) peak.ppm[n][comma] = '.';
    const std::optional<double> value = textToDecimal(peak.ppm[n]);
    if (!value || value == list.noValue) refuse(row.place, "the position '" + cut(peak.ppm[n], 60) + "' is no number");
    if (list.bounds[n] < row.fields.size()) peak.bounds[n] = row.fields[list.bounds[n]];
  }
  return {.place = row.place,
          .peak = peak,
          .labels = {takeLabel(row, list.label[0], list), takeLabel(row, list.label[1], list)}};
}

}  // namespace

ForeignList readForeignList(const std::string& path, const std::vector<std::string>& columns) {
  const std::string file = path == "-" ? "standard input" : path;
  const std::optional<std::string> bytes = readFile(path == "-" ? "/dev/stdin" : path);
  if (!bytes) refuse(file, "cannot be read");
  const bool isText = bytes->find('\0') == std::string::npos;
  if (!isText) refuse(file, "is no plain text; is it binary, or UTF-16 (\"Unicode text\")?");
  const std::string text = mendLineEnds(*bytes) + "\n";
  if (text.find_first_not_of(" \t\n\v\f") == std::string::npos) refuse(file, "is empty");
  if (!columns.empty()) return readTable(file, text, columns);
  const std::vector<std::string> lines = splitLines(text);
  const ListKind kind = recogniseList(lines);
  if (kind == ListKind::Sparky) return readSparky(file, splitAtBlanks(text, file));
  if (kind == ListKind::PipeTable) return readPipeTable(file, splitAtBlanks(text, file));
  if (kind == ListKind::TopSpin) return readTopSpin(file, text);
  const std::optional<ForeignList> table = readCcpNmr(file, text);
  return table ? *table : readOwn(file, splitAsOwn(text, file), lines.size() > 1 ? lines[1] : "");
}

std::size_t seekColumn(const Row& header, const std::string& name) {
  const auto place = std::find(header.fields.begin(), header.fields.end(), name);
  return place == header.fields.end() ? ForeignList::kNone : static_cast<std::size_t>(place - header.fields.begin());
}

std::size_t findColumn(const Row& header, const std::string& name) {
  const auto count = std::count(header.fields.begin(), header.fields.end(), name);
  if (count == 1) return seekColumn(header, name);
  std::string columns;
  for (const std::string& field : header.fields) columns += (columns.empty() ? "'" : ", '") + field + "'";
  refuse(header.place, count == 0 ? "there is no column '" + name + "', there are " + cut(columns, 300)
                                  : "there are two columns '" + name + "'");
}

void refuseKind(const std::string& file) {
  refuse(file,
         "no list of Sparky or POKY, NMRPipe, CcpNmr, TopSpin or peakbox; the columns of a table with a header line "
         "are named by -c LABEL,PPM1,PPM2");
}

std::vector<Entry> takeEntries(const ForeignList& list) {
  std::vector<Entry> entries;
  std::set<std::int64_t> numbers;
  for (const Row& row : list.rows) {
    if (list.deletion < row.fields.size() && row.fields[list.deletion] == "-1") continue;
    entries.push_back(takeEntry(row, list));
    const auto number = list.number < row.fields.size() ? textToDecimal(row.fields[list.number]) : std::nullopt;
    if (!number || *number != std::floor(*number) || std::fabs(*number) >= 0x1p31) continue;
    numbers.insert(entries.back().peak.number = static_cast<std::int64_t>(*number));
  }
  if (entries.empty()) refuse(list.file, "has no peaks");
  const auto isWhole = [](const Entry& entry) {
    return (entry.peak.ppm[0] + entry.peak.ppm[1]).find('.') == std::string::npos;
  };
  if (list.isBetweenCommas && std::all_of(entries.begin(), entries.end(), isWhole)) {
    refuse(list.file, "no position has a decimal point: are these decimal commas without quotes?");
  }
  if (numbers.size() == entries.size()) return entries;
  for (std::int64_t number = 0; Entry & entry : entries) entry.peak.number = ++number;
  return entries;
}

}  // namespace peakbox::list
