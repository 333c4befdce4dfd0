#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>

#include "support/Process.h"

namespace peakbox::test {
namespace {

const std::string kColumns = "# Num\tLabel\tPos1\tPos2\tInt\n";

/// A line of a report's table; the positions do not matter here.
std::string peak(const std::string& number, const std::string& label, const std::string& intensity) {
  return "  " + number + "\t" + label + "\t8.25\t119.5\t" + intensity + "\n";
}

/// The table of spectrum `number`; `parameters` is empty or the text behind "# PARAMETERS: ".
std::string table(int number, const std::string& parameters, const std::string& peaks) {
  const std::string line = parameters.empty() ? "" : "# PARAMETERS: " + parameters + "\n";
  return "# SPECTRUM " + std::to_string(number) + ": s.dat\n" + line + kColumns + peaks + "\n";
}

const std::string kField = "# FIELD(MHz): 600.13\n#\n";
const std::string kOneSpectrum = table(1, "", peak("1", "A12", "100"));
// The squares of the noise have the means (9 + 16) / 2 = 12.5 and (1 + 4) / 2 = 2.5.
const std::string kSeries =
    kField +
    table(1, "0.0\t298", peak("7", "A12", "1.52e+06") + peak("8", "noise1", "3") + peak("9", "bgnoise", "-4")) +
    table(2, "0.050\t298", peak("7", "A12", "-84713.2") + peak("8", "noise1", "-1") + peak("9", "bgnoise", "2"));
const std::string kUsage = "usage: peakbox-table [-e] [-d DIR] [REPORT]\n";
const std::string kNoLine = "not a line of a peakbox report, or one cut short\n";

/// A series whose noise peaks give the uncertainty 5, with `peaks` before them and one spectrum of parameter 0.
std::string withNoise(const std::string& peaks) {
  return table(1, "0", peaks + peak("98", "noise", "5") + peak("99", "noise", "-5"));
}

struct Row {
  std::string name;
  std::string report;
  std::string arguments;
  int status;
  std::string out;
  std::string err;  ///< what follows "peakbox-table: ", or the usage line
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

class PeakboxTable : public testing::TestWithParam<Row> {};

TEST_P(PeakboxTable, WritesTheTableOrSaysWhatIsWrong) {
  const Row& row = GetParam();
  const ScratchFolder folder;
  folder.write("r.txt", row.report);

  const Outcome outcome = folder.run("peakbox-table " + row.arguments);

  EXPECT_EQ(outcome.status, row.status);
  EXPECT_EQ(outcome.out, row.out);
  EXPECT_EQ(outcome.err, row.err.empty() || row.err == kUsage ? row.err : "peakbox-table: " + row.err);
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "curves"));
}

const Row kRows[] = {
    {"FirstParameterNamesTheColumn", kSeries, "r.txt", 0,
     "# Num\tLabel\t0.0\t0.050\n7\tA12\t1.52e+06\t-84713.2\n8\tnoise1\t3\t-1\n9\tbgnoise\t-4\t2\n", ""},
    {"EachColumnHasItsUncertainty", kSeries, "-e r.txt", 0,
     "# Num\tLabel\t0.0\terr(0.0)\t0.050\terr(0.050)\n"
     "7\tA12\t1.52e+06\t3.53553\t-84713.2\t1.58114\n"
     "8\tnoise1\t3\t3.53553\t-1\t1.58114\n"
     "9\tbgnoise\t-4\t3.53553\t2\t1.58114\n",
     ""},
    {"UncertaintiesOfAnySize",
     table(1, "", peak("1", "noise", "3e+08") + peak("2", "noise", "4e+08")) +
         table(2, "", peak("1", "noise", "0") + peak("2", "noise", "-0")),
     "-e r.txt", 0,
     "# Num\tLabel\t1\terr(1)\t2\terr(2)\n"
     "1\tnoise\t3e+08\t3.53553e+08\t0\t0\n"
     "2\tnoise\t4e+08\t3.53553e+08\t-0\t0\n",
     ""},
    {"StandardInput", kOneSpectrum, "<r.txt", 0, "# Num\tLabel\t1\n1\tA12\t100\n", ""},
    {"DashIsStandardInput", kOneSpectrum, "- <r.txt", 0, "# Num\tLabel\t1\n1\tA12\t100\n", ""},
    {"NumberNamesTheColumnWithoutParameter", table(1, "", peak("1", "A12", "2")) + table(2, "", peak("1", "A12", "1")),
     "r.txt", 0, "# Num\tLabel\t1\t2\n1\tA12\t2\t1\n", ""},
    {"IntensitiesKeepTheirText", table(1, "0", peak("1", "A", "-2.50e-05") + peak("2", "B", "-0")), "r.txt", 0,
     "# Num\tLabel\t0\n1\tA\t-2.50e-05\n2\tB\t-0\n", ""},
    {"LabelsOfAnyKind",
     table(1, "", peak("3", "a b", "1") + peak("1", "", "2") + peak("2", "#%s\\n\"'$x", "3") + peak("2", "a b", "4")),
     "r.txt", 0, "# Num\tLabel\t1\n3\ta b\t1\n1\t\t2\n2\t#%s\\n\"'$x\t3\n2\ta b\t4\n", ""},
    {"TabInALabelBecomesABlank", table(1, "", peak("1", "a\tb\tc", "5")), "r.txt", 0, "# Num\tLabel\t1\n1\ta b c\t5\n",
     ""},
    {"NumericLabelsAreText", table(1, "", peak("1", "1e1", "1")) + table(2, "", peak("1", "10", "1")), "r.txt", 1, "",
     "r.txt: line 7: spectrum 2 does not have the peaks of spectrum 1\n"},
    {"CarriageReturnOfAParameterIsDropped", table(1, "0.5\r", peak("1", "A12", "1")), "r.txt", 0,
     "# Num\tLabel\t0.5\n1\tA12\t1\n", ""},
    {"NoPeaks", table(1, "", "") + table(2, "", ""), "r.txt", 0, "# Num\tLabel\t1\t2\n", ""},
    {"EmptyReport", "", "r.txt", 1, "", "r.txt: no table found (did the run end early?)\n"},
    {"FieldAlone", kField, "r.txt", 1, "", "r.txt: no table found (did the run end early?)\n"},
    {"HeaderAlone", kOneSpectrum + "# SPECTRUM 2: s.dat\n", "r.txt", 1, "",
     "r.txt: the table of spectrum 2 is incomplete (did the run end early?)\n"},
    {"NoClosingBlankLine", kSeries.substr(0, kSeries.size() - 1), "r.txt", 1, "",
     "r.txt: the table of spectrum 2 is incomplete (did the run end early?)\n"},
    {"TableEndedByTheNext", kOneSpectrum.substr(0, kOneSpectrum.size() - 1) + table(2, "", ""), "r.txt", 1, "",
     "r.txt: the table of spectrum 1 is incomplete (did the run end early?)\n"},
    {"LineCutShort", kSeries.substr(0, kSeries.size() - 12), "r.txt", 1, "", "r.txt: line 15: " + kNoLine},
    {"FewerPeaksThanTheFirst",
     table(1, "", peak("1", "A", "1") + peak("2", "B", "1")) + table(2, "", peak("1", "A", "1")), "r.txt", 1, "",
     "r.txt: spectrum 2 has only 1 of the 2 peaks of spectrum 1 (did the run end early?)\n"},
    {"MorePeaksThanTheFirst", kOneSpectrum + table(2, "", peak("1", "A12", "1") + peak("2", "B", "1")), "r.txt", 1, "",
     "r.txt: line 8: spectrum 2 does not have the peaks of spectrum 1\n"},
    {"TwoReports", kOneSpectrum + kOneSpectrum, "r.txt", 1, "",
     "r.txt: line 5: spectrum 2 expected (more than one report?)\n"},
    {"TwoReportsWithField", kSeries + kSeries, "r.txt", 1, "", "r.txt: line 17: " + kNoLine},
    {"NoReport", "INPUT:\n", "r.txt", 1, "", "r.txt: line 1: " + kNoLine},
    {"NotANumber", table(1, "", peak("1", "A", "1") + peak("2", "B", "-nan")), "r.txt", 1, "",
     "r.txt: line 4: the intensity \"-nan\" is not a finite number\n"},
    {"Infinite", table(1, "", peak("1", "A", "inf")), "- <r.txt", 1, "",
     "standard input: line 3: the intensity \"inf\" is not a finite number\n"},
    {"OneNoisePeak", table(1, "", peak("1", "noise", "1") + peak("2", "Noise", "1")), "-e r.txt", 1, "",
     "r.txt: an uncertainty needs at least two peaks with \"noise\" in their label, found 1\n"},
    {"FilesNeedNoisePeaks", table(1, "0", peak("1", "A12", "1")), "-d curves r.txt", 1, "",
     "r.txt: an uncertainty needs at least two peaks with \"noise\" in their label, found 0\n"},
    {"FilesNeedAParameter", table(1, "", peak("1", "noise", "1") + peak("2", "noise", "1")), "-d curves r.txt", 1, "",
     "r.txt: spectrum 1 has no parameter, and -d needs one\n"},
    {"FilesNeedANumber", table(1, "5ms", peak("1", "noise", "1") + peak("2", "noise", "1")), "-d curves r.txt", 1, "",
     "r.txt: the parameter \"5ms\" of spectrum 1 is not a number, and -d needs one\n"},
    {"TheNumberDoesNotTellPeaksApart", withNoise(peak("1", "A12", "1") + peak("1", "A12", "2")), "-d curves r.txt", 1,
     "",
     "r.txt: several peaks would be written to A12, so peak 1 goes to A12-1\n"
     "peakbox-table: r.txt: several peaks would be written to A12, so peak 1 goes to A12-1\n"
     "peakbox-table: r.txt: peaks 1 and 1 would both be written to A12-1\n"},
    {"NoSuchReport", "", "nowhere", 1, "", "nowhere: cannot be read\n"},
    {"AFolder", "", ".", 1, "", ".: cannot be read\n"},
    {"UnknownOption", kSeries, "-x r.txt", 2, "", kUsage},
    {"NoFolderGiven", kSeries, "r.txt -d", 2, "", kUsage},
    {"FolderWithoutName", kSeries, "-d '' r.txt", 2, "", kUsage},
    {"TwoReportNames", kSeries, "r.txt r.txt", 2, "", kUsage},
};

INSTANTIATE_TEST_SUITE_P(Rows, PeakboxTable, testing::ValuesIn(kRows),
                         [](const testing::TestParamInfo<Row>& info) { return info.param.name; });

TEST(PeakboxTableFiles, HoldOneCurveEachAndAreNamedForTheLabel) {
  const ScratchFolder folder;
  folder.write("r.txt", kSeries);

  const Outcome outcome = folder.run("peakbox-table -d '-new/my curves' r.txt && ls -- '-new/my curves'");

  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "A12\n");  // none for the noise
  EXPECT_EQ(folder.read("-new/my curves/A12"),
            "# Peak 7: A12\n# Parameter\tIntensity\tUncertainty\n"
            "0.0\t1.52e+06\t3.53553\n0.050\t-84713.2\t1.58114\n");
}

