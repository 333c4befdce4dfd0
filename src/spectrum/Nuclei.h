#pragma once

#include <array>
#include <string>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// The nuclei of direct and indirect dimension, "1H" and "15N" for instance, by the ratio of their frequencies; a
/// second one of the same kind is "1H_2". "D1" and "D2" where the ratio is that of no common pair.
std::array<std::string, 2> nameDimensions(double directMHz, double indirectMHz);
std::array<std::string, 2> nameDimensions(const Spectrum& spectrum);

/// The nucleus that a text names, as "1H" or in another way that programs write it; empty where it names none.
std::string findNucleus(const std::string& text);

}  // namespace peakbox
