#include "base/TextFile.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace peakbox {

std::optional<std::string> readFile(const std::string& path) {
  std::error_code ignored;
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open() || std::filesystem::is_directory(path, ignored)) return std::nullopt;
  std::ostringstream text;
  if (stream.peek() != std::ifstream::traits_type::eof()) text << stream.rdbuf();
  if (stream.bad() || text.fail()) return std::nullopt;
  return std::move(text).str();
}

std::string mendLineEnds(std::string_view text) {
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  std::string mended;
  mended.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      mended += text[i];
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      mended += '\n';
    }
  }
  return mended;
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> splitWords(const std::string& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string_view> splitFields(std::string_view line, char separator) {
  std::vector<std::string_view> fields;
  for (std::size_t end = 0; (end = line.find(separator)) != std::string_view::npos; line.remove_prefix(end + 1)) {
    fields.push_back(line.substr(0, end));
  }
  fields.push_back(line);
  return fields;
}

std::string showControls(const std::string& text) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string shown;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code >= 0x20 && code != 0x7f) {
      shown += c;
    } else if (c == '\r' || c == '\t') {
      shown += c == '\r' ? "\\r" : "\\t";
    } else {
      shown += std::string("\\x") + kDigits[code >> 4] + kDigits[code & 15];
    }
  }
  return shown;
}

}  // namespace peakbox
