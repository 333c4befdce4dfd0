#include "base/Refusal.h"

#include <iostream>
#include <string>

#include "base/Messages.h"

namespace peakbox {

namespace {

std::string_view programName = "peakbox";  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

std::string compose(std::string_view place, std::string_view text) {
  return std::string(programName).append(": ").append(place).append(": ").append(text).append("\n");
}

}  // namespace

void nameProgram(std::string_view name) { programName = name; }

void refuse(std::string_view place, std::string_view reason) { fail(compose(place, reason)); }

void warn(std::string_view place, std::string_view text) { std::cerr << compose(place, text); }

}  // namespace peakbox
