#include "driver/Messages.h"

#include <cstdlib>
#include <iostream>

namespace peakbox {

void warn(std::string_view text) { std::cerr << text; }

void fail(std::string_view message, int status) {
  warn(message);
  std::exit(status);
}

}  // namespace peakbox
