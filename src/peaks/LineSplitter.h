#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace peakbox {

/// Reads a text file line by line and cuts each line, in place, into fields separated by runs of blanks and tabs. Text
/// between "{" and "}" is not cut; the braces stay in the field. Fields are counted from 0.
class LineSplitter {
 public:
  LineSplitter();

  /// Reads and splits the next line; false at the end of the file, where a last line without a line feed is lost. After
  /// false there are no fields.
  bool readLine(std::istream& stream);

  /// The first field that equals `name`, -1 when there is none.
  std::int32_t findField(const std::string& name) const;

  /// The field's text, valid until the next `readLine`. A field that the line does not have ends the run with status 0,
  /// here and in the conversions.
  const char* getField(std::int32_t i) const;

  /// The number at the start of the field, 0 when there is none. Integers may be hexadecimal or octal.
  std::int32_t getFieldAsInt(std::int32_t i) const;
  float getFieldAsFloat(std::int32_t i) const;

 private:
  void addDelimiter(char c);
  void addQuotes(char open, char close);
  bool isDelimiter(char c) const;
  bool isOpener(char c);
  char getCloser() const { return closers[static_cast<std::size_t>(quoteIndex)]; }
  void splitLine();
  void checkIndex(std::int32_t i) const;

  std::int32_t quoteIndex = 0;
  std::string delimiters;
  std::string openers;
  std::string closers;
  /// For each character whether it is a delimiter or an opener: nearly all of a line is passed over at one look each.
  std::array<bool, 256> special{};
  std::string line;
  std::vector<std::size_t> fieldStarts;
};

}  // namespace peakbox
