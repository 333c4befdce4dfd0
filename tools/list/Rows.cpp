#include "list/Rows.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "peaks/LineSplitter.h"

namespace peakbox::list {

namespace {

std::string makePlace(const std::string& file, std::int64_t line) { return file + ":" + std::to_string(line); }

void addUnlessEmpty(Row row, std::vector<Row>& rows) {
  const auto isEmpty = [](const std::string& field) {
    return field.find_first_not_of(" \t\n\v\f\r") == std::string::npos;
  };
  if (!std::all_of(row.fields.begin(), row.fields.end(), isEmpty)) rows.push_back(std::move(row));
}

/// Whether this looks like a position, and not like the number of a residue.
bool isReal(const std::string& text) { return text.find('.') != std::string::npos && textToDecimal(text); }

}  // namespace

std::vector<Row> splitAtBlanks(const std::string& text, const std::string& file) {
  std::vector<Row> rows;
  for (std::int64_t number = 0; const std::string& untrimmed : splitLines(text)) {
    ++number;
    const std::string line = trim(untrimmed);
    if (line.empty() || line[0] == '#') continue;
    const std::size_t tab = std::min(line.find('\t'), line.size());
    std::string label = trim(line.substr(0, tab));
    std::vector<std::string> fields = splitWords(line.substr(tab));
    const bool endsInNumber = isReal(label.substr(label.find_last_of(" \f\v") + 1));
    if (!endsInNumber && fields.size() > 1 && textToDecimal(fields[0]) && textToDecimal(fields[1])) {
      fields.insert(fields.begin(), std::move(label));
    } else {
      fields = splitWords(line);
    }
    addUnlessEmpty({.place = makePlace(file, number), .fields = std::move(fields)}, rows);
  }
  return rows;
}

std::vector<Row> splitAsOwn(const std::string& text, const std::string& file) {
  std::vector<Row> rows;
  std::istringstream stream(text);
  LineSplitter splitter;
  for (std::int64_t line = 1; splitter.readLine(stream); ++line) {
    Row row{.place = makePlace(file, line), .fields = {}};
    for (std::int32_t i = 0; i < splitter.getFieldCount(); ++i) row.fields.emplace_back(splitter.getField(i));
    addUnlessEmpty(std::move(row), rows);
  }
  return rows;
}

std::vector<Row> splitAtSeparators(const std::string& text, const std::string& file, char separator) {
  std::vector<Row> rows;
  std::int64_t line = 1;
  Row row{.place = makePlace(file, line), .fields = {}};
  std::string field;
  bool isQuoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    line += c == '\n';
    if (c == '"' && isQuoted) {
      isQuoted = i + 1 < text.size() && text[i + 1] == '"';
      if (isQuoted) field += text[i++];
    } else if (c == '"' && field.empty()) {
      isQuoted = true;
    } else if (isQuoted || (c != separator && c != '\n')) {
      field += c;
    } else {
      row.fields.push_back(trim(std::exchange(field, "")));
      if (c == '\n') addUnlessEmpty(std::exchange(row, {.place = makePlace(file, line), .fields = {}}), rows);
    }
  }
  row.isWhole = false;
  if (isQuoted) rows.push_back(std::move(row));
  return rows;
}

std::string trim(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string cut(std::string text, std::size_t room) {
  if (text.size() > room) text.replace(room, std::string::npos, "...");
  for (char& c : text) c = static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? ' ' : c;
  return text;
}

}  // namespace peakbox::list
