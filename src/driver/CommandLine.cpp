#include <cstdint>
#include <iostream>
#include <string>

#include "base/Messages.h"
#include "driver/RunSettings.h"

namespace peakbox {

namespace {

/// Points along a box of the given half-width. Half-widths near the 32-bit limit wrap.
std::string boxLength(std::int32_t halfWidth) {
  return std::to_string(static_cast<std::int32_t>(2 * static_cast<std::uint32_t>(halfWidth) + 1));
}

}  // namespace

bool RunSettings::parseArguments(int count, const char* const* arguments) {
  if (count == 1) printUsage(1);
  parseOptions(count, arguments);
  readParameterFile();
  if (verbose) std::cout << "Box size = " + boxLength(getBoxSize(0)) + " x " + boxLength(getBoxSize(1)) + "\n\n";
  return verbose;
}

void RunSettings::parseOptions(int count, const char* const* arguments) {
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    const bool last = i + 1 == count;
    if (argument == "-v") {
      verbose = true;
    } else if (argument == "-i") {
      if (last) {
        printMessage("ERROR: No input file specified\n");
        printUsage(1);
      }
      inputFile = arguments[++i];
    } else if (argument == "-o") {
      if (last) {
        printMessage("ERROR: No output file specified\n");
        printUsage(1);
      }
      outputFile = arguments[++i];
    } else if (argument == "-abs") {
      absoluteIntensity = true;
    } else {
      printMessage("ERROR: Parameter '" + argument + "' not understood.\n");
      printUsage(1);
    }
  }
}

void RunSettings::printUsage(int status) {
  fail(
      "valid parameters:\n"
      "  -i INPUT FILE\n"
      "  -o OUTPUT FILE\n"
      "  -v       verbose mode\n"
      "  -abs     absolute intensity\n",
      status);
}

}  // namespace peakbox
