#include <algorithm>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "list/ForeignList.h"

namespace peakbox::list {

ForeignList readPipeTable(const std::string& file, std::vector<Row> rows) {
  const auto isHeader = [](const Row& row) { return row.fields[0] == "VARS"; };
  if (std::none_of(rows.begin(), rows.end(), isHeader)) refuseKind(file);
  ForeignList list{.file = file, .names = {"X_PPM", "Y_PPM"}, .direct = 0, .noLabel = "*"};
  Row header;
  for (Row& row : rows) {
    const std::vector<std::string>& fields = row.fields;
    if (isHeader(row)) {
      if (!header.fields.empty()) refuse(row.place, "a second table");
      header = {.place = row.place, .fields = {fields.begin() + 1, fields.end()}};
    } else if (fields[0] == "DATA" && fields.size() > 2) {
      if (fields[1] == "X_AXIS") list.descriptions[0] = fields[2];
      if (fields[1] == "Y_AXIS") list.descriptions[1] = fields[2];
    } else if (fields[0] == "NULLVALUE" && fields.size() > 1) {
      list.noValue = textToDecimal(fields[1]);
    } else if (fields[0] == "NULLSTRING" && fields.size() > 1) {
      list.noLabel = fields[1];
    } else if (fields[0] != "REMARK" && fields[0] != "FORMAT" && fields[0] != "DATA") {
      if (header.fields.empty()) refuse(row.place, "a peak before the line of VARS");
      list.rows.push_back(std::move(row));
    }
  }
  list.columnCount = header.fields.size();
  list.label[0] = list.label[1] = findColumn(header, "ASS");
  list.ppm = {findColumn(header, "X_PPM"), findColumn(header, "Y_PPM")};
  if (seekColumn(header, "Z_PPM") < ForeignList::kNone) refuse(file, "a list of more than two dimensions");
  if (seekColumn(header, "INDEX") < ForeignList::kNone) list.number = findColumn(header, "INDEX");
  return list;
}

}  // namespace peakbox::list
