#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace peakbox {

/// Reads a text file line by line and cuts each line, in place, into fields separated by runs of blanks and tabs.
/// Blanks and tabs between "{", wherever it stands, and the next "}" or the end of the line do not separate; the braces
/// stay in the field. Fields are counted from 0.
class LineSplitter {
 public:
  LineSplitter();

  /// Reads and splits the next line; false at the end of the file, where a last line without a line feed is lost. After
  /// false there are no fields.
  bool readLine(std::istream& stream);

  /// Splits a line that is at hand, without its end.
  void split(std::string text);

  std::int32_t getFieldCount() const { return static_cast<std::int32_t>(fieldStarts.size()); }

  /// The first field that equals `name`, -1 when there is none.
  std::int32_t findField(const std::string& name) const;

  /// The field's text, valid until the next `readLine`. A field that the line does not have ends the run with status 0,
  /// here and in the conversions.
  const char* getField(std::int32_t i) const;

  /// The number at the start of the field, 0 when there is none. Integers may be hexadecimal or octal; reals are
  /// rounded to single precision.
  std::int32_t getFieldAsInt(std::int32_t i) const;
  float getFieldAsFloat(std::int32_t i) const;

 private:
  void addDelimiter(char c);
  void addQuotes(char open, char close);
  bool isDelimiter(char c) const { return delimits[static_cast<unsigned char>(c)]; }
  bool isOpener(char c);
  bool isCloser(char c) const { return c == closers[quoteIndex]; }
  void splitLine();
  void checkIndex(std::int32_t i) const;

  /// The opener met last: an index in `openers`, and in `closers` that of the character that ends its group.
  std::size_t quoteIndex = 0;
  std::string delimiters;
  std::string openers;
  std::string closers;
  /// By character: whether it is among the delimiters, and among the openers.
  std::array<bool, 256> delimits{};
  std::array<bool, 256> opens{};
  /// After splitting, a NUL stands for each delimiter, and a field reaches to the next NUL.
  std::string line;
  std::vector<std::size_t> fieldStarts;
};

}  // namespace peakbox
