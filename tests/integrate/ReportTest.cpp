#include <gtest/gtest.h>

#include <cmath>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Files = std::map<std::string, std::string>;

/// A plane of 24 x 16 points of one ppm, 0 but for (5, 6) and one beside it. A point has 2 Hz in the direct dimension
/// and 5 Hz in the indirect one.
std::string planeWithPeakAt(int i, int j) {
  return writePipe({.direct = {.size = 24, .observeMHz = 2, .sweepWidthHz = 48},
                    .indirect = {.size = 16, .observeMHz = 5, .sweepWidthHz = 80},
                    .value = [=](int a, int b) { return a == i && b == j   ? 9.0f
                                                        : a == 5 && b == 6 ? 2.0f
                                                                           : 0.0f; }});
}

TEST(Report, FollowsAPeakFromTheFirstSpectrumAsFarAsTheToleranceReaches) {
  const std::string near = "  1\tx\t13\t7\t9\n";    // (10, 8), 10 Hz further in both dimensions
  const std::string far1 = "  1\tx\t12\t9\t9\n";    // (11, 6), 12 Hz further
  const std::string far2 = "  1\tx\t18\t6\t9\n";    // (5, 9), 15 Hz further
  const std::string stayed = "  1\tx\t18\t9\t2\n";  // (5, 6), where the first one was
  struct Row {
    std::string tolerance;
    std::string lines[3];
  };
  for (const Row& row : {Row{"", {near, stayed, stayed}},
                         {"TOLERANCE 10 10\n", {near, stayed, stayed}},
                         {"TOLERANCE 0x14, 10x 5\n", {near, far1, stayed}},
                         {"TOLERANCE 0 1.5e1\n", {stayed, stayed, far2}},
                         {"TOLERANCE 9.9 99\nTOLERANCE 0 0\n", {stayed, stayed, stayed}}}) {
    const std::string parameters = "PEAKLIST peaks.xpk\nBOXSIZE 0\nSPECTRUM a\nSPECTRUM b\nSPECTRUM c\nSPECTRUM d\n";
    EXPECT_EQ(runExample({{"run.par", row.tolerance + parameters},
                          {"peaks.xpk", examplePeakHeader() + examplePeakLine({.ppm1 = "18", .ppm2 = "9"})},
                          {"a", planeWithPeakAt(5, 6)},
                          {"b", planeWithPeakAt(10, 8)},
                          {"c", planeWithPeakAt(11, 6)},
                          {"d", planeWithPeakAt(5, 9)}}),
              outcome(0, "",
                      exampleTable("1: a\n", "  1\tx\t18\t9\t9\n") + exampleTable("2: b\n", row.lines[0]) +
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
  // What comes first in a run is told first.
  const std::string folded = examplePeakHeader() + examplePeakLine({.ppm1 = "26"});
  EXPECT_EQ(
      runExample({{"run.par", "PEAKLIST peaks.xpk\nSPECTRUM a.ft2\n"}, {"peaks.xpk", folded}, {"report", "kept"}}),
      outcome(1, "WARNING: Peak 0 folded 1 times in the direct dimension.\nERROR: No BOXSIZE specified.\n", "kept"));
  EXPECT_EQ(runExample({{"run.par", "SPECTRUM none\n"}}), outcome(1, "ERROR: Unable to open 'none'\n"));
}

TEST(Report, ThatCannotBeWrittenIsNoError) {
  for (const std::string report : {"", "-o none/report", "-o /dev/full", "-o ."}) {
    EXPECT_EQ(runExample({}, "peakbox -i run.par " + report), outcome(0, "")) << report;
  }
}

TEST(Report, WritesNumbersInSixDigits) {
  const std::pair<float, std::string> rows[] = {{INFINITY, "inf"},
                                                {-INFINITY, "-inf"},
                                                {NAN, "nan"},
                                                {0, "0"},
                                                {1e6f, "1e+06"},
                                                {999999.5f, "1e+06"},
                                                {1e-4f, "0.0001"},
                                                {9.9999e-5f, "9.9999e-05"},
                                                {123456.5f, "123456"},
                                                {123457.5f, "123458"},
                                                {-1.25e-38f, "-1.25e-38"},
                                                {0.1f, "0.1"}};
  std::string list = examplePeakHeader();
  std::string lines;
  for (int i = 0; const auto& [value, text] : rows) {
    const std::string ppm = std::to_string(11 - i++);
    list += examplePeakLine({.ppm1 = ppm, .width1 = "0", .ppm2 = "0", .width2 = "0"});
    lines += "  1\tx\t" + ppm + "\t0\t" + text + "\n";
  }
  const Plane plane{.direct = {.size = 12, .observeMHz = 100, .sweepWidthHz = 1200},
                    .indirect = {.size = 1, .observeMHz = 50, .sweepWidthHz = 50},
                    .value = [&](int i, int) { return rows[i].first; }};
  EXPECT_EQ(runExample({{"run.par", "BOXSIZE 0\nPEAKLIST peaks.xpk\nSPECTRUM a.ft2\n"},
                        {"a.ft2", writePipe(plane)},
                        {"peaks.xpk", list}}),
            outcome(0, "", exampleTable("1: a.ft2\n", lines)));
}

}  // namespace
}  // namespace peakbox::test
