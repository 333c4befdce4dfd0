#pragma once

#include <optional>
#include <string>

#include "check/Findings.h"
#include "spectrum/Spectrum.h"

namespace peakbox {

/// Why a file is not read: a folder or a device would give nothing, or without end, and a pipe would be used up. Empty
/// for an ordinary file and for one that is not there.
std::string describeUnusual(const std::string& path);
inline constexpr const char* kPipe = "this is a pipe, and so not checked";

/// The file's text with Unix lines for those of Windows and old Macs, so that what else is wrong can be found. Tells of
/// these, and why it cannot be read. A parameter file may be a pipe.
std::optional<std::string> readText(const FileFindings& findings);

/// What else can be said of a spectrum file that is refused, in parentheses; empty where that is nothing. `wanted` is
/// the format of the first spectrum, None where it is not known.
std::string explainRefusal(const std::string& path, SpectrumFormat wanted);

}  // namespace peakbox
