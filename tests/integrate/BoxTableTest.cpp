#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

#include "integrate/BoxTable.h"
#include "support/ExampleRun.h"

namespace peakbox::test {

/// The line of a peak that is searched for from one point to another of the plane of `measure`.
std::string peakBetween(double low1, double high1, double low2, double high2, const std::string& label = "x") {
  return examplePeakLine("1", label, std::to_string(163 - (low1 + high1) / 2), std::to_string(high1 - low1),
                         std::to_string(247 - (low2 + high2) / 2), std::to_string(high2 - low2));
}

/// Measures `peaks` with -abs in boxes of 5 x 3 points on a plane of 64 x 48, one ppm each, 0 but for a few of them.
std::string measure(const std::string& peaks) {
  const std::map<std::pair<int, int>, float> points = {
      {{11, 11}, 3}, {{12, 12}, -5},       {{21, 11}, -3},        {{22, 12}, 3},   {{32, 11}, 4}, {{31, 13}, 4},
      {{31, 12}, 4}, {{42, 11}, -4},       {{41, 13}, -4},        {{50, 10}, NAN}, {{52, 12}, 9}, {{11, 25}, NAN},
      {{12, 27}, 9}, {{33, 26}, INFINITY}, {{30, 28}, -INFINITY}, {{40, 26}, 3},   {{41, 26}, 2}, {{42, 26}, 9},
      {{2, 1}, 8},   {{61, 46}, 7},        {{62, 0}, 99},         {{53, 39}, 6},   {{2, 40}, 5}};
  const auto value = [&](int i, int j) { return points.contains({i, j}) ? points.at({i, j}) : 0.0f; };
  return runExample({{"run.par", "BOXSIZE 2 1\nPEAKLIST peaks.xpk\nSPECTRUM a.ft2\n"},
                     {"a.ft2", writePipe({{64, 100, 6400, 100}, {48, 50, 2400, 200}, value})},
                     {"peaks.xpk", examplePeakHeader() + peaks}},
                    "peakbox -abs -i run.par -o report");
}

TEST(BoxTable, SumsTheBoxAroundTheFirstPointOfGreatestMagnitude) {
  // Areas with values of every kind; one between two points; three at the edges of the plane; and two outside it.
  const std::tuple<double, double, double, double, std::string> rows[] = {
      {10, 13, 10, 13, "noise\t151\t235\t-2"},
      {20, 23, 10, 13, "noise\t141\t235\t0"},
      {30, 33, 10, 13, "noise\t132\t235\t12"},
      {40, 43, 10, 13, "noise\t122\t234\t-4"},
      {40, 43, 10, 13, "Noise\t122\t234\t4"},
      {50, 53, 10, 13, "noise\t113\t237\tnan"},
      {10, 13, 25, 28, "noise\t151\t220\t9"},
      {30, 33, 25, 28, "noise\t133\t219\t-inf"},
      {40.2, 40.8, 25.2, 25.9, "noise\t123\t221\t14"},
      {0, 4, 0, 3, "noise1\t161\t246\t8"},
      {60, 64, 44, 48, "bgnoise\t102\t201\t7"},
      {-10, 70, 38, 41, "noise\t161\t207\t5"},
      {639988, 639990, -57.5, -55, "noise\t110\t208\t6"},
      {-12, -10, 39, 39, "noise\t110\t208\t6"}};
  std::string peaks;
  std::string lines;
  for (const auto& [low1, high1, low2, high2, line] : rows) {
    peaks += peakBetween(low1, high1, low2, high2, line.substr(0, line.find('\t')));
    lines += "  1\t" + line + "\n";
  }
  const std::string err =
      "WARNING: Peak 11 folded 1 times in the direct dimension.\n"
      "WARNING: Peak 12 folded 9999 times in the direct dimension.\n"
      "WARNING: Peak 12 folded 2 times in the indirect dimension.\n"
      "WARNING: Peak 13 folded 1 times in the direct dimension.\n"
      "WARNING: No data points are contained within the box for peak #8\n"
      "The box was modified to contain the nearest two data points in the dimension 1.\n"
      "WARNING: No data points are contained within the box for peak #8\n"
      "The box was modified to contain the nearest two data points in the dimension 2.\n";
  EXPECT_EQ(measure(peaks), outcome(0, err, exampleTable("1: a.ft2\n", lines)));
}

TEST(BoxTable, APeakThatCannotBeMeasuredEndsTheRun) {
  for (const auto& [a, b] : {std::pair{1, 20}, {62, 20}, {20, 0}, {20, 47}}) {
    const std::string head = "ERROR: Box for peak #0 centered at (" + std::to_string(a) + "," + std::to_string(b);
    const std::string err = head + ") --\n\tBox extends outside bounds of data array!\n";
    EXPECT_EQ(measure(peakBetween(a, a, b, b)), outcome(0, err, ""));
  }
  const std::string noPlace = "ERROR: Peak 0 has no valid position in dimension ";
  EXPECT_EQ(measure(peakBetween(NAN, NAN, 20, 20)), outcome(1, noPlace + "1.\n"));
  EXPECT_EQ(measure(peakBetween(20, 20, 1.1e11, 1.1e11)), outcome(1, noPlace + "2.\n"));
}

TEST(BoxTable, FoldsFarOffPeaksToWhereSingleStepsTakeThem) {
  constexpr std::int32_t kSize = (1 << 30) - 3;
  std::string header = writeView({{1, 1, 0, 0}, {1, 1, 1, 0}, examplePlane().value});
  putWord(header, 1024, kSize, false);
  putReal(header, 1024 + 28, static_cast<float>(0.7 * kSize), false);
  std::istringstream stream(header);
  Spectrum spectrum;
  spectrum.readViewHeader(stream);
  // From 2^53 on the step itself rounds, before it the edge that is left behind as it grows.
  std::mt19937 random(7);
  std::uniform_real_distribution<double> part(-0.7 * kSize, 0.7 * kSize);
  const auto draw = [&](int exponent) { return std::to_string(std::ldexp(part(random), exponent)); };
  std::string list = examplePeakHeader();
  for (int k = 0; k < 150; ++k) list += examplePeakLine("1", "x", draw(k % 26), draw(k % 12), "0", "0");
  const ScratchFolder folder;
  PeakList peaks;
  BoxTable boxes(peaks.read(folder.write("p", list).c_str(), spectrum, false), 1, 1);
  testing::internal::CaptureStderr();
  boxes.placeBoxes(spectrum, peaks);
  testing::internal::GetCapturedStderr();
  for (int j = 0; j < peaks.getCount(); ++j) {
    double low = peaks.getPosition(j, 0) - 0.5 * peaks.getBoundsWidth(j, 0);
    double high = peaks.getPosition(j, 0) + 0.5 * peaks.getBoundsWidth(j, 0);
    for (; low < 0; low += kSize) high += kSize;
    for (; high > kSize; high -= kSize) low -= kSize;
    EXPECT_EQ(std::pair(boxes.getExtent1(j).low, boxes.getExtent1(j).high), std::pair(low, high)) << j;
  }
}

TEST(Report, HoldsTheTablesOfASeriesUntilAFault) {
  std::map<std::string, std::string> files;
  files["larger"] = writePipe({{16, 100, 1600, 0}, {13, 50, 650, 0}, examplePlane().value});
  files["view"] = writeView(examplePlane());
  // The greatest point moves by one and then by another; a point has 10 Hz, and 20 Hz in the indirect dimension.
  for (const int at : {5, 6, 7}) {
    const auto value = [at](int i, int j) { return i == at && j == 6 ? 10.0f : i == 4 && j == 5 ? 2.0f : 0.0f; };
    const float lastPpm = 100.0f * static_cast<float>(at);
    files[std::to_string(at)] = writeView({{16, 10, 160, lastPpm, at}, {12, 20, 240, 0, at}, value, at == 6});
  }
  files["moving.xpk"] = examplePeakHeader() + examplePeakLine("1", "x", "511", "2", "6", "2");
  const std::string moving = "PEAKLIST moving.xpk\nBOXSIZE 1\nSPECTRUM 5\nSPECTRUM 6\nSPECTRUM 7\n";
  const std::string moved =
      exampleTable("1: 5\n", "  1\tx\t510\t5\t12\n") + exampleTable("2: 6\n", "  1\tx\t609\t5\t10\n");
  const std::string notice = "Correcting data for apparent byte-swap.\n";
  const std::string kept = kExampleField + exampleTable();
  const std::string first = exampleParameters() + "SPECTRUM ";
  const std::pair<std::string, std::string> rows[] = {
      {moving, outcome(0, notice, moved + exampleTable("3: 7\n", "  1\tx\t711\t5\t2\n"))},
      {moving + "TOLERANCE 0xA,20x\n", outcome(0, notice, moved + exampleTable("3: 7\n", "  1\tx\t711\t6\t2\n"))},
      {"BOXSIZE 9\nPEAKLIST x\nField 1\n" + exampleParameters("SPECTRUM a.ft2 0 x\nspectrum ./a.ft2 1 \""),
       outcome(0, "",
               kExampleField + exampleTable("1: a.ft2\n# PARAMETERS: 0\tx\n") +
                   exampleTable("2: ./a.ft2\n# PARAMETERS: 1\tx\n"))},
      {first + "none\n", outcome(1, "Unable to open datafile none\n", kept)},
      {first + ".\n", outcome(1, "Error reading file header\n", kept)},
      {first + "larger\n", outcome(1, "ERROR: Spectrum larger has 16 x 13 points, the first has 16 x 12.\n", kept)},
      {first + "view\n", outcome(1, notice + "ERROR: Spectrum is not two dimentional.\n", kept)},
      {first + "a.ft2\nTOLERANCE 9 nan\n",
       outcome(1, "ERROR: Search area of peak #0 is not a number in dimension 2.\n", kept)},
  };
  for (const auto& [text, end] : rows) {
    files["run.par"] = text;
    EXPECT_EQ(runExample(files, "peakbox -i none -o first -i run.par -o report"), end);
  }
  // One that cannot be written is no error, and all is measured.
  files["run.par"] = "BOXSIZE 1\nSPECTRUM 5\nSPECTRUM 6\nPEAKLIST moving.xpk\n";
  for (const std::string report : {"", "-o none/report", "-o /dev/full"}) {
    EXPECT_EQ(runExample(files, "peakbox -i run.par " + report), outcome(0, notice));
  }
}

TEST(Report, IsRefusedWhenASpectrumChangesAfterItsHeaderWasRead) {
  const std::pair<std::string, std::string> rows[] = {
      {writePipe(examplePlane()).substr(0, 2100), "Error reading file @ point (14,0\n"},
      {writePipe({{16, 100, 1600, 0}, {13, 50, 650, 0}, examplePlane().value}),
       "ERROR: Spectrum a.ft2 has 16 x 13 points, the first has 16 x 12.\n"},
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

}  // namespace peakbox::test
