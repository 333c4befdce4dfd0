#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

using Files = std::map<std::string, std::string>;

/// A peak of the series' planes; point i of dimension 1 lies at 163 - i ppm, point j of dimension 2 at 57 - j ppm.
struct Signal {
  int i;
  int j;
  float height;
};

const std::vector<Signal> kSignals{{20, 10, 1000}, {40, 30, 800}, {12, 34, -900}};

/// A plane of 64 x 48 points, one ppm each, with round peaks and noise between -1 and 1.
Plane makePlane(int number, float shift = 0) {
  const auto value = [=](int i, int j) {
    const int scatter = (i * 7919 + j * 104729 + number * 31337) % 2001;
    float sum = static_cast<float>(scatter) / 1000.0f - 1.0f;
    for (const Signal& signal : kSignals) {
      const float di = static_cast<float>(i - signal.i) - shift;
      const auto dj = static_cast<float>(j - signal.j);
      sum += signal.height / static_cast<float>(number) * std::exp(-(di * di + dj * dj) / 8);
    }
    return sum;
  };
  return {.direct = {.size = 64, .observeMHz = 100, .sweepWidthHz = 6400, .lastPpm = 100, .tile = 16},
          .indirect = {.size = 48, .observeMHz = 50, .sweepWidthHz = 2400, .lastPpm = 10, .tile = 12},
          .value = value};
}

std::string peakAt(const std::string& number, const std::string& label, int i, int j, const std::string& width = "4") {
  return examplePeakLine({.number = number,
                          .label = label,
                          .ppm1 = std::to_string(163 - i),
                          .width1 = width,
                          .ppm2 = std::to_string(57 - j),
                          .width2 = width});
}

const std::string kPeaks = peakAt("1", "{A1}", 20, 10) + peakAt("2", "{B2}", 40, 30) + peakAt("3", "{C3}", 12, 34) +
                           peakAt("4", "{noise4}", 50, 12);

/// A healthy series: its three planes, the list and the parameter file.
Files makeSeries(const std::function<std::string(const Plane&)>& write = writePipe, bool swapped = false) {
  Files files{{"peaks.xpk", examplePeakHeader() + kPeaks},
              {"run.par",
               "FIELD 100\nBOXSIZE 1\nPEAKLIST peaks.xpk\nTOLERANCE 200 100\nSPECTRUM s1 0\nSPECTRUM s2 1\n"
               "SPECTRUM s3 2\n"}};
  for (const int number : {1, 2, 3}) {
    Plane plane = makePlane(number);
    plane.swapped = swapped;
    files[std::string("s").append(std::to_string(number))] = write(plane);
  }
  return files;
}

/// What a check of the files finds, as it prints it; a status that does not go with it is told, too.
std::string findIn(const Files& files, const std::string& arguments = "run.par") {
  const std::string end = runExample(files, "peakbox-check " + arguments);
  const std::string start = outcome(end[7] - '0', "", "(no file)");
  const std::string found = end.starts_with(start) ? end.substr(start.size()) : "unexpected: " + end;
  const bool hasErrors = found.find(": error: ") != std::string::npos;
  return hasErrors == end.starts_with("status 1") ? found : "status of its own: " + end;
}

void replaceIn(std::string& text, const std::string& old, const std::string& replacement) {
  const std::size_t place = text.find(old);
  ASSERT_NE(place, std::string::npos) << old;
  text.replace(place, old.size(), replacement);
}

void setPipeWord(std::string& bytes, std::size_t word, float value) { putReal(bytes, 4 * word, value, false); }

TEST(PeakboxCheck, IsSilentAboutAHealthySeries) {
  for (const bool swapped : {false, true}) {
    EXPECT_EQ(findIn(makeSeries(writePipe, swapped)), "") << swapped;
    EXPECT_EQ(findIn(makeSeries(writeView, swapped)), "") << swapped;
    EXPECT_EQ(findIn(makeSeries(writeView, swapped), "-o report.txt run.par"), "") << swapped;
  }
}

/// Replaces `old` in `file` by `replacement`, one row at a time; each gives `findings`.
struct TextRow {
  std::string file;
  std::string old;
  std::string replacement;
  std::string findings;
};

