#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "list/ForeignList.h"

namespace peakbox::list {

ForeignList readSparky(const std::string& file, std::vector<Row> rows) {
  const Row header = rows[0];
  const std::size_t count = header.fields.size();
  const auto has = [&](std::size_t n, const char* name) { return n < count && header.fields[n] == name; };
  if (!has(0, "Assignment") || !has(1, "w1")) refuseKind(file);
  if (!has(2, "w2")) refuse(header.place, "there is no column 'w2' behind w1");
  if (has(3, "w3")) refuse(file, "a list of more than two dimensions");
  rows.erase(rows.begin());
  for (Row& row : rows) {
    const std::string& label = row.fields[0];
    if (textToDecimal(label) && label.find('.') != std::string::npos) refuse(row.place, "there is no label");
    for (std::size_t n = 3; n < row.fields.size(); ++n) {
      if (row.fields[n].starts_with('#')) row.fields.resize(n);
    }
  }
  return {.file = file,
          .rows = std::move(rows),
          .columnCount = has(count - 1, "Note") ? ForeignList::kNone : count,  // of any number of words
          .label = {0, 0},
          .ppm = {1, 2},
          .names = {"w1", "w2"}};
}

}  // namespace peakbox::list
