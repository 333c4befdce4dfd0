#include "base/TextNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace peakbox {

std::int32_t textToInteger(const char* text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<long>(std::strtol(text, nullptr, 0), Limits::min(), Limits::max()));
}

double textToReal(const char* text) { return std::strtod(text, nullptr); }

NumberPart findNumber(const std::string& text) {
  char* end = nullptr;
  static_cast<void>(std::strtod(text.c_str(), &end));
  if (end == text.c_str()) return NumberPart::None;
  return *end == '\0' ? NumberPart::All : NumberPart::Some;
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
  const int length = std::snprintf(digits, sizeof digits, "%.6g", value);
  return {static_cast<const char*>(digits), static_cast<std::size_t>(length)};
}

}  // namespace peakbox
