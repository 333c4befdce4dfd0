#include <gtest/gtest.h>

#include "support/ExampleRun.h"

namespace peakbox::test {

TEST(PeakList, IsReadByTheNamesOfItsColumnsOrEndsTheRunWithStatusZero) {
  const std::string header = examplePeakHeader();
  const auto with = [&](const std::string& name, const std::string& replacement) {
    return std::string(header).replace(header.find(name), name.size(), replacement);
  };
  const auto gives = [](const std::string& lines) {
    return outcome(0, "", kExampleField + exampleTable("1: a.ft2\n", lines));
  };
  const std::pair<std::string, std::string> rows[] = {
      {header + examplePeakLine("0x1A", "{?}", "10", "2", "5", "2"), gives("  26\t0x1A.tmp\t10\t5\t58\n")},
      {header + examplePeakLine(" 010", "{a b}c", "10", "2", "5", "2", "-1.0"), gives("  8\ta bc\t10\t5\t58\n")},
      {header + examplePeakLine("99999999999", "a}{}", "10", "2", "5", "2"), gives("  2147483647\ta\t10\t5\t58\n")},
      {header + examplePeakLine("12abc", "x", "0xA", "0X2", "+5", "2e"), gives("  12\tx\t10\t5\t58\n")},
      {header + examplePeakLine("1", "deleted", "10", "2", "5", "2", "-1") + "1 lost", gives("")},
      {"label\nH N\n", gives("")},
      // The area begins at point 5, but not in single precision.
      {header + examplePeakLine("x", "x", "9.2", "1.6", "5", "0"), gives("  0\tx\t9\t5\t58\n")},
      // The group holds a NUL, which ends a field all the same.
      {with("H.P", "x H.P") + examplePeakLine("1", {"{a\0b c}", 7}, "10", "2", "5", "2"), gives("  1\ta\t10\t5\t58\n")},
      {with("H.W", "n.P") + examplePeakLine("1", "x", "10", "2", "5", "2"), gives("  1\tx\t10\t5\t58\n")},
      {with("flag0", "H.P") + examplePeakLine("1", "x", "10", "2", "5", "2"), gives("  1\tx\t10\t5\t58\n")},
      // The peak number stands in for the width.
      {with("H.B", "H.b") + examplePeakLine("3", "x", "11", "0", "5", "2"), gives("  3\tx\t10\t5\t58\n")},
      {"label\nH N", outcome(0, "Column index (0) exceeds maximum (0)\n")},
      {"label\nH\n", outcome(0, "Column index (1) exceeds maximum (1)\n")},
      {examplePeaks() + "\n", outcome(0, "Column index (17) exceeds maximum (0)\n")},
      {header + "1 {open 10\n", outcome(0, "Column index (17) exceeds maximum (2)\n")},
      {header + "1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 7\n", outcome(0, "Column index (17) exceeds maximum (17)\n")},
  };
  for (const auto& [peaks, end] : rows) EXPECT_EQ(runExample({{"peaks.xpk", peaks}}), end);
}

}  // namespace peakbox::test
