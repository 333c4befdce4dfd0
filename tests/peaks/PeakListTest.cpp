#include <gtest/gtest.h>

#include <sstream>

#include "peaks/LineSplitter.h"
#include "peaks/PeakList.h"
#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

TEST(LineSplitter, CutsLinesAtBlanksAndTabsOutsideBraces) {
  const struct {
    std::string line;
    std::vector<std::string> fields;
  } rows[] = {
      {"a\t  b ", {"a", "b"}},
      {"  a", {"a"}},
      {" \t ", {}},
      {"", {}},
      {"12 {1.HN 2.N} 8.5", {"12", "{1.HN 2.N}", "8.5"}},
      {"a{b c}d {e f", {"a{b c}d", "{e f"}},
      {"a} b", {"a}", "b"}},
      {"{a {b} c}", {"{a {b}", "c}"}},
      {std::string("a\0b {c\0d e} f", 13), {"a", "b", "{c", "d e}", "f"}},
      {"a\r", {"a\r"}},
  };
  for (const auto& row : rows) {
    std::istringstream stream(row.line + "\n");
    LineSplitter splitter;
    ASSERT_TRUE(splitter.readLine(stream));
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
      EXPECT_EQ(splitter.getField(static_cast<int>(i)), row.fields[i]) << row.line;
    }
    const std::string count = std::to_string(row.fields.size());
    EXPECT_EXIT(splitter.getField(static_cast<int>(row.fields.size())), testing::ExitedWithCode(0),
                "Column index \\(" + count + "\\) exceeds maximum \\(" + count + "\\)\n");
  }
}

TEST(LineSplitter, ConvertsNumbersAndFindsNames) {
  std::istringstream stream("0x1A 010 12abc abc 0.1 99999999999 H.P h.p H.P\nlast");
  LineSplitter splitter;
  ASSERT_TRUE(splitter.readLine(stream));
  EXPECT_EQ(splitter.getFieldAsInt(0), 26);
  EXPECT_EQ(splitter.getFieldAsInt(1), 8);
  EXPECT_EQ(splitter.getFieldAsInt(2), 12);
  EXPECT_EQ(splitter.getFieldAsInt(3), 0);
  EXPECT_EQ(splitter.getFieldAsFloat(4), 0.1f);
  EXPECT_EQ(splitter.getFieldAsInt(5), 2147483647);
  EXPECT_EQ(splitter.findField("H.P"), 6);
  EXPECT_EQ(splitter.findField("H.p"), -1);
  EXPECT_FALSE(splitter.readLine(stream)) << "a last line without a line feed is lost";
  EXPECT_EQ(splitter.findField("last"), -1);
}

class PeakLists : public testing::Test {
 protected:
  PeakLists() { writeExample(folder); }

  Outcome runWith(const std::string& peaks) {
    folder.write("peaks.xpk", peaks);
    return folder.run("peakbox -v -i run.par -o report");
  }

  ScratchFolder folder;
};

TEST_F(PeakLists, ALineWithTooFewFieldsEndsTheRunWithStatusZeroAndNoReport) {
  const std::string header = examplePeakHeader();
  const struct {
    std::string text;
    std::string err;
  } rows[] = {
      {"", "Column index (0) exceeds maximum (0)\n"},
      {"label\nH N", "Column index (0) exceeds maximum (0)\n"},
      {"label\nH\n", "Column index (1) exceeds maximum (1)\n"},
      {header + "\n", "Column index (17) exceeds maximum (0)\n"},
      {examplePeaks() + "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17\n", "Column index (17) exceeds maximum (17)\n"},
      {"l\nA B\n\n\n\nx x x x x x x x x x x x x x x x x x x x A.P\n" + examplePeakLine("1", "a", "1", "1", "1", "1"),
       "Column index (21) exceeds maximum (20)\n"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = runWith(row.text);
    EXPECT_EQ(outcome.status, 0) << row.text;
    EXPECT_EQ(outcome.out, "Box size = 3 x 3\n\nNMRPipe format\n") << row.text;
    EXPECT_EQ(outcome.err.substr(outcome.err.find("\n\n") + 2), row.err) << row.text;
    EXPECT_EQ(folder.read("report"), "(no file)");
  }
}

TEST_F(PeakLists, WithoutDataLinesTheyGiveAnEmptyTable) {
  for (const std::string& text : {examplePeakHeader(), std::string("label\nH N\n"), examplePeakHeader() + "1 lost"}) {
    const Outcome outcome = runWith(text);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "Box size = 3 x 3\n\nNMRPipe format\n0 peaks found\n\nSpectrum = a.ft2\n");
    EXPECT_EQ(folder.read("report"), "# FIELD(MHz): 600.13\n#\n# SPECTRUM 1: a.ft2\n# Num\tLabel\tPos1\tPos2\tInt\n\n");
  }
}

TEST_F(PeakLists, AreReadAsWritten) {
  folder.write("peaks.xpk", examplePeakHeader() + examplePeakLine("007", "{?}", "10", "2", "5", "3") +
                                examplePeakLine("8", "gone", "10", "2", "5", "2", "-1") +
                                examplePeakLine("010", "{a {b} c}", "0.1", "-2", "11", "2", "-1.0"));
  Spectrum spectrum;
  spectrum.readHeader((folder.path() / "a.ft2").c_str(), false);
  PeakList peaks;
  EXPECT_EQ(peaks.read((folder.path() / "peaks.xpk").c_str(), spectrum, false), 2u);
  EXPECT_EQ(peaks.getNumber(0), 7);
  EXPECT_EQ(peaks.getLabel(0), "007.tmp");
  EXPECT_EQ(peaks.getPosition(0, 0), 5.0);
  EXPECT_EQ(peaks.getPosition(0, 1), 6.0);
  EXPECT_EQ(peaks.getBoundsWidth(0, 0), 2.0);
  EXPECT_EQ(peaks.getBoundsWidth(0, 1), 3.0);
}

TEST_F(PeakLists, AMissingColumnReadsThePeakNumber) {
  std::string text = examplePeaks();
  text.replace(text.find("H.B"), 3, "H.b");
  folder.write("peaks.xpk", text);
  Spectrum spectrum;
  spectrum.readHeader((folder.path() / "a.ft2").c_str(), false);
  PeakList peaks;
  peaks.read((folder.path() / "peaks.xpk").c_str(), spectrum, false);
  EXPECT_EQ(peaks.getBoundsWidth(1, 0), 2.0);
  EXPECT_EQ(peaks.getPosition(1, 0), 15.0 - double{5.2f}) << "rounded to single precision";
}

}  // namespace
}  // namespace peakbox::test
