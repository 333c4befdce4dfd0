#pragma once

#include "planes/Layout.h"

namespace peakbox::planes {

/// Reads the layouts of files that are one series: their axes differ by less than a tenth of a point from those of
/// `before`, or of the first where that is no name. Others are refused, and so are files that are given twice, and
/// whole cubes that are not alone.
std::vector<Layout> readSeries(const std::vector<std::string>& names, const std::string& before);

/// Where each plane of a series comes from; says so where some are left out.
std::vector<std::string> nameSources(const std::vector<Layout>& series);

}  // namespace peakbox::planes
