#include <algorithm>

#include "base/Refusal.h"
#include "list/ForeignList.h"

namespace peakbox::list {

namespace {

struct Table {
  std::vector<Row> rows;
  char separator;
};

/// The rows from the header on, which has most of these names, the longest one where none has any. Above it may stand
/// whatever there is.
Table findTable(const std::string& file, const std::string& text, const std::vector<std::string>& names) {
  const auto rank = [&](const Row& row) {
    const auto isThere = [&](const std::string& name) { return seekColumn(row, name) < ForeignList::kNone; };
    return std::pair(std::count_if(names.begin(), names.end(), isThere), row.fields.size());
  };
  Table table{.rows = {}, .separator = ','};
  for (const char separator : {'\t', ';', ','}) {
    std::vector<Row> rows = splitAtSeparators(text, file, separator);
    const auto header =
        std::max_element(rows.begin(), rows.end(), [&](const Row& a, const Row& b) { return rank(a) < rank(b); });
    if (header == rows.end() || (!table.rows.empty() && rank(*header) <= rank(table.rows[0]))) continue;
    table.rows.assign(std::make_move_iterator(header), std::make_move_iterator(rows.end()));
    table.separator = separator;
  }
  if (table.rows.empty()) refuse(file, "is empty");
  return table;
}

ForeignList makeList(const std::string& file, Table table, const std::array<std::string, 2>& names) {
  const Row header = table.rows[0];
  if (!header.isWhole) refuse(header.place, "a quote that does not end");
  table.rows.erase(table.rows.begin());
  ForeignList list{.file = file,
                   .rows = std::move(table.rows),
                   .columnCount = header.fields.size(),
                   .ppm = {findColumn(header, names[0]), findColumn(header, names[1])},
                   .names = names,
                   .descriptions = names,
                   .hasDecimalCommas = true,
                   .isBetweenCommas = table.separator == ','};
  for (const char* name : {"Index", "Number", "#"}) {
    const std::size_t place = seekColumn(header, name);
    if (place != ForeignList::kNone) list.number = place;
  }
  return list;
}

}  // namespace

ForeignList readTable(const std::string& file, const std::string& text, const std::vector<std::string>& columns) {
  const bool hasLabels = columns[0] != "-";
  Table table = findTable(file, text, {columns.begin() + !hasLabels, columns.end()});
  const std::size_t label = hasLabels ? findColumn(table.rows[0], columns[0]) : ForeignList::kNone;
  ForeignList list = makeList(file, std::move(table), {columns[1], columns[2]});
  list.label = {label, label};
  return list;
}

std::optional<ForeignList> readCcpNmr(const std::string& file, const std::string& text) {
  for (const std::string name : {"Pos F", "Position F"}) {
    if (text.find(name) == std::string::npos) continue;
    Table table = findTable(file, text, {name + "1", name + "2"});
    const Row header = table.rows[0];
    const auto has = [&](const std::string& column) { return seekColumn(header, column) < ForeignList::kNone; };
    if (!has(name + "1") || !has(name + "2")) continue;
    if (has(name + "3")) refuse(file, "a list of more than two dimensions");
    ForeignList list = makeList(file, std::move(table), {name + "1", name + "2"});
    list.label = {seekColumn(header, "Assign F1"), seekColumn(header, "Assign F2")};
    return list;
  }
  return std::nullopt;
}

}  // namespace peakbox::list
