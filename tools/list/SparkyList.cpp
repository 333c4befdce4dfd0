#include <algorithm>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "list/ForeignList.h"

namespace peakbox::list {

namespace {

/// A name of two words, as "Data Height" and "lw1 (hz)", is one column.
std::size_t countColumns(const std::vector<std::string>& words) {
  auto count = words.size();
  for (std::size_t n = 1; n < words.size(); ++n) {
    const bool isHeight = words[n] == "Height" && (words[n - 1] == "Data" || words[n - 1] == "Fit");
    if (isHeight || words[n] == "(hz)") --count;
  }
  return count;
}

/// Integrals have their method behind them, as "ga" for a Gaussian.
bool isMethod(const std::string& field) {
  return field.size() == 2 && field.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

}  // namespace

ForeignList readSparky(const std::string& file, std::vector<Row> rows) {
  const Row header = rows[0];
  const auto has = [&](std::size_t n, const char* name) {
    return n < header.fields.size() && header.fields[n] == name;
  };
  if (!has(0, "Assignment") || !has(1, "w1")) refuseKind(file);
  if (!has(2, "w2")) refuse(header.place, "there is no column 'w2' behind w1");
  if (has(3, "w3")) refuse(file, "a list of more than two dimensions");
  const std::size_t count = countColumns(header.fields);
  const bool hasNote = header.fields.back() == "Note";
  rows.erase(rows.begin());
  for (Row& row : rows) {
    const std::string& label = row.fields[0];
    if (textToDecimal(label) && label.find('.') != std::string::npos) refuse(row.place, "there is no label");
    for (std::size_t n = 3; n < row.fields.size(); ++n) {
      if (row.fields[n].starts_with('#')) row.fields.resize(n);
    }
    const auto others = row.fields.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(3, row.fields.size()));
    row.fields.erase(std::remove_if(others, row.fields.end(), isMethod), row.fields.end());
    // A note can have any words, but where it begins with a number, that may be one of a label with a blank.
    const bool isLong = hasNote && row.fields.size() >= count && textToDecimal(row.fields[count - 1]);
    if (isLong && row.fields[1].find('.') == std::string::npos) refuse(row.place, "more fields than columns");
  }
  return {.file = file,
          .rows = std::move(rows),
          .columnCount = hasNote ? ForeignList::kNone : count,
          .label = {0, 0},
          .ppm = {1, 2},
          .names = {"w1", "w2"}};
}

}  // namespace peakbox::list
