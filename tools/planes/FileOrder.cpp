#include "planes/FileOrder.h"

#include <algorithm>

#include "base/Refusal.h"
#include "base/TextNumbers.h"

namespace peakbox::planes {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Takes the number with which the rest of a name begins.
double takeNumber(const char*& rest) {
  const char* const first = rest;
  while (isDigit(*rest)) ++rest;
  if (rest[0] == '.' && isDigit(rest[1])) ++rest;
  while (isDigit(*rest)) ++rest;
  return textToReal(std::string(first, rest).c_str());
}

bool falls(const std::string& before, const std::string& after) {
  const char* one = before.c_str();
  const char* other = after.c_str();
  while (*one != '\0') {
    if (isDigit(*one) && isDigit(*other)) {
      if (const double number = takeNumber(one), next = takeNumber(other); number != next) return next < number;
    } else if (*one++ != *other++) {
      return false;
    }
  }
  return false;
}

}  // namespace

void refuseFallingNumbers(const std::vector<std::string>& files) {
  const auto pair = std::adjacent_find(files.begin(), files.end(), falls);
  if (pair == files.end()) return;
  refuse(pair[1], "comes behind " + pair[0] + ", though the number in its name is lower; -k keeps the order as given");
}

}  // namespace peakbox::planes
