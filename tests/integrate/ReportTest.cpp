#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <sstream>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

using Files = std::map<std::string, std::string>;

/// A plane of 16 x 12 points of one ppm, 0 but for one of them and (5, 6). A point has 10 Hz in the direct dimension
/// and 5 Hz in the indirect one.
std::string planeWithPeakAt(int i, int j) {
  return writePipe({.direct = {.size = 16, .observeMHz = 10, .sweepWidthHz = 160},
                    .indirect = {.size = 12, .observeMHz = 5, .sweepWidthHz = 60},
                    .value = [=](int a, int b) { return a == i && b == j   ? 9.0f
                                                        : a == 5 && b == 6 ? 2.0f
                                                                           : 0.0f; }});
}

TEST(Report, FollowsAPeakFromTheFirstSpectrumAsFarAsTheToleranceReaches) {
  const std::string atFirst = "  1\tx\t10\t5\t9\n";
  const std::string near = "  1\tx\t9\t3\t9\n";     // (6, 8), 10 Hz further in both dimensions
  const std::string far1 = "  1\tx\t8\t5\t9\n";     // (7, 6), 20 Hz further
  const std::string far2 = "  1\tx\t10\t2\t9\n";    // (5, 9), 15 Hz further
  const std::string stayed = "  1\tx\t10\t5\t2\n";  // (5, 6), where the first one was
  struct Row {
    std::string tolerance;
    std::string lines[3];
  };
  for (const Row& row : {Row{"", {near, stayed, stayed}},
                         {"TOLERANCE 10 10\n", {near, stayed, stayed}},
                         {"TOLERANCE 0x14, 10x 5\n", {near, far1, stayed}},
                         {"TOLERANCE 0 2e1\n", {stayed, stayed, far2}},
                         {"TOLERANCE 9.9 99\nTOLERANCE 0 0\n", {stayed, stayed, stayed}}}) {
    EXPECT_EQ(
        runExample({{"run.par",
                     row.tolerance + "PEAKLIST peaks.xpk\nBOXSIZE 0\nSPECTRUM a\nSPECTRUM b\nSPECTRUM c\nSPECTRUM d\n"},
                    {"peaks.xpk", examplePeakHeader() + examplePeakLine({})},
                    {"a", planeWithPeakAt(5, 6)},
                    {"b", planeWithPeakAt(6, 8)},
                    {"c", planeWithPeakAt(7, 6)},
                    {"d", planeWithPeakAt(5, 9)}}),
        outcome(0, "",
                exampleTable("1: a\n", atFirst) + exampleTable("2: b\n", row.lines[0]) +
                    exampleTable("3: c\n", row.lines[1]) + exampleTable("4: d\n", row.lines[2])))
        << row.tolerance;
  }
}

TEST(Report, GivesPositionsByTheAxesOfEachSpectrum) {
  Plane plane = examplePlane();
  plane.direct.lastPpm = 7;
  plane.indirect.lastPpm = -3;
  EXPECT_EQ(runExample({{"run.par", exampleParameters() + "SPECTRUM b\n"},
                        {"b", writeView(plane)},
                        {"a.ft2", writeView(examplePlane())}}),
            outcome(0, "",
                    kExampleField + exampleTable() +
                        exampleTable("2: b\n", "  1\tA1\t17\t2\t58\n  2\tnoise2\t12\t5\t-62\n")));
}

TEST(Report, RepeatsTheWordsOfTheSpectra) {
  const std::pair<std::string, std::string> rows[] = {
      {"SPECTRUM a.ft2\nspectrum\t./a.ft2\n", exampleTable("1: a.ft2\n") + exampleTable("2: ./a.ft2\n")},
      {"SPECTRUM a.ft2 0\nSPECTRUM,a.ft2,\"\n",
       exampleTable("1: a.ft2\n# PARAMETERS: 0\n") + exampleTable("2: a.ft2\n# PARAMETERS: 0\n")},
      {"SPECTRUM a.ft2 0 x\nSPECTRUM a.ft2 1 \"\nSPECTRUM a.ft2 \" y",
       exampleTable("1: a.ft2\n# PARAMETERS: 0\tx\n") + exampleTable("2: a.ft2\n# PARAMETERS: 1\tx\n") +
           exampleTable("3: a.ft2\n# PARAMETERS: 1\ty\n")},
      {"SPECTRUM a.ft2 0 x y z\n", exampleTable("1: a.ft2\n# PARAMETERS: 0\tx\n")},
  };
  for (const auto& [spectra, tables] : rows) {
    EXPECT_EQ(runExample({{"run.par", exampleParameters(spectra)}}), outcome(0, "", kExampleField + tables)) << spectra;
  }
}

TEST(Report, UsesTheLastOfRepeatedKeywordsAndOptions) {
  const std::string parameters = "BOXSIZE 9\nPEAKLIST x\nField 1\n" + exampleParameters();
  EXPECT_EQ(runExample({{"run.par", parameters}}, "peakbox -i none -o first -i run.par -o report"),
            outcome(0, "", kExampleField + exampleTable()));
  EXPECT_EQ(runExample({{"run.par", "PEAKLIST peaks.xpk\nBOXSIZE 1\nSPECTRUM a.ft2\n"}}),
            outcome(0, "", exampleTable()));
}

