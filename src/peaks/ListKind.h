#pragma once

#include <string>
#include <vector>

namespace peakbox {

/// The kinds of lists that people have.
enum class ListKind { Own, Sparky, PipeTable, TopSpin, Table, Unknown };

/// The kind of a list by its lines, of which there may be none.
ListKind recogniseList(const std::vector<std::string>& lines);

}  // namespace peakbox
