#pragma once

#include <map>
#include <string>
#include <vector>

#include "demo/SpectrumWriter.h"

namespace peakbox::demo {

/// One plane, or several of which plane k, from 1, has k times its values, in one file. `roles` says of each axis, the
/// slowest first, whether it is the planes (0), the indirect (1) or the direct dimension (2).
struct Stack {
  Plane plane;
  int planeCount = 1;
  std::vector<std::size_t> roles{1, 2};
  std::vector<int> tiles{5, 7};
  float delayMHz = 1;
  bool isBig = true;
  bool isDouble = false;
};

/// The bytes of a whole UCSF file, always big-endian.
std::string writeUcsf(const Stack& stack);

/// The files of a folder of processed Bruker data, by their names; their numbers stand for a quarter. A parameter in
/// `changes`, "procs:SI" for instance, replaces the right one, or takes it out where it is empty.
std::map<std::string, std::string> writeBruker(const Stack& stack,
                                               const std::map<std::string, std::string>& changes = {});

}  // namespace peakbox::demo
