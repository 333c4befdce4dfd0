#pragma once

#include <string>

#include "support/Process.h"
#include "support/SpectrumWriter.h"

namespace peakbox::test {

/// 16 x 12 points of one ppm each: point i of the direct dimension lies at 15 - i ppm and has 100 Hz, point j of the
/// indirect dimension lies at 11 - j ppm and has 50 Hz. Every value is 1, but (5, 6) is 50 and (10, 3) is -70.
Plane examplePlane();

/// The two peaks of that plane, "A1" and "noise2", with bounds of one point on each side.
std::string examplePeaks();

/// The six header lines of a peak list with columns as in `examplePeakLine`.
std::string examplePeakHeader();
std::string examplePeakLine(const std::string& number, const std::string& label, const std::string& ppm1,
                            const std::string& width1, const std::string& ppm2, const std::string& width2,
                            const std::string& field17 = "0");

/// run.par, with a box of 3 x 3 points.
std::string exampleParameters(const std::string& spectra = "SPECTRUM a.ft2\n");

/// Writes the three files run.par, peaks.xpk and a.ft2 (NMRPipe).
void writeExample(const ScratchFolder& folder);

/// The report's table of that run; `head` is what follows "# SPECTRUM ".
std::string exampleTable(const std::string& head = "1: a.ft2\n");

}  // namespace peakbox::test
