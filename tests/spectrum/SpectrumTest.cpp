#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Files = std::map<std::string, std::string>;

const std::string kNotice = "Correcting data for apparent byte-swap.\n";
const std::string kNotTwoDimensional = "ERROR: Spectrum is not two dimentional.\n";

std::string write(bool isView, const Plane& plane) { return isView ? writeView(plane) : writePipe(plane); }

/// `bytes` with another word at `offset`.
std::string with(std::string bytes, std::size_t offset, auto word) {
  putWord(bytes, offset, std::bit_cast<std::uint32_t>(word), false);
  return bytes;
}

std::string withPipeWord(const std::string& bytes, std::size_t word, auto value) {
  return with(bytes, 4 * word, value);
}

/// A peak on each given point of a plane whose points are one ppm apart and whose last one lies at 0 ppm.
std::string peaksAt(const Plane& plane, const std::vector<std::pair<int, int>>& points) {
  std::string list = examplePeakHeader();
  for (const auto& [i, j] : points) {
    list += examplePeakLine({.ppm1 = std::to_string(plane.direct.size - 1 - i),
                             .width1 = "0",
                             .ppm2 = std::to_string(plane.indirect.size - 1 - j),
                             .width2 = "0"});
  }
  return list;
}

/// The report on these points, each measured alone.
std::string reportOn(const Plane& plane, const std::vector<std::pair<int, int>>& points,
                     const std::string& head = "1: a\n") {
  std::string lines;
  for (const auto& [i, j] : points) {
    lines += "  1\tx\t" + std::to_string(plane.direct.size - 1 - i) + "\t" +
             std::to_string(plane.indirect.size - 1 - j) + "\t" + std::to_string(std::lround(plane.value(i, j))) + "\n";
  }
  return exampleTable(head, lines);
}

TEST(Spectrum, GivesEveryValueFromEveryLayoutInASeries) {
  struct Layout {
    int tile1;
    int tile2;
    float flag1;
    float flag2;
  };
  Plane plane{.direct = {.size = 7, .observeMHz = 100, .sweepWidthHz = 700},
              .indirect = {.size = 5, .observeMHz = 50, .sweepWidthHz = 250},
              .value = [](int i, int j) { return static_cast<float>(10 * i + j + 1); }};
  std::vector<std::pair<int, int>> points;
  for (int k = 0; k < 35; ++k) points.emplace_back(k % 7, k / 7);
  for (const bool isView : {false, true}) {
    Files files{{"peaks.xpk", peaksAt(plane, points)}, {"run.par", "TOLERANCE 0 0\nBOXSIZE 0\nPEAKLIST peaks.xpk\n"}};
    std::string report;
    int number = 0;
    for (const Layout& layout :
         {Layout{1, 1, 0, 0}, {3, 2, 0, 1}, {7, 5, 1, 0}, {7, 1, 1, 1}, {9, 8, 1, -1}, {2, 30, 2, 3}}) {
      for (const bool swapped : {false, true}) {
        plane.direct.tile = layout.tile1;
        plane.indirect.tile = layout.tile2;
        plane.direct.quadFlag = layout.flag1;
        plane.indirect.quadFlag = layout.flag2;
        plane.swapped = swapped;
        const std::string name = std::string("a").append(std::to_string(++number));
        files[name] = write(isView, plane);
        files["run.par"] += "SPECTRUM " + name + "\n";
        report += reportOn(plane, points, std::to_string(number) + ": " + name + "\n");
      }
    }
    const std::string notices = kNotice + kNotice + kNotice + kNotice + kNotice + kNotice;
    EXPECT_EQ(runExample(files), outcome(0, notices, report)) << "NMRView " << isView;
  }
}

TEST(Spectrum, MayHaveRowsAndTilesThatBuffersEndIn) {
  const auto value = [](int i, int j) { return static_cast<float>(i % 1000 + 1000 * j + 1); };
  const Plane wide{.direct = {.size = 90000, .observeMHz = 100, .sweepWidthHz = 9000000, .tile = 300000, .quadFlag = 0},
                   .indirect = {.size = 3, .observeMHz = 50, .sweepWidthHz = 150, .tile = 2, .quadFlag = 0},
                   .value = value};
  const Plane tiled{.direct = {.size = 700, .observeMHz = 100, .sweepWidthHz = 70000, .tile = 60},
                    .indirect = {.size = 500, .observeMHz = 50, .sweepWidthHz = 25000, .tile = 50},
                    .value = value};
  std::vector<std::pair<int, int>> everywhere;
  for (int k = 0; k < 3500; ++k) everywhere.emplace_back(k % 70 * 10 + k / 70 % 10, k / 70 * 10 + k % 7);
  const std::vector<std::pair<int, int>> ends{{0, 0}, {41071, 0}, {65535, 0}, {65536, 1}, {89999, 1}, {89999, 2}};
  const std::tuple<std::string, Plane, bool, std::vector<std::pair<int, int>>> rows[] = {
      {"long rows", wide, false, ends}, {"long tiles", wide, true, ends}, {"many tiles", tiled, true, everywhere}};
  for (const auto& [name, plane, isView, points] : rows) {
    EXPECT_EQ(runExample({{"a", write(isView, plane)},
                          {"peaks.xpk", peaksAt(plane, points)},
                          {"run.par", "BOXSIZE 0\nPEAKLIST peaks.xpk\nSPECTRUM a\n"}}),
              outcome(0, "", reportOn(plane, points)))
        << name;
  }
}

