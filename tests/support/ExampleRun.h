#pragma once

#include <map>
#include <string>

#include "demo/SpectrumWriter.h"
#include "support/Process.h"

namespace peakbox::test {

using namespace demo;

/// 16 x 12 points of one ppm each: point i of the direct dimension lies at 15 - i ppm and has 100 Hz, point j of the
/// indirect dimension lies at 11 - j ppm and has 50 Hz. Every value is 1, but (5, 6) is 50 and (10, 3) is -70.
Plane examplePlane();

/// The two peaks of that plane, "A1" and "noise2", with bounds of one point on each side.
std::string examplePeaks();

/// The fields of a peak's line that are read, as text. Positions and widths are in ppm.
struct PeakLine {
  std::string number = "1";
  std::string label = "x";
  std::string ppm1 = "10";
  std::string width1 = "2";
  std::string ppm2 = "5";
  std::string width2 = "2";
  std::string field17 = "0";
};

/// The six header lines of a peak list with columns as in `examplePeakLine`, and such a line.
std::string examplePeakHeader();
std::string examplePeakLine(const PeakLine& peak);

/// run.par, with a box of 3 x 3 points and a tolerance of one point.
std::string exampleParameters(const std::string& spectra = "SPECTRUM a.ft2\n");

/// Writes the three files run.par, peaks.xpk and a.ft2 (NMRPipe).
void writeExample(const ScratchFolder& folder);

/// Runs `command` where these files are, and `files` beside them or in their place.
std::string runExample(const std::map<std::string, std::string>& files,
                       const std::string& command = "peakbox -i run.par -o report");

/// The beginning of the example's report and its table, or one of other `lines`; `head` follows "# SPECTRUM ".
inline constexpr const char* kExampleField = "# FIELD(MHz): 600.13\n#\n";
std::string exampleTable(const std::string& head = "1: a.ft2\n",
                         const std::string& lines = "  1\tA1\t10\t5\t58\n  2\tnoise2\t5\t8\t-62\n");

}  // namespace peakbox::test