TEST(PeakboxTableFiles, NamesThatCollideOrAreUnfitAreMended) {
  const ScratchFolder folder;
  folder.write("r.txt", withNoise(peak("1", "H1'", "10") + peak("2", "H1\"", "20") + peak("3", "../a b", "30") +
                                  peak("4", "", "40") + peak("5", "-rf", "50")));

  const Outcome outcome = folder.run("peakbox-table -d . r.txt && rm r.txt && LC_ALL=C ls -A");

  EXPECT_EQ(outcome.out, "H1_-1\nH1_-2\n_._a_b\n_rf\npeak-4\n");
  EXPECT_EQ(outcome.err,
            "peakbox-table: r.txt: several peaks would be written to H1_, so peak 1 goes to H1_-1\n"
            "peakbox-table: r.txt: several peaks would be written to H1_, so peak 2 goes to H1_-2\n");
  EXPECT_EQ(folder.read("H1_-2"), "# Peak 2: H1\"\n# Parameter\tIntensity\tUncertainty\n0\t20\t5\n");
}

TEST(PeakboxTableFiles, ThatCannotBeWrittenGiveStatusOne) {
  const ScratchFolder folder;
  folder.write("r.txt", kSeries);

  EXPECT_EQ(folder.run("peakbox-table -d r.txt r.txt").status, 1);
  EXPECT_EQ(folder.run("mkdir A12 && peakbox-table -d . r.txt").status, 1);
}

}  // namespace
}  // namespace peakbox::test
