#pragma once

#include <sstream>

namespace peakbox {

/// Texts and numbers, one behind the other.
template <typename... Parts>
std::string compose(const Parts&... parts) {
  std::ostringstream text;
  text.precision(12);
  (text << ... << parts);
  return text.str();
}

/// As much of a text as there is room for, in gnuplot's double quotes.
std::string quote(std::string_view text, std::size_t room);

/// Commands for the axis 'x' or 'y', from its left or lower end: its range, and two round numbers on it, none in
/// `inset` parts of the range at either end, where those of another picture may be.
std::string writeAxis(char axis, double from, double to, double inset);

/// Has gnuplot draw a script to a PDF file, which replaces `output` when it is whole; of all else nothing is left.
void drawPages(const std::string& script, const std::string& output);

}  // namespace peakbox
