#pragma once

#include <string>
#include <vector>

namespace peakbox::planes {

/// Refuses files in whose names the number falls, from one to the next, at the first place in which the two differ in
/// more than zeros. A point between digits is a decimal one. Names that differ in something else stand in any order.
void refuseFallingNumbers(const std::vector<std::string>& files);

}  // namespace peakbox::planes
