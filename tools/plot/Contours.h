#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace peakbox {

/// Values over places across and up, which lie at equal distances; the values of a row stand side by side.
struct Grid {
  std::array<std::vector<double>, 2> places;
  std::vector<double> values;
};

/// The lines along which the grid has this level, for gnuplot: a line for each of their points with its two places and
/// the level, and an empty one behind each of them.
std::string traceContours(const Grid& grid, double level);

}  // namespace peakbox
