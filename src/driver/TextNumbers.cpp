#include "driver/TextNumbers.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace peakbox {

std::int32_t textToInteger(const char* text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<long>(std::strtol(text, nullptr, 0), Limits::min(), Limits::max()));
}

double textToReal(const char* text) { return std::strtod(text, nullptr); }

}  // namespace peakbox
