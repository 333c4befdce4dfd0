#include "peaks/LineSplitter.h"

#include <algorithm>
#include <cstring>
#include <istream>

#include "driver/Messages.h"
#include "driver/TextNumbers.h"

namespace peakbox {

LineSplitter::LineSplitter() {
  addDelimiter(' ');
  addDelimiter('\t');
  addQuotes('{', '}');
}

void LineSplitter::addDelimiter(char c) {
  delimiters += c;
  special[static_cast<unsigned char>(c)] = true;
}

void LineSplitter::addQuotes(char open, char close) {
  openers += open;
  closers += close;
  special[static_cast<unsigned char>(open)] = true;
}

bool LineSplitter::isDelimiter(char c) const {
  for (const char delimiter : delimiters) {
    if (delimiter == c) return true;
  }
  return false;
}

bool LineSplitter::isOpener(char c) {
  for (std::size_t i = 0; i < openers.size(); ++i) {
    if (openers[i] == c) {
      quoteIndex = static_cast<std::int32_t>(i);
      return true;
    }
  }
  return false;
}

bool LineSplitter::readLine(std::istream& stream) {
  fieldStarts.clear();
  std::getline(stream, line);
  if (stream.eof()) return false;
  splitLine();
  return true;
}

void LineSplitter::splitLine() {
  char* text = line.data();
  const std::size_t length = line.size();
  for (std::size_t i = 0; i < length; ++i) {
    if (!special[static_cast<unsigned char>(text[i])]) continue;
    if (isDelimiter(text[i])) {
      text[i] = '\0';
    } else if (isOpener(text[i])) {
      i = std::min(line.find(getCloser(), i), length);
    }
  }
  for (std::size_t i = 0; i < length; i += std::strlen(text + i) + 1) {
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
