#pragma once

#include "plot/MeasuredRun.h"

namespace peakbox {

/// The dimensions: without a change of sign an int, and an index.
inline constexpr std::array<std::uint8_t, 2> kDims{0, 1};

/// Widens a window to hold another one.
void hold(Window& window, const Window& other);

/// Commands for a window of the spectrum loaded last: its axes, and contours, the lowest at `base` and each `factor`
/// times the one before. Of more than `mostPoints` along a dimension the extreme of each few is drawn.
std::string writeWindow(const MeasuredRun& run, const Window& window, double base, double factor, int mostPoints);

/// Commands for the outline of a window, in a style that the drawing has.
std::string writeOutline(const MeasuredRun& run, const Window& window, const char* style);

/// The place of a window's middle, in ppm.
std::string writeMiddle(const MeasuredRun& run, const Window& window);

}  // namespace peakbox