void expectFindings(const std::vector<TextRow>& rows) {
  for (const TextRow& row : rows) {
    Files files = makeSeries();
    replaceIn(files[row.file], row.old, row.replacement);
    EXPECT_EQ(findIn(files), row.findings)
        << "with '" << row.replacement << "' for '" << row.old << "' in " << row.file;
  }
}

TEST(PeakboxCheck, NamesTheFaultsOfTheParameterFile) {
  const std::string plain = "; write one or two plain decimal numbers\n";
  expectFindings({
      {"run.par", "FIELD 100\nBOXSIZE 1", "FIELD\nBOX 1",
       "run.par: error: ERROR: No BOXSIZE specified.\n"
       "run.par:1: error: ERROR(line #1): No FIELD specified.\n"
       "run.par:2: error: ERROR (line 2): 'BOX' not recognized.\n"},
      {"run.par", "PEAKLIST peaks.xpk", "", "run.par: error: no PEAKLIST specified\n"},
      {"run.par", "BOXSIZE 1", "BOXSIZE 1\r",
       "run.par:2: error: lines end with a carriage return (\\r), as Windows writes them, and peakbox takes it for a "
       "part "
       "of the last value; take them out, for instance with dos2unix\n"},
      {"run.par", "BOXSIZE 1", "BOXSIZE 1x2",
       "run.par:2: warning: BOXSIZE '1x2' is read as 1 and 1, a box of 3 x 3 points" + plain},
      {"run.par", "BOXSIZE 1", "BOXSIZE 2 1 # half",
       "run.par:2: warning: BOXSIZE '2 1 # half' is read as 2 and 2, a box of 5 x 5 points" + plain},
      {"run.par", "BOXSIZE 1", "BOXSIZE 1 02",
       "run.par:2: warning: BOXSIZE '1 02' is read as 1 and 2, a box of 3 x 5 points" + plain},
      {"run.par", "200 100", "200Hz 100", "run.par:4: warning: TOLERANCE '200Hz' is read as 200 Hz\n"},
      {"run.par", "200 100", "200 -100", "run.par:4: warning: TOLERANCE -100 is negative\n"},
      {"run.par", "200 100", "200 99.9,8",
       "run.par:4: warning: of more than two TOLERANCE values the first two count, 200 and 99.9; numbers have a "
       "decimal "
       "point, and a comma separates values\n"},
      {"run.par", "200 100", "200 49",
       "run.par:4: warning: TOLERANCE of dimension 2, 49 Hz, is less than a point (50 Hz) and acts as 0\n"},
      {"run.par", "SPECTRUM s1", "peaklist peaks.xpk\nSPECTRUM s1",
       "run.par:5: warning: PEAKLIST again: this line counts, not line 3\n"},
      {"run.par", "s2 1", "s2 0,1", "run.par:6: error: ERROR(line #6): Insufficent parameters.\n"},
      {"run.par", "s1 0\nSPECTRUM s2 1\nSPECTRUM s3 2", "s1 0,5\nSPECTRUM s2 1 5\nSPECTRUM s3 2 \"",
       "run.par:5: warning: '0,5' is read as two words, since a comma separates words; write a decimal point\n"},
      {"run.par", "peaks.xpk", ".", ".: error: this is a folder\n"},
      {"run.par", "s1 0\nSPECTRUM s2 1\nSPECTRUM s3 2", "s1 0 a b",
       "run.par:5: warning: nothing keeps the words from 'b' on: a spectrum has at most two\n"},
  });
}

