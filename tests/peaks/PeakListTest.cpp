#include <gtest/gtest.h>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

/// The report of the example's spectrum with these lines.
std::string gives(const std::string& lines) {
  return outcome(0, "", kExampleField + exampleTable("1: a.ft2\n", lines));
}

/// The header with one text replaced.
std::string headerWith(const std::string& old, const std::string& replacement) {
  const std::string header = examplePeakHeader();
  return std::string(header).replace(header.find(old), old.size(), replacement);
}

TEST(PeakList, ReadsTheFieldsOfALine) {
  const std::string at = "\t10\t5\t58\n";
  const std::pair<PeakLine, std::string> rows[] = {
      {{.number = "0x1A", .label = "{?}"}, "26\t0x1A.tmp" + at},
      {{.number = " 010", .label = "?"}, "8\t010.tmp" + at},
      {{.number = "007", .label = "{a b}c"}, "7\ta bc" + at},
      {{.number = "99999999999", .label = "a}{}"}, "2147483647\ta" + at},
      {{.number = "-99999999999", .label = "{}"}, "-2147483648\t" + at},
      {{.number = "12abc", .label = "{\tx}"}, "12\t\tx" + at},
      {{.number = "x", .label = "}"}, "0\t" + at},
      {{.label = "\xc3\xa9\xff"}, "1\t\xc3\xa9\xff" + at},
      {{.field17 = "-1.0"}, "1\tx" + at},
      {{.field17 = "-01"}, "1\tx" + at},
      {{.ppm1 = "0xA", .width1 = "0X2", .ppm2 = "+5", .width2 = "2e"}, "1\tx" + at},
      {{.ppm1 = "1e1ppm", .ppm2 = "5.0.1"}, "1\tx" + at},
      // The area begins at point 5, but not in single precision.
      {{.ppm1 = "9.2", .width1 = "1.6", .width2 = "0"}, "1\tx\t9\t5\t58\n"},
  };
  for (const auto& [peak, written] : rows) {
    EXPECT_EQ(runExample({{"peaks.xpk", examplePeakHeader() + examplePeakLine(peak)}}), gives("  " + written))
        << peak.number << " " << peak.label << " " << peak.ppm1;
  }
  // A NUL ends a field, in a group too, and the first column behind it then stands one further.
  const std::string list = headerWith("H.P", "x H.P") + examplePeakLine({.label = std::string("{a\0b c}", 7)});
  EXPECT_EQ(runExample({{"peaks.xpk", list}}), gives("  1\ta" + at));
}

TEST(PeakList, TurnsWidthsIntoPointsByTheAxis) {
  // Half a ppm per point in dimension 1 and a quarter in dimension 2: point (5, 6) is at 5 and 1.25 ppm.
  Plane plane = examplePlane();
  plane.direct.observeMHz = 200;
  plane.indirect.observeMHz = 200;
  const std::string at = "  1\tx\t5\t1.25\t58\n";
  const std::string beside = "  1\tx\t5.5\t1.5\t58\n";
  for (const auto& [width1, width2, line] : {std::tuple{"1", "0.5", at}, {"0.9", "0.4", beside}}) {
    const std::string list =
        examplePeakHeader() + examplePeakLine({.ppm1 = "5.5", .width1 = width1, .ppm2 = "1.5", .width2 = width2});
    const std::string end = runExample({{"a.ft2", writePipe(plane)}, {"peaks.xpk", list}});
    // Away from the top every value is 1, and the box still holds the top.
    EXPECT_EQ(end, gives(line)) << width1;
  }
}

TEST(PeakList, FindsItsColumnsByName) {
  const PeakLine peak{.number = "3"};
  const std::pair<std::string, std::string> rows[] = {
      {headerWith("H.W", "n.P"), "  3\tx\t10\t5\t58\n"},
      {headerWith("flag0", "H.P"), "  3\tx\t10\t5\t58\n"},
      // The peak number stands in for a column that is missing: as a label, and as a width of 3 ppm.
      {headerWith("H.L", "H.l"), "  3\t3\t10\t5\t58\n"},
  };
  for (const auto& [header, line] : rows) {
    EXPECT_EQ(runExample({{"peaks.xpk", header + examplePeakLine(peak)}}), gives(line));
  }
  const std::string list = headerWith("H.B", "H.b") + examplePeakLine({.number = "3", .ppm1 = "11", .width1 = "0"});
  EXPECT_EQ(runExample({{"peaks.xpk", list}}), gives("  3\tx\t10\t5\t58\n"));
}

TEST(PeakList, SkipsDeletedPeaksAndLosesALineWithoutEnd) {
  const std::string header = examplePeakHeader();
  const std::string kept = "  2\tx\t10\t5\t58\n";
  const std::pair<std::string, std::string> rows[] = {
      {header + examplePeakLine({.field17 = "-1"}) + examplePeakLine({.number = "2"}), kept},
      {header + examplePeakLine({.number = "2"}) + "1 lost", kept},
      {header, ""},
      {"label\nH N\n", ""},
  };
  for (const auto& [list, lines] : rows) EXPECT_EQ(runExample({{"peaks.xpk", list}}), gives(lines)) << list;
}

TEST(PeakList, ALineWithTooFewFieldsEndsTheRunWithStatusZero) {
  const std::string header = examplePeakHeader();
  const std::tuple<std::string, int, int> rows[] = {
      {"", 0, 0},
      {"label\nH N", 0, 0},
      {"label\nH\n", 1, 1},
      {examplePeaks() + "\n", 17, 0},
      {examplePeaks() + " \t\n", 17, 0},
      {header + "1 {open 10\n", 17, 2},
      {header + "1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 7\n", 17, 17},
  };
  for (const auto& [list, index, count] : rows) {
    const std::string message =
        "Column index (" + std::to_string(index) + ") exceeds maximum (" + std::to_string(count) + ")\n";
    EXPECT_EQ(runExample({{"peaks.xpk", list}}), outcome(0, message)) << list;
  }
}

}  // namespace
}  // namespace peakbox::test
