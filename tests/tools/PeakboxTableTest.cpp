#include <gtest/gtest.h>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

std::string peak(const std::string& number, const std::string& label, const std::string& intensity = "1") {
  return "  " + number + "\t" + label + "\t8.25\t119.5\t" + intensity + "\n";
}

std::string table(int number, const std::string& parameters, const std::string& peaks) {
  return exampleTable(std::to_string(number) + ": s\n# PARAMETERS: " + parameters + "\n", peaks);
}

/// Two spectra of these parameters, in which peak A has 3 and this, and a peak of noise 0 and 100.
std::string pairOf(const std::string& one, const std::string& two, const std::string& value = "5") {
  return table(1, one, peak("1", "A", "3") + peak("2", "noise", "0")) +
         table(2, two, peak("1", "A", value) + peak("2", "noise", "100"));
}

/// peakbox-table with these arguments, where r is the report and n the file of noise. Refusals print nothing.
struct Row {
  std::string name;
  std::string report;
  std::string arguments;
  std::string err;
  std::string out = "";
  std::string noise = "1\t2.5\t1\t1\t1\t5x3\ts\n2\t.5\t1\t1\t1\t5x3\ts\n";
};

void expectRows(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(runExample({{"r", row.report},
                          {"o", "# Spectrum\tBoxNoise\tPointNoise\n"},
                          {"n", "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n" + row.noise}},
                         "peakbox-table " + row.arguments),
              outcome(row.out.empty(), row.err.empty() ? "" : "peakbox-table: " + row.err, "(no file)", row.out))
        << row.name;
  }
}

TEST(PeakboxTable, WritesOneLinePerPeak) {
  const std::string first = table(1, "0\t9", peak("7", "A", "-2.50e-05") + peak("8", "noise", "3e8"));
  const std::string second = table(2, "0.050\r", peak("7", "A", "84713.20") + peak("8", "noise", "-0"));
  const std::string lines = "# Num\tLabel\t0\t0.050\n7\tA\t-2.50e-05\t84713.20\n8\tnoise\t3e8\t-0\n";
  const std::string odd = peak("3", "a\tb\tc") + peak("-1", "", "-.5") + peak("2", "%s\\\"$");
  expectRows({
      {"all digits", kExampleField + first + second, "r", "", lines},
      {"odd", exampleTable("1: s\n", odd), "- <r", "", "# Num\tLabel\t1\n3\ta b c\t1\n-1\t\t-.5\n2\t%s\\\"$\t1\n"},
  });
}

TEST(PeakboxTable, WritesOneLineForEachPeakAndSpectrum) {
  const std::string header = "Num\tLabel\tSpectrum\tParameter1\tParameter2\tPos1\tPos2\tIntensity\tUncertainty\n";
  const std::string pos = "8.25\t119.5\t";
  const std::string ofPair = "1\tA\t1\t7\tx\t" + pos + "3\t2.5\n1\tA\t2\t8\ty\t" + pos + "5\t0.5\n2\tnoise\t1\t7\tx\t" +
                             pos + "0\t2.5\n2\tnoise\t2\t8\ty\t" + pos + "100\t0.5\n";
  expectRows({
      {"two words", pairOf("7\tx", "8\ty"), "-l -n n r", "", header + ofPair},
      {"none", exampleTable("1: s\n", peak("3", "a\tb\"", "-2.50e-05")), "-l <r", "",
       header + "3\ta b\"\t1\tnan\tnan\t" + pos + "-2.50e-05\tnan\n"},
  });
}

TEST(PeakboxTable, RefusesWhatIsNoWholeReport) {
  const std::string one = exampleTable("1: s\n", peak("1", "A"));
  const std::string cut = one.substr(0, one.size() - 1);
  const auto two = [](const std::string& peaks) { return exampleTable("2: s\n", peaks); };
  expectRows({
      {"no table", kExampleField, "<r", "standard input: no table found (did the run end early?)\n"},
      {"no empty line", cut, "r", "r: the table of spectrum 1 is incomplete (did the run end early?)\n"},
      {"four fields", cut + "  2\tB\t8\t1\n", "r", "r: line 4: not a line of a peakbox report, or one cut short\n"},
      {"a second report", one + one, "r", "r: line 5: spectrum 2 expected (more than one report?)\n"},
      {"too few", one + two(""), "r",
       "r: spectrum 2 has only 0 of the 1 peaks of spectrum 1 (did the run end early?)\n"},
      {"others", one + two(peak("1", "B")), "r", "r: line 7: spectrum 2 does not have the peaks of spectrum 1\n"},
      {"infinity", cut + peak("2", "B", "inf"), "r", "r: line 4: the intensity \"inf\" is not a finite number\n"},
  });
}

