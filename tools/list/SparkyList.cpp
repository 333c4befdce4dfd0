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
  for (const Row& row : rows) {
    // Labels have no blanks there, and always something.
    const std::string& label = row.fields[0];
    if (count == 3 && row.fields.size() > 3) refuse(row.place, "more fields than columns");
    if (textToDecimal(label) && label.find('.') != std::string::npos) refuse(row.place, "there is no label");
  }
  return {.file = file, .rows = std::move(rows), .label = 0, .ppm = {1, 2}, .names = {"w1", "w2"}};
}

}  // namespace peakbox::list
