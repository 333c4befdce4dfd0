#pragma once

#include "planes/Layout.h"

namespace peakbox::planes {

/// The file of a plane in a folder, counted from 1.
std::string namePlane(const std::string& folder, std::size_t plane);

/// The planes that a folder has, in rising order.
std::vector<std::size_t> findPlanes(const std::string& folder);

/// Writes all planes of a series to the folder, which is made where there is none, counting from `number`, and then
/// `lines` to standard output. Where something of this cannot be done it is refused, and nothing stays, nor does it
/// when a signal ends the program; files have their names only when all are whole, and none is overwritten.
void writePlanes(const std::vector<Layout>& series, const std::string& folder, std::size_t number,
                 const std::string& lines);

}  // namespace peakbox::planes