TEST(PeakboxTable, TakesUncertaintiesFromWhereItIsTold) {
  const auto one = [](int number, const std::string& parameters, const std::string& a, const std::string& b) {
    return table(number, parameters, peak("1", "A", a) + peak("2", "B", b) + peak("3", "noise", a + "000"));
  };
  // Deviations from the means of 0.1 and of x: A 3, 0, 3, and 2, 2; B 0, 0, 0, and 1, 1; 28 / 6 degrees of freedom.
  const std::string six = one(1, "0.1\t5", "13", "7") + one(2, "0.10\t5.0", "10", "7") + one(3, "1e-1\t5", "7", "7") +
                          one(4, "x\ty", "52", "3") + one(5, "5\ty", "9", "9") + one(6, "x\ty", "48", "5");
  const std::string lines = "# Num\tLabel\t7\terr(7)\t8\terr(8)\n1\tA\t3\t2.5\t5\t0.5\n2\tnoise\t0\t2.5\t100\t0.5\n";
  const std::string none = "r: -r needs spectra that repeat a parameter, and peaks other than noise in them\n";
  const std::string both = pairOf("7", "8");
  const std::string rest = "\t1\t1\t1\t5x3\ts\n";
  const std::string line = "1\t2.5" + rest;
  const std::string bad = "not a whole line of peakbox-noise\n";
  const std::string older =
      "n: this is of an older peakbox-noise, which took signal for noise; run peakbox-noise again\n";
  expectRows({
      {"noise", both, "-n n r", "", lines},
      {"noise of Windows", both, "-n n r", "", lines, "1\t2.5\t1\t1\t1\t5x3\ts\r\n2\t.5\t1\t1\t1\t5x3\ts\r\n"},
      {"a spectrum less", both, "-n n r", "n: has the noise of 1 spectra, and r has 2 spectra\n", "", line},
      {"cut", both, "-n n r", "n: line 3: " + bad, "", line + "2\t2.5\t1\t1\t1\t5x3\ts"},
      {"a noise of 0", both, "-n n r", "n: line 2: " + bad, "", "1\t0" + rest + line},
      {"no size", both, "-n n r", "n: line 2: " + bad, "", "1\t2\t1\t1\t1\t5x\ts\n" + line},
      {"two boxes", both, "-n n r", "n: line 3: the noise of another box than line 2\n", "",
       line + "2\t2.5\t1\t1\t1\t3x3\ts\n"},
      {"another spectrum", both, "-n n r", "n: line 3: the noise of t, and spectrum 2 of r is s\n", "",
       line + "2\t2.5\t1\t1\t1\t5x3\tt\n"},
      {"older", both, "-n o r", std::string("o").append(older, 1)},
      {"another file", both, "-n r r", "r: this is no file of peakbox-noise\n"},
      {"repeats", six, "-r r | cut -f 3,4,14 | head -n 2", "", "0.1\terr(0.1)\terr(x)\n13\t2.16025\t2.16025\n"},
      {"another second word", pairOf("x\ta", "x\tb"), "-r r", none},
      {"no parameters", exampleTable("1: s\n") + exampleTable("2: s\n"), "-r r", none},
      {"same", pairOf("0", "-0", "3"), "-r r",
       "r: -r finds repeats that do not differ at all: is a spectrum named twice?\n"},
  });
}

TEST(PeakboxTable, WritesFilesNamedForTheLabels) {
  const std::string none =
      "r: the files have no uncertainties: -n NOISE (of peakbox-noise) or -r (from repeats) would give them\n";
  const std::string six = peak("1", "H'") + peak("2", "H\"", "20") + peak("3", "../a b") + peak("4", "") +
                          peak("5", "-rf") + peak("6", "bgnoise");
  const std::string names = "1-H_\n2-H_\n_._a_b\n_rf\npeak-4\n# Peak 2: H\"\n# Parameter\tIntensity\n0\t20\n";
  const std::string lines = "# Peak 1: A\n# Parameter\tIntensity\tUncertainty\n-5\t3\t1.41421\n-.5e+1\t5\t1.41421\n";
  const std::string twins = table(1, "0", peak("1", "H'") + peak("1", "H\""));
  const std::string noNumber = "r: the parameter \"3-4\" of spectrum 1 is not a number, and -d needs one\n";
  expectRows({
      {"names", table(1, "0", six), "-d '-my/new' r && cd -- -my/new && LC_ALL=C ls -A && cat 2-H_", none, names},
      {"odd numbers", pairOf("-5", "-.5e+1"), "-r -d . r && cat A", "", lines},
      {"a number and more", pairOf("3-4", "5"), "-d . r", noNumber},
      {"no parameter", exampleTable(), "-d . r", "r: spectrum 1 has no parameter, and -d needs one\n"},
      {"a file on the way", pairOf("5", "5"), "-r -d r/new r", "r/new: is no folder and cannot be made one\n"},
      {"a folder for a file", pairOf("5", "5"), "2>n; mkdir A; peakbox-table -r -d . r", "./A: cannot be written\n"},
      {"twins", twins, "-d . r", "r: peaks 1 and 1 would both be written to 1-H_\n"},
  });
}

TEST(PeakboxTable, TellsItsUsage) {
  const std::string usage = "peakbox-table [-n NOISE | -r] [-l | -d DIR] [REPORT]\n";
  for (const std::string arguments : {"-e r", "r -d", "-d '' r", "r r", "-n n -r r", "r -n", "-l -d . r"}) {
    const std::string end = runExample({}, "peakbox-table " + arguments);
    EXPECT_TRUE(end.starts_with("status 2\n") && end.find("\nusage: " + usage) != std::string::npos) << end;
  }
}

}  // namespace
}  // namespace peakbox::test