TEST(PeakboxCheck, SaysWhatWouldBecomeOfTheReport) {
  const std::string input = "the report would overwrite the input ";
  const std::pair<std::string, std::string> rows[] = {
      {"./s2", input + "s2"},
      {"link", input + "peaks.xpk"},
      {"run.par", input + "run.par"},
      {".", "the report cannot be written: this is a folder"},
      {"none/report", "the report cannot be created: no such folder"},
      {"other", "the report would overwrite a file that is no report"},
  };
  for (const auto& [report, text] : rows) {
    Files files = makeSeries();
    files["other"] = "something else\n";
    const std::string end = runExample(files, "sh -c 'ln -s peaks.xpk link; peakbox-check -o " + report + " run.par'");
    EXPECT_EQ(end, outcome(1, "", "(no file)", report + ": error: " + text + "\n"));
  }
  for (const std::string arguments : {"", "a b", "-o", "-x a"}) {
    EXPECT_TRUE(runExample({}, "peakbox-check " + arguments).starts_with("status 2\n")) << arguments;
  }
}

TEST(PeakboxCheck, NamesTheFaultsOfThePeakList) {
  const std::string list = "peaks.xpk";
  expectFindings({
      {list, "\n2 {B2}", "\n\n2 {B2}",
       "peaks.xpk:8: error: empty line, which ends the run: Column index (17) exceeds maximum (0)\n"},
      {list, "2 {B2}", "2 {B2} 1 2 3\n2 {B2}",
       "peaks.xpk:8: error: too few fields (it begins with '2 {B2} 1 2 3'), which ends the run: Column index (17) "
       "exceeds maximum (5)\n"},
      {list, "N.B", "N.b",
       "peaks.xpk:6: error: no column N.B: the peak number would be read as the width in dimension 2\n"},
      {list, "H N", "1H 15N",
       "peaks.xpk:6: error: not a peak list of the kind that peakbox reads: none of the columns 1H.L, 1H.P, 1H.B, "
       "15N.P "
       "and 15N.B that line 2 asks for\n"},
      {list, "label dataset", "Assignment",
       "peaks.xpk: error: not a peak list of the kind that peakbox reads: this is a list of Sparky or POKY; "
       "peakbox-list "
       "converts it\n"},
      {"peaks.xpk", "label dataset", "#\tPos F1\tPos F2\nlabel",
       "peaks.xpk: error: not a peak list of the kind that peakbox reads: this is a table; peakbox-list converts it\n"},
      {list, "{100} {50}", "{50} {100}",
       "peaks.xpk:2: error: the dimensions are exchanged: the MHz of line 5 fit the spectrum only the other way round; "
       "line 2 must name the direct dimension first, and the spectrum must not be transposed\n"},
      {list, "{100} {50}", "{80} {50}",
       "peaks.xpk:5: warning: the list was made at 80 and 50 MHz, but the spectrum has 100 and 50 MHz\n"},
      {list, "2 {B2} 123", "2 {B2} x123",
       "peaks.xpk:8: error: B2: position in dimension 1 'x123' is no number and is read as 0\n"},
      {list, "2 {B2} 123", "2 {B2} 123ppm",
       "peaks.xpk:8: warning: B2: position in dimension 1 '123ppm' is read as 123\n"},
      {list, "2 {B2} 123", "2 {B2} nan",
       "peaks.xpk:8: error: B2: no place in the spectrum, which ends the run: ERROR: Peak 1 has no valid position in "
       "dimension 1.\n"},
      {list, "2 {B2} 123", "2 {B2} 251",
       "peaks.xpk:8: warning: B2: folded 2 times in dimension 1, so that its position is probably wrong\n"},
      {list, "2 {B2} 123 0.1 4", "2 {B2} 123 0.1 -4",
       "peaks.xpk:8: warning: B2: width in dimension 1 '-4' is not above 0\n"},
      {list, "2 {B2} 123 0.1 4", "2 {B2} 122.5 0.1 0.5",
       "peaks.xpk:8: warning: B2: no data point in its search area, so that the nearest two are searched\n"},
      {list, "2 {B2}", "1 {B\x01}", "peaks.xpk:8: warning: B\\x01: the peak of line 7 has the number 1 too\n"},
      {list, "2 {B2}", "2 {A1}", "peaks.xpk:8: warning: A1: the peak of line 7 has this label too\n"},
      {list, kPeaks, "", "peaks.xpk: error: no peaks\n"},
      {list, "H N\n", "H N\r\n",
       "peaks.xpk:2: error: lines end with a carriage return (\\r), as Windows writes them, and peakbox takes it for a "
       "part "
       "of the last value; take them out, for instance with dos2unix\n"},
  });
  Files files = makeSeries();
  replaceIn(files[list], "H N\n", "N H\n");
  replaceIn(files[list], " N.L", " x.L");
  replaceIn(files[list], "H.L", "N.L");
  EXPECT_EQ(
      findIn(files),
      "peaks.xpk:2: error: the dimensions are exchanged: the positions fit the spectrum only the other way round; "
      "line 2 must name the direct dimension first, and the spectrum must not be transposed\n");
  files = makeSeries();
  files[list].pop_back();
  EXPECT_EQ(findIn(files), "peaks.xpk:10: error: no newline ends the last line, so that peak noise4 is lost\n");
}

