#pragma once

#include <string_view>

namespace peakbox {

/// Writes a notice, a warning or an error, which brings its own newline, to standard error.
void printMessage(std::string_view text);

/// The one way in which a run ends early: prints `message`, flushes standard output and ends the process with `status`.
/// No automatic object is destroyed: what an open report has not flushed is lost.
[[noreturn]] void fail(std::string_view message, int status = 1);

}  // namespace peakbox
