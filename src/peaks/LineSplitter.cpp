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
  isSpecial[static_cast<unsigned char>(c)] = true;
}

void LineSplitter::addQuotes(char open, char close) {
  openers += open;
  closers += close;
  isSpecial[static_cast<unsigned char>(open)] = true;
}

bool LineSplitter::isDelimiter(char c) const {
  for (const char delimiter : delimiters) {
    if (c == delimiter) return true;
  }
  return false;
}

bool LineSplitter::isOpener(char c) {
  for (std::size_t k = 0; k < openers.size(); ++k) {
    if (c == openers[k]) {
      quoteIndex = k;
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

void LineSplitter::split(std::string text) {
  fieldStarts.clear();
  line = std::move(text);
  splitLine();
}

void LineSplitter::splitLine() {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (!isSpecial[static_cast<unsigned char>(line[i])]) continue;
    if (isOpener(line[i])) {
      while (i < line.size() && !isCloser(line[i])) ++i;
    }
    if (isDelimiter(line[i])) line[i] = '\0';  // behind the last character stands a NUL, which is none
  }
  for (std::size_t i = 0; i < line.size(); i += std::strlen(&line[i]) + 1) {
    if (line[i] != '\0') fieldStarts.push_back(i);
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