TEST(Report, KeepsTheTablesBeforeAFault) {
  Plane wider = examplePlane();
  wider.direct.size = 17;
  Plane lower = examplePlane();
  lower.indirect.size = 11;
  const Files files{{"wider", writePipe(wider)}, {"lower", writePipe(lower)}, {"view", writeView(examplePlane())}};
  const std::pair<std::string, std::string> rows[] = {
      {"none\n", "Unable to open datafile none\n"},
      {".\n", "Error reading file header\n"},
      {"wider\n", "ERROR: Spectrum wider has 17 x 12 points, the first has 16 x 12.\n"},
      {"lower\n", "ERROR: Spectrum lower has 16 x 11 points, the first has 16 x 12.\n"},
      {"view\n", "Correcting data for apparent byte-swap.\nERROR: Spectrum is not two dimentional.\n"},
      {"a.ft2\nTOLERANCE nan 9\n", "ERROR: Search area of peak #0 is not a number in dimension 1.\n"},
      // Refused before the warning that the first value is good for.
      {"a.ft2\nTOLERANCE -9 nan\n", "ERROR: Search area of peak #0 is not a number in dimension 2.\n"},
  };
  for (const auto& [second, message] : rows) {
    Files all = files;
    all["run.par"] = exampleParameters() + "SPECTRUM " + second;
    all["report"] = std::string(5000, 'x');  // of an earlier run
    EXPECT_EQ(runExample(all), outcome(1, message, kExampleField + exampleTable())) << second;
  }
}

TEST(Report, IsNotTouchedBeforeAHalfWidthIsKnown) {
  const std::string noBox = "ERROR: No BOXSIZE specified.\n";
  const std::string parameters = "PEAKLIST peaks.xpk\nSPECTRUM a.ft2\n";
  EXPECT_EQ(runExample({{"run.par", parameters}, {"report", "kept"}}), outcome(1, noBox, "kept"));
  EXPECT_EQ(runExample({{"run.par", parameters}, {"report", "kept"}}, "peakbox -v -i run.par -o report"),
            outcome(1, noBox, "kept"));
  // What comes first in a run is told first.
  EXPECT_EQ(runExample({{"run.par", "SPECTRUM none\n"}}), outcome(1, "ERROR: Unable to open 'none'\n"));
  const std::string folded = examplePeakHeader() + examplePeakLine({.ppm1 = "26"});
  EXPECT_EQ(runExample({{"run.par", parameters}, {"peaks.xpk", folded}}),
            outcome(1, "WARNING: Peak 0 folded 1 times in the direct dimension.\n" + noBox));
}

TEST(Report, ThatCannotBeWrittenIsNoError) {
  for (const std::string report : {"", "-o none/report", "-o /dev/full", "-o ."}) {
    EXPECT_EQ(runExample({}, "peakbox -i run.par " + report), outcome(0, "")) << report;
  }
}

TEST(Report, IsRefusedWhenTheFirstSpectrumChangesAfterItsHeaderWasRead) {
  Plane higher = examplePlane();
  higher.indirect.size = 13;
  const std::pair<std::string, std::string> rows[] = {
      {writePipe(examplePlane()).substr(0, 2100), "Error reading file @ point (14,0\n"},
      {writePipe(higher), "ERROR: Spectrum a.ft2 has 16 x 13 points, the first has 16 x 12.\n"},
  };
  for (const auto& [changed, message] : rows) {
    // The run waits for its peak list, in a pipe, while the spectrum is replaced.
    const std::string end =
        runExample({{"changed", changed}, {"run.par", "BOXSIZE 1\nPEAKLIST pipe\nSPECTRUM a.ft2\n"}},
                   "sh -c 'mkfifo pipe; peakbox -i run.par -o report & exec 3>pipe; cp changed a.ft2; "
                   "cat peaks.xpk >&3; exec 3>&-; wait $!'");
    EXPECT_EQ(end, outcome(1, message, ""));
  }
}

TEST(Report, WritesNumbersAsAStreamDoes) {
  // Any bits at all, and numbers halfway between two of six digits or a little beside.
  std::mt19937 random(5);
  std::vector<float> values{INFINITY, -INFINITY, NAN, 0, 1e6f, 999999.5f, 1e-4f, 9.9999e-5f};
  while (values.size() < 6000) {
    const auto bits = static_cast<std::uint32_t>(random());
    const float middle = std::ldexp(static_cast<float>(bits >> 11 | 1), -1 - static_cast<int>(bits % 8));
    for (const float value : {std::bit_cast<float>(bits), middle, std::nextafter(middle, 0.0f)})
      values.push_back(value);
  }
  const auto size = static_cast<int>(values.size());
  const Plane plane{.direct = {.size = size, .observeMHz = 100, .sweepWidthHz = 50.0f * static_cast<float>(size)},
                    .indirect = {.size = 1, .observeMHz = 50, .sweepWidthHz = 50},
                    .value = [&](int i, int) { return values[static_cast<std::size_t>(i)]; }};
  std::string list = examplePeakHeader();
  std::ostringstream lines;
  for (int i = 0; i < size; ++i) {
    const double ppm = 0.5 * (size - 1 - i);
    list += examplePeakLine({.ppm1 = std::to_string(ppm), .width1 = "0", .ppm2 = "0", .width2 = "0"});
    lines << "  1\tx\t" << ppm << "\t0\t" << 0.0 + values[static_cast<std::size_t>(i)] << '\n';
  }
  EXPECT_EQ(runExample({{"run.par", "BOXSIZE 0\nPEAKLIST peaks.xpk\nSPECTRUM a.ft2\n"},
                        {"a.ft2", writePipe(plane)},
                        {"peaks.xpk", list}}),
            outcome(0, "", exampleTable("1: a.ft2\n", lines.str())));
}

}  // namespace peakbox::test
