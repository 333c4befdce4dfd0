#include <algorithm>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "list/ForeignList.h"
#include "peaks/PeakList.h"

namespace peakbox::list {

ForeignList readOwn(const std::string& file, std::vector<Row> rows, const std::string& dimensionLine) {
  const auto isPosition = [](const std::string& field) { return field.size() > 2 && field.ends_with(".P"); };
  const auto count = [&](const Row& row) { return std::count_if(row.fields.begin(), row.fields.end(), isPosition); };
  const auto header = std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return count(row) > 1; });
  if (header == rows.end()) refuseKind(file);
  if (count(*header) > 2) refuse(file, "a list of more than two dimensions");
  // A line begins with the peak's number, for which there is no name.
  const std::size_t state = seekColumn(*header, "stat") + 1;
  ForeignList list{.file = file, .columnCount = header->fields.size() + 1, .number = 0, .hasBracedLabels = true};
  list.deletion = state < ForeignList::kNone ? state : kDeletedColumn;
  for (std::size_t n = 0; const std::string& field : header->fields) {
    if (!isPosition(field)) continue;
    const std::string name = field.substr(0, field.size() - 2);
    list.ppm[n] = findColumn(*header, field) + 1;
    list.bounds[n] = seekColumn(*header, name + ".B") + 1;
    if (n == 0) list.label[0] = list.label[1] = findColumn(*header, name + ".L") + 1;
    list.names[n] = list.descriptions[n] = name;
    ++n;
  }
  const std::vector<std::string> dimensions = splitWords(dimensionLine);
  for (const std::size_t n : {0U, 1U}) {
    if (!dimensions.empty() && dimensions[0] == list.names[n]) list.direct = n;
  }
  list.rows.assign(std::make_move_iterator(header + 1), std::make_move_iterator(rows.end()));
  return list;
}

}  // namespace peakbox::list
