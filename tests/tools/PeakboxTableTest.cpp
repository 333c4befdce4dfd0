#include <gtest/gtest.h>

#include <tuple>

#include "support/ExampleRun.h"

namespace peakbox::test {

/// A line of a report's table; the positions do not matter here.
std::string peak(const std::string& number, const std::string& label, const std::string& intensity = "1") {
  return "  " + number + "\t" + label + "\t8.25\t119.5\t" + intensity + "\n";
}

/// The table of the first spectrum, with the parameter 0.
std::string series(const std::string& peaks) { return exampleTable("1: s\n# PARAMETERS: 0\t298\n", peaks); }

// The means of the squares are 12.5e16 and 0.
const std::string kNoise = peak("8", "noise", "3e+08") + peak("8", "bgnoise", "-4e+08");
const std::string kNoNoise = peak("8", "noise", "-0") + peak("8", "bgnoise", "0");

TEST(PeakboxTable, WritesOneLinePerPeak) {
  const std::string second = exampleTable("2: s\n# PARAMETERS: 0.050\r\n", peak("7", "A", "84713.20") + kNoNoise);
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"-e r.txt", kExampleField + series(peak("7", "A", "-2.50e-05") + kNoise) + second,
       "# Num\tLabel\t0\terr(0)\t0.050\terr(0.050)\n7\tA\t-2.50e-05\t3.53553e+08\t84713.20\t0\n"
       "8\tnoise\t3e+08\t3.53553e+08\t-0\t0\n8\tbgnoise\t-4e+08\t3.53553e+08\t0\t0\n"},
      {"- <r.txt", exampleTable("1: s\n", peak("3", "a\tb\tc") + peak("1", "", "2") + peak("2", "#%s\\n\"'$x")),
       "# Num\tLabel\t1\n3\ta b c\t1\n1\t\t2\n2\t#%s\\n\"'$x\t1\n"},
      {"<r.txt", exampleTable("1: s\n", "") + exampleTable("2: s\n", ""), "# Num\tLabel\t1\t2\n"},
  };
  for (const auto& [arguments, report, out] : rows) {
    EXPECT_EQ(runExample({{"r.txt", report}}, "peakbox-table " + arguments), outcome(0, "", "(no file)", out));
  }
}

TEST(PeakboxTable, SaysWhatIsWrong) {
  const std::string one = exampleTable("1: s\n", peak("1", "A"));
  const std::string cut = one.substr(0, one.size() - 1);
  const std::string early = " (did the run end early?)\n";
  const std::string few = "an uncertainty needs at least two peaks with \"noise\" in their label, found ";
  const std::pair<std::string, std::string> rows[] = {
      {kExampleField, "no table found" + early},
      {cut, "the table of spectrum 1 is incomplete" + early},
      {cut + one, "the table of spectrum 1 is incomplete" + early},
      {one + kExampleField, "line 5: not a line of a peakbox report, or one cut short\n"},
      {cut + "  2\tB\t8.25\t1\n", "line 4: not a line of a peakbox report, or one cut short\n"},
      {one + one, "line 5: spectrum 2 expected (more than one report?)\n"},
      {one + exampleTable("2: s\n", ""), "spectrum 2 has only 0 of the 1 peaks of spectrum 1" + early},
      {one + exampleTable("2: s\n", peak("1", "B")), "line 7: spectrum 2 does not have the peaks of spectrum 1\n"},
      {series(peak("1", "A", "-nan")), "line 4: the intensity \"-nan\" is not a finite number\n"},
      {series(peak("1", "noise") + peak("2", "Noise")), few + "1\n"},
      {exampleTable("1: s\n", kNoise), "spectrum 1 has no parameter, and -d needs one\n"},
      {exampleTable("1: s\n# PARAMETERS: 5ms\n", kNoise),
       "the parameter \"5ms\" of spectrum 1 is not a number, and -d needs one\n"},
  };
  for (const auto& [report, err] : rows) {
    EXPECT_EQ(runExample({{"r.txt", report}}, "peakbox-table -d r.txt r.txt"),
              outcome(1, "peakbox-table: r.txt: " + err));
  }
  for (const std::string arguments : {"-x r", "r -d", "-d '' r", "r r"}) {
    EXPECT_EQ(runExample({}, "peakbox-table " + arguments),
              outcome(2, "usage: peakbox-table [-e] [-d DIR] [REPORT]\n"));
  }
  EXPECT_EQ(runExample({}, "peakbox-table </dev/null"),
            outcome(1, "peakbox-table: standard input: no table found" + early));
  for (const std::string report : {"nowhere", "."}) {
    EXPECT_EQ(runExample({}, "peakbox-table " + report), outcome(1, "peakbox-table: " + report + ": cannot be read\n"));
  }
}

TEST(PeakboxTable, WritesFilesNamedForTheLabels) {
  const std::string several = "peakbox-table: r.txt: several peaks would be written to H_, so peak ";
  const std::string report = series(kNoise + peak("1", "H'") + peak("2", "H\"", "20") + peak("3", "../a b") +
                                    peak("4", "") + peak("5", "-rf"));
  EXPECT_EQ(
      runExample({{"r.txt", report}},
                 "peakbox-table -d '-my/new' r.txt && cd -- -my/new && LC_ALL=C ls -A && cat H_-2"),
      outcome(
          0, several + "1 goes to H_-1\n" + several + "2 goes to H_-2\n", "(no file)",
          "H_-1\nH_-2\n_._a_b\n_rf\npeak-4\n# Peak 2: H\"\n# Parameter\tIntensity\tUncertainty\n0\t20\t3.53553e+08\n"));
  // The report's first peak is one of several, too.
  EXPECT_EQ(runExample({{"r.txt", series(peak("1", "A") + peak("2", "A") + kNoise)}},
                       "peakbox-table -d . r.txt 2>/dev/null && ls A*"),
            outcome(0, "", "(no file)", "A-1\nA-2\n"));
  for (const std::string command : {"peakbox-table -d r.txt r.txt", "mkdir _rf; peakbox-table -d . r.txt"}) {
    EXPECT_TRUE(runExample({{"r.txt", report}}, command).starts_with("status 1\n"));
  }
  EXPECT_EQ(runExample({{"r.txt", series(kNoise + peak("1", "H'") + peak("1", "H'"))}}, "peakbox-table -d . r.txt"),
            outcome(1, several + "1 goes to H_-1\n" + several +
                           "1 goes to H_-1\npeakbox-table: r.txt: peaks 1 and 1 would both be written to H_-1\n"));
}

}  // namespace peakbox::test
