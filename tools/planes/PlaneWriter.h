#pragma once

#include "planes/PipeFile.h"

namespace peakbox::planes {

/// The file of a plane in a folder, counted from 1.
std::string namePlane(const std::string& folder, std::size_t plane);

/// Writes all planes of the files to the folder, which is made where there is none, and then `lines` to standard
/// output. Where something of this cannot be done it is refused, and nothing stays; no file is overwritten.
void writePlanes(const std::vector<PipeFile>& files, const std::string& folder, const std::string& lines);

}  // namespace peakbox::planes
