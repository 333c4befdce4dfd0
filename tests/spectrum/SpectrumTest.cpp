#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <sstream>
#include <tuple>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

const std::string kNotice = "Correcting data for apparent byte-swap.\n";

TEST(Spectrum, GivesEveryNumberFromEveryLayoutAsAStreamWritesIt) {
  // Any bits at all; and numbers halfway between two of six digits, or a little beside by the next point of the box.
  std::mt19937 random(5);
  std::vector<float> values{0, INFINITY, 0, 0, -INFINITY, 0, 0, NAN, 0};
  while (values.size() < 9003) {
    const auto bits = static_cast<std::uint32_t>(random());
    const float middle = std::ldexp(static_cast<float>(bits >> 11 | 1), -1 - static_cast<int>(bits % 8));
    const float beside = std::ldexp(middle, -40) * static_cast<float>(values.size() / 3 % 3);
    values.insert(values.end(), {0, std::bit_cast<float>(bits), 0, 0, middle, beside});
  }
  // Rows longer than the buffer that they are read through, half a ppm per point, with a peak at every 23rd point.
  constexpr int kSize = 23 * 3001;
  const auto value = [&](int i, int j) { return values[static_cast<std::size_t>(3 * (i % 3001) + j)]; };
  std::map<std::string, std::string> files{{"run.par", exampleParameters("SPECTRUM a.ft2\nBOXSIZE 0 1\n")},
                                           {"peaks.xpk", examplePeakHeader()}};
  std::ostringstream lines;
  for (int i = 0; i < kSize; i += 23) {
    const double ppm = 0.5 * (kSize - 1 - i);
    files["peaks.xpk"] += examplePeakLine("1", "x", std::to_string(ppm), "0", "3", "0");
    lines << "  1\tx\t" << ppm << "\t3\t" << 0.0 + value(i, 1) + value(i, 2) << '\n';
  }
  const std::string report = kExampleField + exampleTable("1: a.ft2\n", lines.str());
  const std::string nuls(14, '\0');
  const std::string pipeAxes = "Dim\t\tSize\t\tObs\t\t1pt\n1\t\t69023pt\t\t200MHz\t100Hz\n2\t\t3pt\t\t60MHz\t60Hz\n\n";
  const std::string viewAxes = "Dim\t\tNuc\t\tSize\t\tObs\t\t1pt\n1\t\t1H" + nuls +
                               "\t\t69023pt\t\t200MHz\t100Hz\n2\t\t15" + nuls + "\t\t3pt\t\t60MHz\t60Hz\n\n";
  const std::string peaksFound = " format\n3001 peaks found\n\nSpectrum = a.ft2\n";
  for (const auto& [swapped, tile1, tile2, flag1, flag2] :
       {std::tuple{false, 8, 2, 0.0f, 0.0f}, {true, kSize, 3, 0, 1}, {false, 300000, 1, 1, 1}, {true, 1, 30, 1, -1}}) {
    const Plane plane{{kSize, 200, 100.0f * kSize, 0, tile1, flag1}, {3, 60, 180, 2, tile2, flag2}, value, swapped};
    const std::string notice = swapped ? kNotice : "";
    files["a.ft2"] = writePipe(plane);
    EXPECT_EQ(runExample(files, "peakbox -v -i run.par -o report"),
              outcome(0, notice + pipeAxes + notice, report, "Box size = 1 x 3\n\nNMRPipe" + peaksFound));
    files["a.ft2"] = writeView(plane);
    EXPECT_EQ(runExample(files, "peakbox -v -i run.par -o report"),
              outcome(0, notice + viewAxes + notice, report, "Box size = 1 x 3\n\nNMRView" + peaksFound));
  }
}

/// `bytes` with another word at `offset`.
std::string with(std::string bytes, std::size_t offset, auto word) {
  putWord(bytes, offset, std::bit_cast<std::uint32_t>(word), false);
  return bytes;
}

TEST(Spectrum, ABadFileHasItsMessage) {
  Plane plane = examplePlane();
  plane.direct.quadFlag = 0;  // One more value per point: a row has 64 bytes of values and 64 that are passed over.
  const std::string pipe = writePipe(plane);
  const std::string view = writeView(plane);
  const std::string corner = examplePeakHeader() + examplePeakLine("1", "x", "1", "0", "1", "0");
  const std::string table =
      std::string(kExampleField) + "# SPECTRUM 1: a.ft2\n# Num\tLabel\tPos1\tPos2\tInt\n  1\tx\t1\t1\t";
  const std::string notTwo = "ERROR: Spectrum is not two dimentional.\n";
  const std::string ended = "Error reading file @ point (";
  const std::pair<std::string, std::string> rows[] = {
      {"abc", outcome(1, "Unable to read a.ft2\n")},
      {"\1abc", outcome(1, "unrecognized format\n")},
      {pipe.substr(0, 2047), outcome(1, "Error reading file header\n")},
      {with(pipe, 4 * 9, 3.0f), outcome(1, notTwo)},
      {with(pipe, 4 * 99, 100001.0f), outcome(1, kNotice + notTwo)},
      {with(pipe, 4 * 119, -5000.5f), outcome(1, kNotice + notTwo)},
      // 1.00001, reversed 2.00783, and 790.004, reversed 1026.16.
      {with(with(pipe, 4 * 99, 0x3f800040), 4 * 119, 0x44458044), outcome(1, "ERROR: Unkonwn file format.\n")},
      {with(pipe, 4 * 219, -1e30f), outcome(1, "ERROR: Dimension 2 has no data points (-2147483648).\n")},
      {with(pipe, 4 * 219, std::nanf("")), outcome(1, "ERROR: Dimension 2 has no data points (0).\n")},
      {with(view, 24, 3), outcome(1, notTwo)},
      {with(view, 1064, 2), outcome(1, "ERROR: Unknown unit.\n")},
      {with(view, 1192, 0), outcome(1, "ERROR: Unknown unit.\n")},
      {with(view, 1024, -5), outcome(1, "ERROR: Dimension 1 has no data points (-5).\n")},
      {with(view, 1028, 0), outcome(1, "ERROR: Dimension 1 has an invalid tile size (0).\n")},
      {with(view, 1156, -1), outcome(1, "ERROR: Dimension 2 has an invalid tile size (-1).\n")},
      {view.substr(0, view.size() - 1), outcome(1, "Error reading file\n", "")},
      {pipe.substr(0, 2048 + 4 * 3 + 2), outcome(1, ended + "4,0\n", "")},
      {pipe.substr(0, 2048 + 128 * 2 + 4 * 15 + 3), outcome(1, ended + "0,3\n", "")},
      {pipe.substr(0, 2048 + 128 * 4 + 127), outcome(1, ended + "0,5\n", "")},
      {pipe.substr(0, 2048 + 128 * 5), outcome(1, ended + "1,5\n", "")},
      {pipe.substr(0, 2048 + 128 * 11 + 4 * 14), outcome(1, ended + "15,11\n", "")},
      // Nothing tests the last row's last value and what follows it.
      {pipe.substr(0, 2048 + 128 * 11 + 63), outcome(0, "", table + "8\n\n")},
      {pipe.substr(0, 2048 + 128 * 11 + 64), outcome(0, "", table + "9\n\n")},
  };
  for (const auto& [bytes, end] : rows) EXPECT_EQ(runExample({{"a.ft2", bytes}, {"peaks.xpk", corner}}), end);
}

}  // namespace peakbox::test
