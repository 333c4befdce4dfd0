#pragma once

#include <string>
#include <vector>

namespace peakbox::list {

/// A line of a list, or of a table several where a quoted field holds line ends.
struct Row {
  std::string place;  // for refusals, "FILE:LINE"
  std::vector<std::string> fields;
};

/// The rows of a text that ends with a line, but those whose fields are all empty, cut
///   - between tabs in a line with several of them, which lets labels have blanks, else between blanks,
///   - as peakbox cuts its own lists,
///   - between tabs where the first line has some, else between commas. A field in quotes may hold these and line ends,
///     and its quotes are doubled; one that does not end is refused.
std::vector<Row> splitAtBlanks(const std::string& text, const std::string& file);
std::vector<Row> splitAsOwn(const std::string& text, const std::string& file);
std::vector<Row> splitAtSeparators(const std::string& text, const std::string& file);

/// The text without blanks around it.
std::string trim(const std::string& text);

/// As much of a text as there is room for, with blanks for control characters.
std::string cut(std::string text, std::size_t room);

}  // namespace peakbox::list
