#include "base/TextNumbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

namespace peakbox {

std::int32_t textToInteger(const char* text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<long>(std::strtol(text, nullptr, 0), Limits::min(), Limits::max()));
}

double textToReal(const char* text) {
  // With strtod alone a run with 100,000 peaks takes a fifth longer. It takes over for all that only strtod accepts:
  // leading white space, a plus sign, hexadecimal digits after 0x, numbers beyond the range of a double.
  double value = 0.0;
  const std::from_chars_result result = std::from_chars(text, text + std::strlen(text), value);
  const bool isHexadecimal = *result.ptr == 'x' || *result.ptr == 'X';
  return result.ec == std::errc() && !isHexadecimal ? value : std::strtod(text, nullptr);
}

std::optional<double> textToDecimal(const std::string& text) {
  if (text.empty() || text.find_first_not_of("+-.0123456789eE") != std::string::npos) return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (*end != '\0' || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string realToText(double value) {
  char digits[32];
  const char* end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
  return {static_cast<const char*>(digits), end};
}

}  // namespace peakbox