TEST(PeakboxCheck, NamesTheFaultsOfSpectra) {
  struct Row {
    std::function<void(Files&)> damage;
    std::string findings;
  };
  const std::string transposed =
      "s2: error: transposed: the rows are not the direct dimension, so that all peaks would be looked for in wrong "
      "places; peakbox-planes turns it over\n";
  const Row rows[] = {
      {[](Files& f) { f.erase("s2"); }, "s2: error: Unable to open datafile s2 (there is no such file)\n"},
      {[](Files& f) { f["s1"] = "UCSF NMR"; },
       "s1: error: unrecognized format (this is a UCSF file, as Sparky has them)\n"},
      {[](Files& f) { f["s1"].replace(0, 4, "\x89HDF"); }, "s1: error: unrecognized format (this is an HDF5 file)\n"},
      {[](Files& f) { setPipeWord(f["s2"], 9, 3); },
       "s2: error: ERROR: Spectrum is not two dimentional. (peakbox-planes writes the planes of a cube)\n"},
      {[](Files& f) { f["s2"] = writeView(makePlane(2)); },
       "s2: error: ERROR: Spectrum is not two dimentional. (it does not have the format of the first spectrum)\n"},
      {[](Files& f) { f["s1"].resize(2100); },
       "s1: error: Error reading file @ point (14,0 (truncated: 12236 bytes are missing)\n"},
      {[](Files& f) { setPipeWord(f["s1"], 219, 0); }, "s1: error: dimension 2 has no data points\n"},
      {[](Files& f) { setPipeWord(f["s2"], 221, 1); }, transposed},
      {[](Files& f) {
         setPipeWord(f["s2"], 24, 1);
         setPipeWord(f["s2"], 25, 2);
       },
       transposed},
      {[](Files& f) { f["s2"].resize(2048 + 4 * 64 * 20); },
       "s2: error: Error reading file @ point (1,20 (truncated: 7168 bytes are missing)\n"},
      {[](Files& f) { f["s2"].pop_back(); }, "s2: error: truncated: 1 bytes are missing at its end\n"},
      {[](Files& f) { setPipeWord(f["s2"], 219, 40); },
       "s2: error: ERROR: Spectrum s2 has 64 x 40 points, the first has 64 x 48.\n"},
      {[](Files& f) { f["s3"] = f["s1"]; }, "s3: error: the same data as spectrum 1, s1\n"},
      {[](Files& f) { f["s2"] += std::string(64, 'x'); },
       "s2: warning: more data than one plane holds (64 bytes more): of a cube only the first plane is measured; "
       "peakbox-planes writes all of them\n"},
      {[](Files& f) { setPipeWord(f["s2"], 101, 10020); },
       "s2: warning: the axis of dimension 1 is off by up to 0.2 points from that of the first spectrum, and peaks are "
       "placed by the first\n"},
      {[](Files& f) { putReal(f["s2"], 2048, NAN, false); }, "s2: warning: 1 values are NaN or infinite\n"},
      {[](Files& f) { f["s3"].replace(2048, std::string::npos, 4 * 64 * 48, '\0'); },
       "s3: warning: nothing but zeros\n"},
  };
  for (const Row& row : rows) {
    Files files = makeSeries();
    row.damage(files);
    EXPECT_EQ(findIn(files), row.findings);
  }
  Files complex = makeSeries([](Plane plane) {
    plane.direct.quadFlag = 0;
    return writePipe(plane);
  });
  const std::string warning = ": warning: complex data in dimension 1, of which the real values are measured\n";
  EXPECT_EQ(findIn(complex), std::string("s1").append(warning).append("s2" + warning).append("s3" + warning));

  Files view = makeSeries(writeView);
  view["s2"].pop_back();
  putReal(view["s3"], 2048, INFINITY, false);
  EXPECT_EQ(
      findIn(view),
      "s2: error: Error reading file (truncated: 1 bytes are missing)\ns3: warning: 1 values are NaN or infinite\n");
}

