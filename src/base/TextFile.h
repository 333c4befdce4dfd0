#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace peakbox {

/// All bytes of a file, or of what a pipe gives; nothing where it cannot be read, as a folder cannot.
std::optional<std::string> readFile(const std::string& path);

/// The text with Unix line ends for those of Windows and old Macs, and without a byte-order mark.
std::string mendLineEnds(std::string_view text);

/// Its lines without their ends; a last one without an end counts.
std::vector<std::string> splitLines(const std::string& text);

/// Its words between blanks, tabs and other white space.
std::vector<std::string> splitWords(const std::string& line);

/// What stands between separators, which may be nothing: at least one field.
std::vector<std::string_view> splitFields(std::string_view line, char separator);

/// The text with control characters as they are written in source code.
std::string showControls(const std::string& text);

}  // namespace peakbox
