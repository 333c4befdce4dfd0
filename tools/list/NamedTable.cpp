#include "list/ForeignList.h"

namespace peakbox::list {

ForeignList readTable(const std::string& file, std::vector<Row> rows, const std::vector<std::string>& columns) {
  const Row header = rows[0];
  rows.erase(rows.begin());
  ForeignList list{.file = file, .rows = std::move(rows), .label = findColumn(header, columns[0])};
  for (const std::size_t n : {0U, 1U}) list.ppm[n] = findColumn(header, columns[n + 1]);
  list.names = list.descriptions = {columns[1], columns[2]};
  for (const char* name : {"Index", "Number", "#"}) {
    const std::size_t place = seekColumn(header, name);
    if (place != ForeignList::kNone) list.number = place;
  }
  return list;
}

}  // namespace peakbox::list