TEST(PeakboxCheck, NamesWhatIsOddAboutTheMeasurement) {
  const std::string list = "peaks.xpk";
  expectFindings({
      {list, peakAt("2", "{B2}", 40, 30), peakAt("2", "{B2}", 63, 30, "0.5"),
       "peaks.xpk:8: error: B2: the run ends at this peak in spectrum 1, s1: ERROR: Box for peak #1 centered at "
       "(63,30) -- "
       "Box extends outside bounds of data array!\n"},
      // The area of B2 reaches the top of A1, 3 and 4 points away.
      {list, peakAt("2", "{B2}", 40, 30), peakAt("2", "{B2}", 23, 14, "8"),
       "peaks.xpk:8: error: B2: measured at the same point as A1 (line 7) in spectra 1 to 3\n"},
      // Two points beside the top of A1, which the tolerance of two points reaches.
      {list, peakAt("2", "{B2}", 40, 30), peakAt("2", "{B2}", 22, 10, "0.5"),
       "peaks.xpk:8: error: B2: measured at the same point as A1 (line 7) in spectra 2 and 3\n"
       "peaks.xpk:8: warning: B2: its point is no local extreme but on a flank in spectrum 1\n"},
      // A1 and B2 are 20 points apart in both dimensions; the box of the noise peak does not matter.
      {"run.par", "BOXSIZE 1", "BOXSIZE 10",
       "peaks.xpk:8: warning: B2: its box shares up to 1 of 441 points with that of A1 (line 7) in spectra 1 to 3\n"},
  });
  Files files = makeSeries();
  replaceIn(files[list], peakAt("2", "{B2}", 40, 30), peakAt("2", "{B2}", 50, 40));
  EXPECT_TRUE(findIn(files).starts_with("peaks.xpk:8: warning: B2: height ")) << findIn(files);

  // All moved by three points, which a tolerance of two cannot follow.
  files = makeSeries();
  files["s3"] = writePipe(makePlane(3, 3));
  const std::string moved =
      "s3: warning: all peaks have moved against the first spectrum, by about 3 points in dimension 1\n";
  const std::string flank = ": its point is no local extreme but on a flank in spectrum 3\n";
  EXPECT_EQ(findIn(files), moved + "peaks.xpk:7: warning: A1" + flank + "peaks.xpk:8: warning: B2" + flank +
                               "peaks.xpk:9: warning: C3" + flank);
  replaceIn(files["run.par"], "200 100", "0 0");
  EXPECT_EQ(findIn(files), moved);
  files["s3"] = writePipe(makePlane(3, -9));
  EXPECT_EQ(findIn(files),
            "s3: warning: all peaks have moved against the first spectrum, by about -9 points in dimension 1\n");

  // A plane of other peaks, and one with the other sign, between planes that are right.
  Plane other = makePlane(2);
  other.value = [](int i, int j) { return static_cast<float>((i * 7919 + j * 104729) % 2001) / 1000.0f - 1.0f; };
  files = makeSeries();
  files["s2"] = writePipe(other);
  EXPECT_EQ(findIn(files),
            "s2: warning: 3 of 3 peaks that the first and a later spectrum show are not seen here: another sample, a "
            "wrong plane or one that was not processed?\n");
  other.value = [turned = makePlane(2).value](int i, int j) { return -turned(i, j); };
  files["s2"] = writePipe(other);
  EXPECT_EQ(
      findIn(files),
      "s2: warning: the peaks have the other sign than in the first and in a later spectrum: was it phased alike?\n");
}

}  // namespace peakbox::test
