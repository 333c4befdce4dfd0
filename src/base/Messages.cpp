#include "base/Messages.h"

#include <cstdlib>
#include <iostream>

namespace peakbox {

void printMessage(std::string_view text) { std::cerr << text; }

void fail(std::string_view message, int status) {
  printMessage(message);
  std::exit(status);
}

}  // namespace peakbox
