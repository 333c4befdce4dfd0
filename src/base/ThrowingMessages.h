#pragma once

#include <string>

namespace peakbox {

/// What `fail` throws in programs that link ThrowingMessages.cpp, which then stands in for Messages.cpp: they survive
/// the end of a run.
struct RunEnd {
  std::string message;
  int status;
};

/// All that was printed by `printMessage` since the last call.
std::string takeMessages();

}  // namespace peakbox
