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
      {exampleTable("1: s\n", kNoise), "spectrum 1 has no parameter, and -d needs one\n"},
      {exampleTable("1: s\n# PARAMETERS: 5ms\n", kNoise),
       "the parameter \"5ms\" of spectrum 1 is not a number, and -d needs one\n"},
  };
  for (const auto& [report, err] : rows) {
    EXPECT_EQ(runExample({{"r.txt", report}}, "peakbox-table -d r.txt r.txt"),
              outcome(1, "peakbox-table: r.txt: " + err));
  }
  for (const std::string arguments : {"-x r", "r -d", "-d '' r", "r r", "-e -r r", "-n n -e r", "r -n"}) {
    EXPECT_EQ(runExample({}, "peakbox-table " + arguments),
              outcome(2, "usage: peakbox-table [-e | -n NOISE | -r] [-d DIR] [REPORT]\n"));
  }
  EXPECT_EQ(runExample({{"r.txt", series(peak("1", "noise") + peak("2", "Noise"))}}, "peakbox-table -e r.txt"),
            outcome(1,
                    "peakbox-table: r.txt: an uncertainty needs at least two peaks with \"noise\" in their label, "
                    "found 1\n"));
  EXPECT_EQ(runExample({}, "peakbox-table </dev/null"),
            outcome(1, "peakbox-table: standard input: no table found" + early));
  for (const std::string report : {"nowhere", "."}) {
    EXPECT_EQ(runExample({}, "peakbox-table " + report), outcome(1, "peakbox-table: " + report + ": cannot be read\n"));
  }
}

TEST(PeakboxTable, TakesUncertaintiesFromWhereItIsTold) {
  const auto table = [](int number, const std::string& parameter, const std::string& a, const std::string& b) {
    return exampleTable(std::to_string(number) + ": s\n# PARAMETERS: " + parameter + "\n",
                        peak("1", "A", a) + peak("2", "B", b) + peak("3", "noise", std::to_string(number * 1000)));
  };
  // Deviations from the means of 0.1 and of x: A 3, 0, 3, and 2, 2; B 0, 0, 0, and 1, 1; 28 / 6 degrees of freedom.
  const std::string report = table(1, "0.1", "13", "7") + table(2, "0.10", "10", "7") + table(3, "1e-1", "7", "7") +
                             table(4, "x", "52", "3") + table(5, "5", "9", "9") + table(6, "x", "48", "5");
  const std::string noise = "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed\n1\t2.5\t1\t400\t390\n";
  const std::string wrong = "peakbox-table: n: line 2: not a line of peakbox-noise\n";
  const std::string refused =
      "peakbox-table: r: -r needs spectra that repeat a parameter, and peaks other than noise in them\n";
  const std::string none =
      "peakbox-table: r: the files have no uncertainties: -n NOISE (of peakbox-noise), -r (from repeats) or at least "
      "two peaks with \"noise\" in their label would give them\n";
  const std::tuple<std::string, std::string, std::string, std::string, std::string> rows[] = {
      {report, noise, "-r r | cut -f 2,3,4,14 | head -n 2", "",
       "Label\t0.1\terr(0.1)\terr(x)\nA\t13\t2.16025\t2.16025\n"},
      {table(1, "7", "3", "4"), noise, "-n n r | head -n 2", "", "# Num\tLabel\t7\terr(7)\n1\tA\t3\t2.5\n"},
      {table(1, "7", "3", "4"), noise, "-n n -d . r; cat A", "",
       "# Peak 1: A\n# Parameter\tIntensity\tUncertainty\n7\t3\t2.5\n"},
      {table(1, "7", "3", "4"), noise, "-d . r; cat A", none, "# Peak 1: A\n# Parameter\tIntensity\n7\t3\n"},
      {table(1, "7", "3", "4"), noise, "-r r || :", refused, ""},
      {series(kNoise) + exampleTable("2: s\n# PARAMETERS: 0\n", kNoNoise), noise, "-r r || :", refused, ""},
      {table(1, "7\ta", "3", "4") + table(2, "7\tb", "3", "4"), noise, "-r r || :", refused, ""},
      {table(1, "0", "3", "4") + table(2, "-0.0", "3", "4"), noise,
       "-r r || :", "peakbox-table: r: -r finds repeats that do not differ at all: is a spectrum named twice?\n", ""},
      {report, noise, "-n n r || :", "peakbox-table: n: has the noise of 1 spectra, and r has 6 spectra\n", ""},
      {report, noise.substr(0, 47) + "2\t2.5\t1\t400\t390\n", "-n n r || :", wrong, ""},
      {report, noise.substr(0, 47) + "1\t0\t1\t400\t390\n", "-n n r || :", wrong, ""},
      {report, noise.substr(0, 47) + "1\tnan\t1\t400\t390\n", "-n n r || :", wrong, ""},
      {report, noise, "-n r r || :", "peakbox-table: r: line 1: not a line of peakbox-noise\n", ""},
      {report, "", "-n n r || :", "peakbox-table: n: has the noise of 0 spectra, and r has 6 spectra\n", ""},
      {report, noise, "-n none r || :", "peakbox-table: none: cannot be read\n", ""},
  };
  for (const auto& [text, noiseText, arguments, err, out] : rows) {
    EXPECT_EQ(runExample({{"r", text}, {"n", noiseText}}, "peakbox-table " + arguments),
              outcome(0, err, "(no file)", out))
        << arguments;
  }
}

TEST(PeakboxTable, WritesFilesNamedForTheLabels) {
  const std::string report = series(kNoise + peak("1", "H'") + peak("2", "H\"", "20") + peak("3", "../a b") +
                                    peak("4", "") + peak("5", "-rf"));
  EXPECT_EQ(
      runExample({{"r.txt", report}},
                 "peakbox-table -d '-my/new' r.txt && cd -- -my/new && LC_ALL=C ls -A && cat 2-H_"),
      outcome(
          0, "", "(no file)",
          "1-H_\n2-H_\n_._a_b\n_rf\npeak-4\n# Peak 2: H\"\n# Parameter\tIntensity\tUncertainty\n0\t20\t3.53553e+08\n"));
  for (const std::string command : {"peakbox-table -d r.txt r.txt", "mkdir _rf; peakbox-table -d . r.txt"}) {
    EXPECT_TRUE(runExample({{"r.txt", report}}, command).starts_with("status 1\n"));
  }
  const std::pair<std::string, std::string> collisions[] = {
      {peak("1", "H'") + peak("1", "H'"), "peaks 1 and 1 would both be written to 1-H_\n"},
      {peak("7", "1-H") + peak("1", "H") + peak("2", "H"), "peaks 7 and 1 would both be written to 1-H\n"},
  };
  for (const auto& [peaks, message] : collisions) {
    EXPECT_EQ(runExample({{"r.txt", series(kNoise + peaks)}}, "peakbox-table -d . r.txt"),
              outcome(1, "peakbox-table: r.txt: " + message));
  }
}

}  // namespace peakbox::test
