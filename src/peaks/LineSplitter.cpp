#include "peaks/LineSplitter.h"

#include <cstring>
#include <istream>
#include <utility>

#include "base/Messages.h"
#include "base/TextNumbers.h"

namespace peakbox {

LineSplitter::LineSplitter() {
  addDelimiter(' ');
  addDelimiter('\t');
  addQuotes('{', '}');
}

void LineSplitter::addDelimiter(char c) {
  delimiters += c;
  delimits[static_cast<unsigned char>(c)] = true;
}

void LineSplitter::addQuotes(char open, char close) {
  openers += open;
  closers += close;
  opens[static_cast<unsigned char>(open)] = true;
}

bool LineSplitter::isOpener(char c) {
  if (!opens[static_cast<unsigned char>(c)]) return false;
  quoteIndex = openers.find(c);
  return true;
}

bool LineSplitter::readLine(std::istream& stream) {
  fieldStarts.clear();
  std::getline(stream, line);
  if (stream.eof()) return false;
  splitLine();
  return true;
}

void LineSplitter::split(std::string text) {
  fieldStarts.clear();
  line = std::move(text);
  splitLine();
}

void LineSplitter::splitLine() {
  char* const text = line.data();
  const std::size_t size = line.size();
  for (std::size_t i = 0; i < size; ++i) {
    if (isOpener(text[i])) {
      while (i < size && !isCloser(text[i])) ++i;
    }
    if (isDelimiter(text[i])) text[i] = '\0';  // behind the last character stands a NUL, which is none
  }
  for (std::size_t i = 0; i < size; i += std::strlen(text + i) + 1) {
    if (text[i] != '\0') fieldStarts.push_back(i);
  }
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