TEST(Spectrum, IsShownByAVerboseRun) {
  const std::string labels[] = {"1H" + std::string(14, '\0'), "15N" + std::string(13, '\0')};
  for (const bool isView : {false, true}) {
    Plane plane = examplePlane();
    plane.swapped = true;
    plane.direct.sweepWidthHz = 1.0e8f;
    const std::string label1 = isView ? labels[0] + "\t\t" : "";
    const std::string label2 = isView ? labels[1] + "\t\t" : "";
    const std::string axes = std::string("Dim\t\t") + (isView ? "Nuc\t\t" : "") + "Size\t\tObs\t\t1pt\n1\t\t" + label1 +
                             "16pt\t\t100MHz\t6.25e+06Hz\n2\t\t" + label2 + "12pt\t\t50MHz\t50Hz\n\n";
    const std::string out = std::string("Box size = 3 x 3\n\n") + (isView ? "NMRView" : "NMRPipe") +
                            " format\n0 peaks found\n\nSpectrum = a.ft2\n";
    EXPECT_EQ(runExample({{"a.ft2", write(isView, plane)}, {"peaks.xpk", examplePeakHeader()}},
                         "peakbox -v -i run.par -o report"),
              outcome(0, kNotice + axes + kNotice, kExampleField + exampleTable("1: a.ft2\n", ""), out));
  }
}

TEST(Spectrum, ABadHeaderHasItsMessage) {
  const std::string pipe = writePipe(examplePlane());
  const std::string view = writeView(examplePlane());
  const std::pair<std::string, std::string> rows[] = {
      {"abc", "Unable to read a.ft2\n"},
      {"\1abc", "unrecognized format\n"},
      {pipe.substr(0, 2047), "Error reading file header\n"},
      {view.substr(0, 2047), "Error reading file header\n"},
      {withPipeWord(pipe, 9, 3.0f), kNotTwoDimensional},
      {withPipeWord(pipe, 219, -1e30f), "ERROR: Dimension 2 has no data points (-2147483648).\n"},
      {with(view, 24, 3), kNotTwoDimensional},
      {with(view, 1064, 2), "ERROR: Unknown unit.\n"},
      {with(view, 1192, 0), "ERROR: Unknown unit.\n"},
      {with(view, 1024, -5), "ERROR: Dimension 1 has no data points (-5).\n"},
      {with(view, 1028, 0), "ERROR: Dimension 1 has an invalid tile size (0).\n"},
      {with(view, 1156, -1), "ERROR: Dimension 2 has an invalid tile size (-1).\n"},
  };
  for (const auto& [bytes, message] : rows) EXPECT_EQ(runExample({{"a.ft2", bytes}}), outcome(1, message));
}

TEST(Spectrum, AnNMRPipeFileHasTheByteOrderInWhichItMakesSense) {
  const std::string pipe = writePipe(examplePlane());
  const std::string swapped = kNotice + kNotTwoDimensional;
  // Taken the other way round, the number of dimensions is none.
  const std::pair<std::string, std::string> rows[] = {
      {withPipeWord(pipe, 119, 0.5f), swapped},
      {withPipeWord(pipe, 119, -5000.5f), swapped},
      {withPipeWord(pipe, 119, INFINITY), swapped},
      {withPipeWord(pipe, 99, 0.5f), swapped},
      {withPipeWord(pipe, 99, 100001.0f), swapped},
      {withPipeWord(pipe, 99, NAN), swapped},
      // 1.00001, reversed 2.00783, and 790.004, reversed 1026.16.
      {withPipeWord(withPipeWord(pipe, 99, 0x3f800040), 119, 0x44458044), "ERROR: Unkonwn file format.\n"},
  };
  for (const auto& [bytes, message] : rows) EXPECT_EQ(runExample({{"a.ft2", bytes}}), outcome(1, message));

  const std::string noPeaks = kExampleField + exampleTable("1: a.ft2\n", "");
  for (const float mhz : {1.0f, 5000.0f, -5000.0f, NAN}) {
    const std::string bytes = withPipeWord(pipe, 119, mhz);
    EXPECT_EQ(runExample({{"a.ft2", bytes}, {"peaks.xpk", examplePeakHeader()}}), outcome(0, "", noPeaks)) << mhz;
  }
  const std::string wide = withPipeWord(withPipeWord(pipe, 99, 100000.0f), 219, 1.0f) + std::string(400000, '\0');
  EXPECT_EQ(runExample({{"a.ft2", wide}, {"peaks.xpk", examplePeakHeader()}}), outcome(0, "", noPeaks));
  // Whole numbers are truncated.
  const std::string broken = withPipeWord(withPipeWord(pipe, 9, 2.9f), 219, 12.9f);
  EXPECT_EQ(runExample({{"a.ft2", broken}}), outcome(0, "", kExampleField + exampleTable()));
}

