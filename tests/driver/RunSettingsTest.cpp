#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "driver/RunSettings.h"
#include "driver/TextNumbers.h"
#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

const std::string kUsage =
    "valid parameters:\n  -i INPUT FILE\n  -o OUTPUT FILE\n  -v       verbose mode\n  -abs     absolute intensity\n";

TEST(CommandLine, EachFaultHasItsMessageAndStatusOne) {
  const std::string notUnderstood = "' not understood.\n" + kUsage;
  const struct {
    const char* arguments;
    std::string err;
  } rows[] = {
      {"", kUsage},
      {"-o report -i", "ERROR: No input file specified\n" + kUsage},
      {"-o", "ERROR: No output file specified\n" + kUsage},
      {"run.par", "ERROR: Parameter 'run.par" + notUnderstood},
      {"-V", "ERROR: Parameter '-V" + notUnderstood},
      {"-abs2", "ERROR: Parameter '-abs2" + notUnderstood},
      {"''", "ERROR: Parameter '" + notUnderstood},
      {"-v", "ERROR: Unable to open ''\n"},
      {"-i -v", "ERROR: Unable to open '-v'\n"},
  };
  const ScratchFolder folder;
  for (const auto& row : rows) {
    const Outcome outcome = folder.run("peakbox " + std::string(row.arguments));
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_EQ(outcome.out, "") << row.arguments;
    EXPECT_EQ(outcome.err, row.err) << row.arguments;
  }
}

TEST(ParameterFile, EachFaultHasItsMessageAndStatusOne) {
  const struct {
    std::string text;
    std::string err;
  } rows[] = {
      {"", "ERROR: No SPECTRUM specified.\n"},
      {"# SPECTRUM a\n , \t\n", "ERROR: No SPECTRUM specified.\n"},
      {"SPECTRUM a\n", "ERROR: No BOXSIZE specified.\n"},
      {"\n#\n Fields 600\n", "ERROR (line 3): 'Fields' not recognized.\n"},
      {"field\n", "ERROR(line #1): No FIELD specified.\n"},
      {"BOXSIZE", "ERROR(line #1): No BOXSIZE specified.\n"},
      {"BOXSIZE -3 4\n", "ERROR(line #1): Negative BOXSIZE (-3).\n"},
      {"BOXSIZE 3 -4\n", "ERROR(line #1): Negative BOXSIZE (-4).\n"},
      {"BOXSIZE -99999999999\n", "ERROR(line #1): Negative BOXSIZE (-2147483648).\n"},
      {"PEAKLIST ,\n", "ERROR(line #1): No PEAKLIST specified.\n"},
      {"TOLERANCE 1\n", "ERROR(line #1): Insufficent parameters.\n"},
      {"SPECTRUM\n", "ERROR(line #1): No SPECTRUM specified.\n"},
      {"SPECTRUM\r\n", "ERROR (line 1): 'SPECTRUM\r' not recognized.\n"},
      {"SPECTRUM a 1\nSPECTRUM b\n", "ERROR(line #2): Insufficent parameters.\n"},
      {"SPECTRUM a 1\nSPECTRUM b 1 2\n", "ERROR(line #2): Insufficent parameters.\n"},
      {"SPECTRUM a \"\n", "ERROR(line #1): No previous parameter to repeat.\n"},
      {"SPECTRUM a 1\nSPECTRUM b\n", "ERROR(line #2): Insufficent parameters.\n"},
  };
  const ScratchFolder folder;
  for (const auto& row : rows) {
    folder.write("run.par", row.text);
    const Outcome outcome = folder.run("peakbox -v -i run.par -o report");
    EXPECT_EQ(outcome.status, 1) << row.text;
    EXPECT_EQ(outcome.out, "") << row.text;
    EXPECT_EQ(outcome.err, row.err) << row.text;
    EXPECT_EQ(folder.read("report"), "(no file)") << row.text;
  }
}

/// The settings after reading `text` as parameter file.
RunSettings readSettings(const std::string& text) {
  const ScratchFolder folder;
  folder.write("run.par", text);
  const std::string path = folder.path() / "run.par";
  const char* const arguments[] = {"peakbox", "-o", "first", "-i", path.c_str(), "-o", "second"};
  RunSettings settings;
  EXPECT_FALSE(settings.parseArguments(7, arguments));
  return settings;
}

TEST(ParameterFile, KeepsTheLastOfRepeatedLinesAndEverySpectrum) {
  const RunSettings settings = readSettings(
      "BOXSIZE 9\nPEAKLIST x y\nTOLERANCE 1 2\nSPECTRUM a 1\nPeakList p.xpk\r\ntolerance 0x10,abc\nSPECTRUM b \"");
  EXPECT_STREQ(settings.getOutputFile(), "second");
  EXPECT_STREQ(settings.getPeakListFile(), "p.xpk\r");
  EXPECT_EQ(settings.getTolerance1(), 16.0);
  EXPECT_EQ(settings.getTolerance2(), 0.0);
  ASSERT_EQ(settings.getSpectrumCount(), 2);
  EXPECT_STREQ(settings.getSpectrumFile(1), "b");
  std::ostringstream header;
  settings.writeSpectrumHeader(1, header);
  settings.writeParametersHeader(1, header);
  EXPECT_EQ(header.str(), "# SPECTRUM 2: b\n# PARAMETERS: 1\n");
}

TEST(ParameterFile, ReadsHalfWidthsInAnyBaseAndTakesTheSecondOnlyFromThreeTokens) {
  const struct {
    const char* values;
    int first, second;
  } rows[] = {{"5", 5, 5}, {"5 7", 5, 7}, {"5 7 9", 5, 5}, {"010 0x0A", 8, 10}, {"5.9 x", 5, 0}};
  for (const auto& row : rows) {
    const RunSettings settings = readSettings("SPECTRUM a\nBOXSIZE " + std::string(row.values) + "\n");
    EXPECT_EQ(settings.getBoxSize(0), row.first) << row.values;
    EXPECT_EQ(settings.getBoxSize(1), row.second) << row.values;
    EXPECT_EQ(settings.getTolerance1(), 10.0);
  }
}

TEST(TextNumbers, RealsAreReadAsStrtodReadsThem) {
  for (const char* text : {"8.525",
                           "-.5e1x",
                           "+3",
                           " 4",
                           "\t-7",
                           "0x1p4",
                           "-0X10",
                           "1e",
                           "1e+",
                           "1e400",
                           "-1e400",
                           "1e-400",
                           "4.9e-324",
                           "inf",
                           "-INFINITY",
                           "infx",
                           "nan(1)",
                           "-nan",
                           "",
                           "-",
                           ".",
                           "e5",
                           "0x",
                           "00012",
                           "179769313486231580793e289",
                           "120.123456789"}) {
    const double expected = std::strtod(text, nullptr);
    const double value = textToReal(text);
    EXPECT_TRUE(value == expected || (value != value && expected != expected)) << text << " gave " << value;
    EXPECT_EQ(std::signbit(value), std::signbit(expected)) << text;
  }
}

}  // namespace
}  // namespace peakbox::test
