#pragma once

#include <optional>
#include <string>
#include <vector>

namespace peakbox::planes {

/// The delays of a list in seconds: one a line, a number with or without a unit, or a count of so many seconds each.
/// '#' and ';' begin comments. Says so where no number has a unit.
std::vector<std::string> readDelays(const std::string& file, std::optional<double> secondsPerCount);

}  // namespace peakbox::planes
