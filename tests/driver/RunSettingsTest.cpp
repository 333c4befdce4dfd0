#include <gtest/gtest.h>

#include <tuple>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

TEST(RunSettings, EachFaultOfTheCommandLineAndTheParameterFileHasItsMessage) {
  const std::string usage =
      "valid parameters:\n  -i INPUT FILE\n  -o OUTPUT FILE\n  -v       verbose mode\n  -abs     absolute intensity\n";
  const std::string run = "-v -i run.par";
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"", "", usage},
      {"-o report -i", "", "ERROR: No input file specified\n" + usage},
      {"-i run.par -o", "", "ERROR: No output file specified\n" + usage},
      {"-abs2", "", "ERROR: Parameter '-abs2' not understood.\n" + usage},
      {"-v", "", "ERROR: Unable to open ''\n"},
      {"-i -v", "", "ERROR: Unable to open '-v'\n"},
      {run, "# SPECTRUM a\n , \t\n", "ERROR: No SPECTRUM specified.\n"},
      {run, "SPECTRUM a\n", "ERROR: No BOXSIZE specified.\n"},
      {run, "SPECTRUM a\nBOXSIZE\n", "ERROR(line #2): No BOXSIZE specified.\n"},
      {run, "\n#\n Fields 600\n", "ERROR (line 3): 'Fields' not recognized.\n"},
      {run, "field\n", "ERROR(line #1): No FIELD specified.\n"},
      {run, "BOXSIZE", "ERROR(line #1): No BOXSIZE specified.\n"},
      {run, "BOXSIZE -3 4\n", "ERROR(line #1): Negative BOXSIZE (-3).\n"},
      {run, "BOXSIZE 3 -99999999999\n", "ERROR(line #1): Negative BOXSIZE (-2147483648).\n"},
      {run, "PEAKLIST ,\n", "ERROR(line #1): No PEAKLIST specified.\n"},
      {run, "TOLERANCE 1\n", "ERROR(line #1): Insufficent parameters.\n"},
      {run, "SPECTRUM\n", "ERROR(line #1): No SPECTRUM specified.\n"},
      {run, "SPECTRUM\r\n", "ERROR (line 1): 'SPECTRUM\r' not recognized.\n"},
      {run, "SPECTRUM a 1\nSPECTRUM b\n", "ERROR(line #2): Insufficent parameters.\n"},
      {run, "SPECTRUM a 1\nSPECTRUM b 1 2\n", "ERROR(line #2): Insufficent parameters.\n"},
      {run, "SPECTRUM a \"\n", "ERROR(line #1): No previous parameter to repeat.\n"},
  };
  for (const auto& [arguments, text, err] : rows) {
    EXPECT_EQ(runExample({{"run.par", text}}, "peakbox " + arguments), outcome(1, err));
  }
}

TEST(RunSettings, AVerboseRunShowsTheBoxAfterTheWholeParameterFile) {
  const std::pair<std::string, std::string> rows[] = {
      {"5 7 9", "11 x 11"}, {"010 7.9x", "17 x 15"}, {"2147483647", "-1 x -1"}};
  for (const auto& [values, box] : rows) {
    EXPECT_EQ(runExample({{"run.par", "BOXSIZE " + values + "\nSPECTRUM none"}}, "peakbox -v -i run.par"),
              outcome(1, "ERROR: Unable to open 'none'\n", "(no file)", "Box size = " + box + "\n\n"));
  }
}

}  // namespace
}  // namespace peakbox::test