TEST(Spectrum, AShortFileEndsTheRunWhereItIsNoticed) {
  Plane plane = examplePlane();
  plane.direct.quadFlag = 0;  // One more value per point: a row has 64 bytes of values and 64 that are passed over.
  const std::string pipe = writePipe(plane);
  const std::string view = writeView(plane);
  const std::string ended = "Error reading file @ point (";
  const std::pair<std::string, std::string> rows[] = {
      {pipe.substr(0, 2048), ended + "1,0\n"},
      {pipe.substr(0, 2048 + 4 * 3 + 2), ended + "4,0\n"},
      {pipe.substr(0, 2048 + 128 * 2 + 4 * 14 + 3), ended + "15,2\n"},
      {pipe.substr(0, 2048 + 128 * 2 + 4 * 15 + 3), ended + "0,3\n"},
      {pipe.substr(0, 2048 + 128 * 4 + 127), ended + "0,5\n"},
      {pipe.substr(0, 2048 + 128 * 5), ended + "1,5\n"},
      {pipe.substr(0, 2048 + 128 * 11 + 4 * 14), ended + "15,11\n"},
      {view.substr(0, 2048), "Error reading file\n"},
      {view.substr(0, view.size() - 1), "Error reading file\n"},
  };
  for (const auto& [bytes, message] : rows) {
    EXPECT_EQ(runExample({{"a.ft2", bytes}}), outcome(1, message, "")) << bytes.size();
    // The same from a pipe, which tells its length only when it has been read.
    const std::string first = bytes.starts_with('\0') ? pipe : view;
    EXPECT_EQ(runExample({{"a.ft2", first}, {"bytes", bytes}, {"run.par", exampleParameters() + "SPECTRUM b\n"}},
                         "sh -c 'mkfifo b; cat bytes >b & peakbox -i run.par -o report'"),
              outcome(1, message, kExampleField + exampleTable()))
        << bytes.size();
  }
}

TEST(Spectrum, OnlyTheLastRowOfAnNMRPipeFileMayLackItsEnd) {
  Plane plane = examplePlane();
  plane.direct.quadFlag = 0;
  const std::string whole = writePipe(plane);
  const std::size_t lastRow = 2048 + 128 * 11;
  // The box of 3 x 3 points on (14, 10) has the last point in its corner, and every value is 1.
  const std::string corner =
      examplePeakHeader() + examplePeakLine({.ppm1 = "1", .width1 = "0", .ppm2 = "1", .width2 = "0"});
  for (const auto& [length, sum] : {std::pair{lastRow + 60, "8"}, {lastRow + 63, "8"}, {lastRow + 64, "9"}}) {
    const std::string table = "  1\tx\t1\t1\t" + std::string(sum) + "\n";
    // What is missing counts as 0 even where the spectrum before had a value.
    EXPECT_EQ(
        runExample({{"peaks.xpk", corner},
                    {"a.ft2", whole},
                    {"b", whole.substr(0, length)},
                    {"run.par", exampleParameters() + "SPECTRUM b\nTOLERANCE 0 0\n"}}),
        outcome(0, "", kExampleField + exampleTable("1: a.ft2\n", "  1\tx\t1\t1\t9\n") + exampleTable("2: b\n", table)))
        << length;
  }
}

TEST(Spectrum, MayHaveNoPoints) {
  const std::string pipe = writePipe(examplePlane());
  const std::string view = writeView(examplePlane());
  const std::tuple<std::string, std::string, int> rows[] = {
      {"NMRPipe", withPipeWord(pipe, 219, 0.0f), 2},
      {"no number", withPipeWord(pipe, 219, NAN), 2},
      {"NMRView", with(view, 1152, 0), 2},
      {"rows without end", with(with(view, 1024, 0), 1152, 0x7fffffff), 1},
  };
  for (const auto& [name, bytes, dimension] : rows) {
    EXPECT_EQ(
        runExample({{"a.ft2", bytes}, {"peaks.xpk", examplePeakHeader()}}, "timeout 5 peakbox -i run.par -o report"),
        outcome(0, "", kExampleField + exampleTable("1: a.ft2\n", "")))
        << name;
    const std::string noPlace = "ERROR: Peak 0 has no valid position in dimension " + std::to_string(dimension) + ".\n";
    EXPECT_EQ(runExample({{"a.ft2", bytes}}), outcome(1, noPlace)) << name;
  }
}

TEST(Spectrum, APlaneThatIsTooLargeIsRefused) {
  std::string bytes = withPipeWord(withPipeWord(writePipe(examplePlane()), 99, 100000.0f), 219, 2147483648.0f);
  const std::string end = runExample({{"a.ft2", bytes}});
  EXPECT_TRUE(end.starts_with("status 1\n")) << end;
  EXPECT_NE(end.find("ERROR: Not enough memory for a data plane of 100000 x 2147483647 points.\n"), std::string::npos)
      << end;
}

}  // namespace
}  // namespace peakbox::test
