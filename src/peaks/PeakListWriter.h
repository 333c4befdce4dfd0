#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "spectrum/Axes.h"

namespace peakbox {

/// A peak for a list, direct dimension first; positions and widths in ppm, as texts.
struct ListEntry {
  std::int64_t number;
  std::string label;
  std::array<std::string, 2> ppm;
  std::array<std::string, 2> bounds;
  std::array<std::string, 2> lineWidth{"0.0", "0.0"};
};

/// The six header lines of a list for spectra with these axes, whose dimensions have these names.
std::string writeListHeader(const Axes& axes, const std::array<std::string, 2>& names, const std::string& dataset);

/// The line of a peak, with its end.
std::string writeListLine(const ListEntry& entry);

}  // namespace peakbox
