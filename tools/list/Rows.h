#pragma once

#include <string>
#include <vector>

namespace peakbox::list {

/// A line of a list, or of a table several where a quoted field holds line ends.
struct Row {
  std::string place;  // for refusals, "FILE:LINE"
  std::vector<std::string> fields;
  bool isWhole = true;  // false where a quoted field does not end
};

/// The rows of a text that ends with a line, but those whose fields are all empty, cut
///   - between blanks and tabs, but that what stands before the first tab is one field, a label with blanks, where two
///     numbers follow; lines that begin with '#' are left out,
///   - as peakbox cuts its own lists,
///   - between separators. A field in quotes may hold these and line ends, and its quotes are doubled.
std::vector<Row> splitAtBlanks(const std::string& text, const std::string& file);
std::vector<Row> splitAsOwn(const std::string& text, const std::string& file);
std::vector<Row> splitAtSeparators(const std::string& text, const std::string& file, char separator);

/// The text without blanks around it.
std::string trim(const std::string& text);

/// As much of a text as there is room for, with blanks for control characters.
std::string cut(std::string text, std::size_t room);

}  // namespace peakbox::list
