#pragma once

#include <string_view>

namespace peakbox {

/// The name with which the refusals of a companion begin; it is to outlive them.
void nameProgram(std::string_view name);

/// Ends a companion with status 1 and the message "PROGRAM: PLACE: REASON", the place a file or a line of one.
[[noreturn]] void refuse(std::string_view place, std::string_view reason);

/// Writes such a message at once, as a warning, and goes on.
void warn(std::string_view place, std::string_view text);

}  // namespace peakbox
