#include "peaks/LineSplitter.h"

#include <cstring>
#include <istream>

#include "driver/Messages.h"
#include "driver/TextNumbers.h"

namespace peakbox {

LineSplitter::LineSplitter() {
  addDelimiter('\0');
  addDelimiter(' ');
  addDelimiter('\t');
  addQuotes('{', '}');
}

void LineSplitter::addDelimiter(char c) { kinds[static_cast<unsigned char>(c)] = Kind::Separator; }

void LineSplitter::addQuotes(char open, char close) {
  kinds[static_cast<unsigned char>(open)] = Kind::Opener;
  openers += open;
  closers += close;
}

bool LineSplitter::readLine(std::istream& stream) {
  fieldStarts.clear();
  std::getline(stream, line);
  if (stream.eof()) return false;
  splitLine();
  return true;
}

void LineSplitter::splitLine() {
  const std::size_t length = line.size();
  std::size_t i = 0;
  while (true) {
    while (i < length && kindOf(line[i]) == Kind::Separator) line[i++] = '\0';
    if (i >= length) return;
    fieldStarts.push_back(i);
    while (i < length && kindOf(line[i]) != Kind::Separator) {
      if (kindOf(line[i]) == Kind::Opener) i = passGroup(i);
      ++i;
    }
  }
}

std::size_t LineSplitter::passGroup(std::size_t i) {
  const char closer = closers[openers.find(line[i])];
  for (; i < line.size() && line[i] != closer; ++i) {
    // Nothing in a group is overwritten, but a NUL in it ends a field all the same.
    if (line[i] == '\0' && line[i + 1] != '\0') fieldStarts.push_back(i + 1);
  }
  return i;
}

std::int32_t LineSplitter::findField(const std::string& name) const {
  for (std::size_t i = 0; i < fieldStarts.size(); ++i) {
    if (std::strcmp(line.c_str() + fieldStarts[i], name.c_str()) == 0) return static_cast<std::int32_t>(i);
  }
  return -1;
}

void LineSplitter::checkIndex(std::int32_t i) const {
  if (i < 0) fail("Negative column index forbidden\n", 0);
  if (static_cast<std::size_t>(i) >= fieldStarts.size()) {
    fail("Column index (" + std::to_string(i) + ") exceeds maximum (" + std::to_string(fieldStarts.size()) + ")\n", 0);
  }
}

const char* LineSplitter::getField(std::int32_t i) const {
  checkIndex(i);
  return line.c_str() + fieldStarts[static_cast<std::size_t>(i)];
}

std::int32_t LineSplitter::getFieldAsInt(std::int32_t i) const { return textToInteger(getField(i)); }

float LineSplitter::getFieldAsFloat(std::int32_t i) const { return static_cast<float>(textToReal(getField(i))); }

}  // namespace peakbox
