#include <fnmatch.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <sstream>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

namespace {

using Files = std::map<std::string, std::string>;

/// A change of the files of a series.
struct Damage {
  std::function<void(Files&)> apply;
};
Damage operator+(const Damage& first, const Damage& second) {
  return {[=](Files& files) { first.apply(files), second.apply(files); }};
}

/// Round peaks, each with its point and height. Point i of dimension 1 lies at 163 - i ppm, point j of dimension 2 at
/// 57 - j ppm.
using Signals = std::vector<std::array<float, 3>>;
const Signals kSignals{{20, 10, 1000}, {40, 30, 800}, {12, 34, -900}};

/// A plane of 64 x 48 points, one ppm each, with peaks that decay with its number and noise between -1 and 1; only the
/// first rows are filled.
Plane makePlane(int number, float shift1 = 0, float shift2 = 0, const Signals& signals = kSignals, int rows = 48) {
  const auto value = [=](int i, int j) {
    const auto n = static_cast<unsigned>(i + 64 * (j + 48 * number));
    const unsigned scatter = (n * 2654435761U ^ n * 40503U >> 3) % 2001;
    float sum = static_cast<float>(scatter) / 1000.0f - 1.0f;
    for (const auto& [top1, top2, height] : signals) {
      const float di = static_cast<float>(i) - top1 - shift1;
      const float dj = static_cast<float>(j) - top2 - shift2;
      sum += height / static_cast<float>(number) * std::exp(-(di * di + dj * dj) / 8);
    }
    return j < rows ? sum : 0;
  };
  return {.direct = {.size = 64, .observeMHz = 100, .sweepWidthHz = 6400, .lastPpm = 100, .tile = 16},
          .indirect = {.size = 48, .observeMHz = 50, .sweepWidthHz = 2400, .lastPpm = 10, .tile = 12},
          .value = value};
}

std::string peakAt(const std::string& number, const std::string& label, int i, int j, const std::string& width = "4") {
  return examplePeakLine({.number = number,
                          .label = "{" + label + "}",
                          .ppm1 = std::to_string(163 - i),
                          .width1 = width,
                          .ppm2 = std::to_string(57 - j),
                          .width2 = width});
}

const std::string kMark = "\xef\xbb\xbf";
const std::string kB2 = peakAt("2", "B2", 40, 30);
const std::string kNoise4 = peakAt("4", "noise4", 50, 12);
const std::string kPeaks = peakAt("1", "A1", 20, 10) + kB2 + peakAt("3", "C3", 12, 34) + kNoise4;

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
std::string findIn(const Files& files, const std::string& command = "peakbox-check run.par") {
  const std::string end = runExample(files, command);
  const std::string start = outcome(end[7] - '0', "", "(no file)");
  const std::string found = end.starts_with(start) ? end.substr(start.size()) : "unexpected: " + end;
  const bool hasErrors = found.find(": error: ") != std::string::npos;
  return hasErrors == end.starts_with("status 1") ? found : "status of its own: " + end;
}

/// What is damaged in a healthy series, and the lines that are found then: * stands for anything.
struct Row {
  const char* name;
  Damage damage;
  std::string lines;
};

void expectFindings(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    Files files = makeSeries();
    row.damage.apply(files);
    const std::string& lines = row.lines;
    const std::string found = findIn(files);
    const bool isAsLong = std::count(found.begin(), found.end(), '\n') == std::count(lines.begin(), lines.end(), '\n');
    const bool fits = isAsLong && fnmatch(lines.c_str(), found.c_str(), FNM_NOESCAPE) == 0;
    EXPECT_TRUE(fits) << row.name << " gives\n" << found << "and not\n" << lines;
  }
}

Damage put(const std::string& file, const std::string& bytes) {
  return {[=](Files& files) { files[file] = bytes; }};
}
Damage put(const std::string& file, const Plane& plane) { return put(file, writePipe(plane)); }
Damage resize(const std::string& file, std::size_t size) {
  return {[=](Files& files) { files[file].resize(size); }};
}
Damage word(const std::string& file, std::size_t word, float value) {
  return {[=](Files& files) { putReal(files[file], 4 * word, value, false); }};
}

/// Replaces a text of a file, which is to be there.
Damage edit(const std::string& file, const std::string& old, const std::string& replacement) {
  return {[=](Files& files) {
    const std::size_t place = files[file].find(old);
    EXPECT_NE(place, std::string::npos) << "no '" << old << "' in " << file;
    files[file].replace(std::min(place, files[file].size()), old.size(), replacement);
  }};
}
Damage par(const std::string& old, const std::string& replacement) { return edit("run.par", old, replacement); }
Damage list(const std::string& old, const std::string& replacement) { return edit("peaks.xpk", old, replacement); }

TEST(PeakboxCheck, IsSilentAboutAHealthySeries) {
  for (const bool swapped : {false, true}) {
    EXPECT_EQ(findIn(makeSeries(writePipe, swapped)), "") << swapped;
    EXPECT_EQ(findIn(makeSeries(writeView, swapped)), "") << swapped;
    EXPECT_EQ(findIn(makeSeries(writeView, swapped), "peakbox-check -o report.txt run.par"), "") << swapped;
  }
  EXPECT_EQ(findIn(makeSeries(), "sh -c 'mkfifo p; cat run.par >p & exec peakbox-check p'"), "");
}

TEST(PeakboxCheck, NamesTheFaultsOfTheParameterFile) {
  const std::string rest = "\nSPECTRUM s2 1\nSPECTRUM s3 2\n";
  expectFindings({
      {"refused", par("FIELD 100\nBOXSIZE", "FIELD\nBOX"), "run.par: *BOXSIZE*\n*:1: *FIELD*\n*:2: *BOX*\n"},
      {"empty", put("run.par", ""), "run.par: error: *No SPECTRUM*\n*No BOXSIZE*\nrun.par: error: no PEAKLIST*\n"},
      {"carriage return", par("BOXSIZE 1", "BOXSIZE 1\r"), "run.par:2: error: lines end*return (\\r)*dos2unix\n"},
      {"byte-order mark", par("FIELD", kMark + "FIELD"), "run.par:1: error: *byte-order*\n"},
      {"half a number", par("BOXSIZE 1", "BOXSIZE 1x2"), "run.par:2: *'1x2' is read as 1 and 1, a box of 3 x 3 *\n"},
      {"four words", par("BOXSIZE 1", "BOXSIZE 2 1 # x"), "run.par:2: *'2 1 # x' is read as 2 and 2, *5 x 5 *\n"},
      {"unit", par("200 100", "200Hz 100"), "run.par:4: warning: TOLERANCE '200Hz' is read as 200 Hz\n"},
      {"negative", par("200 100", "200 -100"), "run.par:4: warning: TOLERANCE -100 is negative\n"},
      {"three values", par("200 100", "200 99.9,8"), "run.par:4: *the first two count, 200 and 99.9;*\n"},
      {"comment", par("200 100", "200 100 # Hz"), ""},
      {"below a point", par("200 100", "200 49"), "run.par:4: *200 49 is below a point of dimension 2 (50 Hz)*\n"},
      {"twice", par("SPECTRUM", "peaklist peaks.xpk\nSPECTRUM"), "run.par:5: *PEAKLIST again*not line 3\n"},
      {"field", par("100\n", "1e x\n"), "run.par:1: *'1e' is no number\nrun.par:1: *only '1e' counts, and not 'x'*\n"},
      {"another field", par("FIELD 100", "FIELD 98.9"), "run.par:1: *FIELD 98.9 is not that of*, 100 MHz\n"},
      {"nearly the field", par("FIELD 100", "FIELD 99.1"), ""},
      {"more words", par("s2 1", "s2 0,1"), "run.par:6: error: ERROR(line #6): Insufficent parameters.\n"},
      {"first without file", par("SPECTRUM", "SPECTRUM\nSPECTRUM"), "run.par:5: error: *No SPECTRUM specified.\n"},
      {"first that repeats", par("s1 0", "s1 \"\nSPECTRUM s1 0"), "run.par:5: error: *No previous*\n"},
      {"decimal comma", par("s1 0" + rest, "s1 0,5\nSPECTRUM s2 1 5\n"), "run.par:5: *'0,5' is read as two*\n"},
      {"comment behind", par("s1 0" + rest, "s1 0 #a"), "run.par:5: *'#a' begins no comment here*\n"},
      {"five words", par("s1 0" + rest, "s1 0 a b"), "run.par:5: *nothing keeps the words from 'b' on*\n"},
      {"folder", par("peaks.xpk", "."), ".: error: this is a folder\n"},
  });
}

TEST(PeakboxCheck, SaysWhatWouldBecomeOfTheReport) {
  const std::pair<std::string, std::string> rows[] = {
      {"./s2", "./s2: error: the report would overwrite the input s2\n"},
      {"link", "link: error: the report would overwrite the input peaks.xpk\n"},
      {"run.par", "run.par: error: the report would overwrite the input run.par\n"},
      {".", ".: error: the report cannot be written: this is a folder\n"},
      {"none/report", "none/report: error: the report cannot be created: no such folder\n"},
      {"lost", "lost: error: the report cannot be created: no such folder\n"},
      {std::string(300, 'x'), std::string(300, 'x') + ": error: the report cannot be created: its name is too long\n"},
      {"other", "other: error: the report would overwrite a file that is no report\n"},
      {"\"\"", "-o: error: the report has no name\n"},
      {"earlier", ""},
  };
  for (const auto& [report, findings] : rows) {
    Files files = makeSeries();
    files["other"] = "something else\n";
    files["earlier"] = "# SPECTRUM 1: s1\n";
    const std::string links = "ln -s peaks.xpk link; ln -s none/report lost; ";
    EXPECT_EQ(findIn(files, "sh -c '" + links + "peakbox-check -o " + report + " run.par'"), findings);
  }
  for (const std::string arguments : {"", "a b", "-o", "-x a", "-a", "-a -o b a"}) {
    EXPECT_TRUE(runExample({}, "peakbox-check " + arguments).starts_with("status 2\n")) << arguments;
  }
}

TEST(PeakboxCheck, NamesTheFaultsOfThePeakList) {
  const std::string foreign = "peaks.xpk: error: not a peak list of the kind that peakbox reads: ";
  expectFindings({
      {"empty line", list("\n2 ", "\n\n2 "), "peaks.xpk:8: error: empty line, which ends the run: Column*\n"},
      {"few fields", list("2 {B2}", "2 {B2} 1 2\n2 {B2}"), "peaks.xpk:8: *begins with '2 {B2} 1 2'*ends the run*\n"},
      {"no column", list("N.B", "N.b"), "peaks.xpk:6: error: no column N.B: *as the width in dimension 2\n"},
      {"other columns", list("H N", "1H 15N"), "peaks.xpk:6: error: *1H.L, 1H.P, 1H.B, 15N.P and 15N.B*\n"},
      {"one dimension", list("H N", "H"), "peaks.xpk:2: error: *does not name two dimensions (Column*\n"},
      {"two lines", put("peaks.xpk", "a\nb\n"), foreign + "fewer than six header lines\n"},
      {"Sparky", list("label dataset", "Assignment"), foreign + "*Sparky or POKY; peakbox-list converts it\n"},
      {"NMRPipe", list("label dataset", "VARS"), foreign + "this is a table of NMRPipe*\n"},
      {"table", list("label", "#\tPos F1\tPos F2\nlabel"), foreign + "this is a table; *\n"},
      {"byte-order mark", list("label", kMark + "label"), ""},
      {"carriage return", list("H N\n", "H N\r\n"), "peaks.xpk:2: error: lines end with a carriage return*\n"},
      {"deleted peaks", list("int stat", "stat int"), "peaks.xpk:6: *the column stat is field 17*18th\n"},
      {"exchanged MHz", list("{100} {50}", "{50} {100}"), "peaks.xpk:2: error: *exchanged: the MHz of line 5*\n"},
      {"exchanged", list("H N\n", "N H\n") + list(" N.L", " x.L") + list("H.L", "N.L"), "*:2: *the positions*\n"},
      {"other MHz", list("{100} {50}", "{80} {50}"), "peaks.xpk:5: *at 80 and 50 MHz*has 100 and 50 MHz\n"},
      {"rounded MHz", list("{100} {50}", "{100.9} {49.6}"), ""},
      {"no number", list("} 123", "} x123"), "peaks.xpk:8: error: B2: position in dimension 1 'x123' is no*\n"},
      {"half a number", list("} 123", "} 123ppm"), "peaks.xpk:8: *position in dimension 1 '123ppm' is read as 123\n"},
      {"NaN", list("} 123", "} nan"), "peaks.xpk:8: error: B2: no place*Peak 1 has no valid*dimension 1.\n"},
      {"far off", list("} 123", "} -1e6"), "peaks.xpk:8: error: B2: more than 10000 spectral widths outside*\n"},
      {"folded twice", list("} 123", "} 251"), "peaks.xpk:8: *: B2: folded 2 times in dimension 1,*\n"},
      {"folded once", list("} 123", "} 187") + list("\t27 ", "\t75 "), ""},
      {"width", list("123 0.1 4", "123 0.1 -4"), "peaks.xpk:8: *: B2: width in dimension 1 '-4' is not above 0\n"},
      {"narrow", list("123 0.1 4", "122.5 0.1 0.5"), "peaks.xpk:8: *: B2: no data point in its search area*\n"},
      {"number twice", list("2 {B2}", "1 {B\x01}"), "peaks.xpk:8: *: B\\x01: *line 7 has the number 1 too\n"},
      {"label twice", list("{B2}", "{A1}"), "peaks.xpk:8: *: A1: the peak of line 7 has this label too\n"},
      {"noise twice", list(kB2, kB2 + peakAt("5", "noise4", 30, 20)), ""},
      {"no peaks", list(kPeaks, ""), "peaks.xpk: error: no peaks\n"},
      {"no newline", {[](Files& files) { files["peaks.xpk"].pop_back(); }}, "peaks.xpk:10: error: *noise4 is lost\n"},
  });
  Files files = makeSeries();
  for (int i = 0; i < 596; ++i) files["peaks.xpk"] += kB2;
  par("BOXSIZE 1", "").apply(files);
  EXPECT_TRUE(findIn(files).ends_with("too\npeakbox-check: warning: 192 more findings of this stage\n"));
}

TEST(PeakboxCheck, NamesTheFaultsOfSpectra) {
  const std::string missing = "s2: error: Error reading file @ point (1,20 (truncated: 7168 bytes are missing)\n";
  const auto fill = [](int rows) { return put("s3", makePlane(3, 0, 0, kSignals, rows)); };
  const auto writeComplex = [](Plane plane) {
    plane.direct.quadFlag = 0;
    return writePipe(plane);
  };
  const std::string complex = ": warning: complex data in dimension 1, of which the real values are measured\n";
  EXPECT_EQ(findIn(makeSeries(writeComplex)), "s1" + complex + "s2" + complex + "s3" + complex);
  expectFindings({
      {"no file", par("s2", "none"), "none: error: *datafile none (there is no such file)\n"},
      {"folder", par("s2", "."), ".: error: this is a folder\n"},
      {"empty", put("s1", ""), "s1: error: Unable to read s1 (this is an empty file)\n"},
      {"UCSF", put("s1", "UCSF NMR"),
       "s1: error: unrec*UCSF file, as Sparky has them; peakbox-planes writes its planes)\n"},
      {"compressed", put("s1", "\x1f\x8b\x08\x09"), "s1: error: *a compressed file; unpack it first)\n"},
      {"Bruker", par("s1", "ser") + put("ser", "\x01\x02\x03\x04"),
       "ser: error: *Bruker data set that has not been processed)\n"},
      {"Bruker, processed", par("s1", "2rr") + put("2rr", "\x01\x02\x03\x04"),
       "2rr: error: *-planes writes its planes)\n"},
      {"cube", word("s2", 9, 3), "s2: error: *dimentional. (peakbox-planes writes the planes of a cube)\n"},
      {"format", put("s2", writeView(makePlane(2))), "s2: error: *not have the format of the first spectrum)\n"},
      {"first cut", resize("s1", 2100), "s1: error: Error reading file*(truncated: 12236 bytes are missing)\n"},
      {"second cut", resize("s2", 2048 + 4 * 64 * 20), missing},
      {"last value cut", resize("s2", 2047 + 4 * 64 * 48), "s2: error: truncated: 1 bytes are missing at its end\n"},
      {"longer", resize("s2", 2048 + 4 * 64 * 48 + 64), "s2: warning: more data*(64 bytes more): what is behind it*\n"},
      {"cube of 2D", resize("s2", 2048 + 3 * 4 * 64 * 48),
       "s2: warning: more data*; peakbox-planes writes all of them\n"},
      {"both", word("s1", 219, 0) + resize("s2", 2048 + 4 * 64 * 20), "s1: *2 has no data points\n" + missing},
      {"no ppm", word("s1", 218, 0), "s1: error: *the frequency of dimension 2 is 0 or no number\n"},
      {"cube of 2D without ppm", word("s1", 218, 0) + resize("s1", 2048 + 3 * 4 * 64 * 48),
       "s1: error: *2 is 0 or no number (peakbox-planes writes the planes of a cube)\n"},
      {"contradiction", word("s2", 221, 1), "s2: error: its header contradicts itself*; process it again\n"},
      {"transposed", word("s2", 221, 1) + word("s2", 24, 1) + word("s2", 25, 2),
       "s2: error: transposed: *; peakbox-planes turns it over\n"},
      {"third axis", word("s2", 25, 3), "s2: error: the second axis is number 3 of its experiment*\n"},
      {"other size", word("s2", 219, 40), "s2: error: *s2 has 64 x 40 points, the first has 64 x 48.\n"},
      {"moved axis", word("s2", 101, 10020), "s2: *the axis of dimension 1 is off by up to 0.2 points*\n"},
      {"other MHz", word("s2", 218, 51), "s2: *dimension 2*at 51 MHz, *at 50 MHz\ns2: *the axis of dimension 2*\n"},
      {"copy", put("s3", makePlane(1)), "s3: error: the same data as spectrum 1, s1\n"},
      {"NaN", word("s2", 512, NAN) + word("s2", 513, INFINITY), "s2: warning: 2 values are NaN or infinite\n"},
      {"zeros", fill(0), "s3: warning: nothing but zeros\n"},
      {"seven rows of zeros", fill(41), "s3: *the last 7 of 48 rows are nothing*\n"},
      {"six rows of zeros", fill(42), ""},
  });
}

TEST(PeakboxCheck, NamesWhatIsOddAboutSinglePeaks) {
  const auto low = [](const std::string& label) {
    return "peaks.xpk:*: warning: " + label + ": no peak: [01]* times the noise (0.*; at least 5 needed\n";
  };
  const auto onFlank = [](const std::string& label, const std::string& way) {
    return "*: warning: " + label + ": on a flank: in spectrum 1 the top lies " + way + ", where ";
  };
  const std::string unlisted = "no listed peak is: correct the position or widen the bounds\n";
  const Damage still = par("200 100", "0 0");
  const auto putB2 = [](int i, int j, const std::string& width) { return list(kB2, peakAt("2", "B2", i, j, width)); };
  const auto putPlanes = [](const Signals& signals, int rows) {
    const auto plane = [&](int number) { return makePlane(number, 0, 0, signals, rows); };
    return put("s1", plane(1)) + put("s2", plane(2)) + put("s3", plane(3));
  };
  const std::string empty = peakAt("1", "A1", 50, 40) + peakAt("2", "B2", 55, 20) + peakAt("3", "C3", 30, 20);
  const std::string besideEdges = peakAt("1", "A1", 62, 20, "0.5") + peakAt("2", "B2", 1, 20, "0.5") +
                                  peakAt("3", "C3", 30, 46, "0.5") + peakAt("4", "D4", 30, 1, "0.5");
  const Signals onEdges{{63, 20, 900}, {0, 20, 900}, {30, 47, 900}, {30, 0, 900}};
  // The signals grow, so that of the first plane alone nothing could be said.
  const Damage growing = put("s1", makePlane(1, 0, 0, {{20, 10, 4}, {40, 30, 3}, {12, 34, -4}}));
  const auto walk = [](float i, float j) {  // A1 alone
    const auto plane = [&](int k, float way) {
      return makePlane(k, 0, 0, {{20 + way * i, 10 + way * j, 900}, {40, 30, 900}, {12, 34, 900}});
    };
    return put("s1", plane(1, 0)) + put("s2", plane(2, 1)) + put("s3", plane(3, 2));
  };
  expectFindings({
      {"lost", putB2(63, 30, "0.5"), "peaks.xpk:8: error: B2: *in spectrum 1, s1: *#1 centered at (63,30) -- Box*\n"},
      {"lost behind another", list("} 143", "} x") + putB2(63, 30, "0.5"), "*A1*no number*\n*B2*Box for peak #1 c*\n"},
      {"same point", putB2(23, 14, "8"), "*:8: warning: B2: *same point as A1 (line 7) in spectra 1 to 3, *bounds*\n"},
      {"at the earlier one's", list(kPeaks, peakAt("1", "A1", 23, 14, "8") + peakAt("2", "B2", 20, 10)),
       "*:7: *A1: measured at the same point as B2 (line 8) in spectra 1 to 3*\n"},
      {"later", putB2(22, 10, "0.5"), "*A1 (line 7) in spectra 2 and 3, *make TOLERANCE smaller; also on a flank\n"},
      // A1 and B2 are 20 points apart in both dimensions; the box of the noise peak does not matter.
      {"one point", par("BOXSIZE 1", "BOXSIZE 10"), "*:8: *B2: its box shares 1 of 441*that of A1 (line 7)\n"},
      {"three points", par("BOXSIZE 1", "BOXSIZE 11 10"), "peaks.xpk:8: *shares 3 of 483*\n"},
      {"most shared",
       par("BOXSIZE 1", "BOXSIZE 5") + putPlanes({{20, 20, 999}, {28, 20, 900}, {28, 27, 800}}, 48) +
           list(kPeaks, peakAt("1", "A1", 20, 20) + peakAt("2", "B2", 28, 20) + peakAt("3", "C3", 28, 27)),
       "*A1: *shares 33 of 121*B2 (line 8) *1 more\n*B2: *44 of 121*C3 (line 9) *1 more\n*44 of 121*B2*1 more\n"},
      {"on a flank", still + putB2(22, 11, "0.5"),
       onFlank("B2", "2 points (2 ppm) to higher ppm in dimension 1 and 1 point (1 ppm) to higher ppm in dimension 2") +
           "A1 (line 7) is: make the bounds narrower, or delete it; also its box shares 2 of 9*\n"},
      {"low", putB2(50, 40, "4"), low("B2")},
      {"low in the first", growing, ""},
      {"half zeros", putB2(30, 18, "4") + putPlanes(kSignals, 23), "s1*\ns2*\ns3*\n"},
      {"another sample", list(kPeaks, empty + peakAt("4", "D4", 40, 30)),
       "peaks.xpk: *3 of 4 peaks are below 5 times the noise in every spectrum*\n"},
      {"noise on a signal", still + list(kNoise4, peakAt("4", "noise4", 21, 11, "0.5")),
       "*:10: *no place for a noise*\n"},
      {"edges", still + par("BOXSIZE 1", "BOXSIZE 0") + list(kPeaks, besideEdges) + putPlanes(onEdges, 48),
       onFlank("A1", "1 point (1 ppm) to lower ppm in dimension 1") + unlisted +
           onFlank("B2", "1 point (1 ppm) to higher ppm in dimension 1") + unlisted +
           onFlank("C3", "1 point (1 ppm) to lower ppm in dimension 2") + unlisted +
           onFlank("D4", "1 point (1 ppm) to higher ppm in dimension 2") + unlisted},
      {"moved", still + walk(2, -1),
       "*:7: *A1: moved out of its box: 4 points (4 ppm) to lower ppm in dimension 1 and 2 points (2 ppm) to higher "
       "ppm "
       "in dimension 2 by spectrum 3; it takes TOLERANCE 400 100\n"},
      {"moved within TOLERANCE", walk(1, -1), ""},
  });
}

TEST(PeakboxCheck, SuggestsBoxBoundsAndTolerance) {
  // Gaussian lines of two points are 4.7 points wide at half height.
  const std::string lines =
      "status 0\n*100 Hz (1 ppm) in dimension 1, 50 Hz (1 ppm) in dimension 2*\n*3 of 4 peaks*: 4.[78] and 4.[78] "
      "points.\n*pair, A1 and B2, is 20.0 and 20.0 points apart.\n*-b 9.[456],9.[456]\nBOXSIZE 2 2\n#*\nTOLERANCE ";
  const Damage bare = par("BOXSIZE 1\n", "") + par("TOLERANCE 200 100\n", "");
  const Row rows[] = {
      {"peaks that stay", bare, lines + "0 0\n*"},
      {"peaks that move", bare + put("s3", makePlane(3, 3, -2)), lines + "300 100\n*"},
      {"a fraction of a point", bare + put("s2", makePlane(2, 0.2F, 0.2F)), lines + "0 0\n*"},
      {"weak at first", bare + put("s1", makePlane(200)), lines + "0 0\n*"},
      {"two peaks", list(kB2, ""), "status 1\n*check: peaks.xpk: 2 of 3 peaks are ten times*"},
      {"no list", par("PEAKLIST", "#"), "status 1\n*check: run.par: no PEAKLIST specified\n*"},
      {"no place", list("} 123", "} -1e6"), "status 1\n*check: peaks.xpk: B2: more than 10000*"},
      {"too short", list("2 {B2}", "2 {B2} 1\n2 {B2}"), "status 1\n*exceeds maximum*"},
  };
  for (const Row& row : rows) {
    Files files = makeSeries();
    row.damage.apply(files);
    const std::string end = runExample(files, "peakbox-check -a run.par");
    EXPECT_EQ(fnmatch(row.lines.c_str(), end.c_str(), FNM_NOESCAPE), 0) << row.name << " gives\n" << end;
  }
}

/// Peak k of the larger series. No shift brings many of them together.
Signals scatterSignals(float moved = 0) {
  Signals signals;
  for (int k = 0; k < 30; ++k) {
    const float half = k % 3 == 0 ? 0.5F : 0;  // between two points, so that noise decides which is higher
    signals.push_back({static_cast<float>(12 + k * 67 % 169) + half, static_cast<float>(12 + k * k * 13 % 103),
                       300.0F + 10.0F * static_cast<float>(k)});
    if (k % 2 == 0) signals.back()[0] += moved;
  }
  return signals;
}

using Values = std::function<float(int, int)>;

/// Noise between -1 and 1 that no other plane has, and peaks; lobes in the place of peaks in one dimension, if asked
/// for.
Values makeValues(std::uint32_t number, float factor, const Signals& signals, int lobes = 0) {
  return [=](int i, int j) {
    std::uint32_t hash = number * 0x27d4eb2fU ^ static_cast<std::uint32_t>(i * 128 + j + 1) * 0x9e3779b9U;
    hash = (hash ^ hash >> 15) * 0x2c1b3c6dU;
    hash = (hash ^ hash >> 12) * 0x297a2d39U;
    float sum = static_cast<float>(hash >> 8) / 8388608.0F - 1.0F;
    for (const auto& [top1, top2, height] : signals) {
      const float di = static_cast<float>(i) - top1;
      const float dj = static_cast<float>(j) - top2;
      const float shape = lobes == 1 ? di / 2 : lobes == 2 ? dj / 2 : 1;
      sum += factor * height * shape * std::exp(-(di * di + dj * dj) / 8);
    }
    return sum;
  };
}

std::string writeValues(const Values& value) {
  return writePipe({.direct = {.size = 192, .observeMHz = 630, .sweepWidthHz = 2016, .lastPpm = 6, .tile = 16},
                    .indirect = {.size = 128, .observeMHz = 60, .sweepWidthHz = 1280, .lastPpm = 100, .tile = 16},
                    .value = value});
}

/// The list of these peaks, moved, in ppm or what a ppm is multiplied with.
std::string listSignals(double ppm1 = 0, double ppm2 = 0, double unit1 = 1, double unit2 = 1) {
  std::string text = examplePeakHeader();
  text.replace(text.find("{100} {50}"), 10, "{630} {60}");
  int number = 0;
  for (const auto& [i, j, height] : scatterSignals()) {
    const std::string name = std::to_string(++number);
    text += examplePeakLine({.number = name,
                             .label = std::string("L").append(name),
                             .ppm1 = std::to_string((6 + (191 - i) / 60 + ppm1) * unit1),
                             .width1 = std::to_string(0.08 * unit1),
                             .ppm2 = std::to_string((100 + (127 - j) / 6 + ppm2) * unit2),
                             .width2 = std::to_string(0.7 * unit2)});
  }
  return text;
}

constexpr std::array<float, 7> kFactors{1, 1, 0.8F, 0.65F, 0.5F, 0.4F, 0.8F};  // of planes 1 to 6; 6 repeats 2

Files makeDecay(float movedByPlane = 0) {
  Files files{{"peaks.xpk", listSignals()},
              {"run.par",
               "FIELD 630\nBOXSIZE 1\nPEAKLIST peaks.xpk\nTOLERANCE 0 0\nSPECTRUM p1 0\nSPECTRUM p2 1\nSPECTRUM p3 2\n"
               "SPECTRUM p4 3\nSPECTRUM p5 4\nSPECTRUM p6 1\n"}};
  for (std::uint32_t n = 1; n <= 6; ++n) {
    const Signals signals = scatterSignals(movedByPlane * static_cast<float>(n - 1));
    files[std::string("p").append(std::to_string(n))] = writeValues(makeValues(n, kFactors[n], signals));
  }
  return files;
}

/// Changes the values of plane 3, or of another one.
Damage change(const std::function<float(const Values&, int, int)>& changed, std::uint32_t n = 3) {
  const Values values = makeValues(n, kFactors[n], scatterSignals());
  return put(std::string("p").append(std::to_string(n)),
             writeValues([=](int i, int j) { return changed(values, i, j); }));
}

void expectLines(const std::string& name, const Files& files, const std::string& lines) {
  std::string found;
  std::istringstream all(findIn(files));
  for (std::string line; std::getline(all, line);) {
    if (!line.starts_with("peaks.xpk:") || line.find(" L") == std::string::npos) found += line + "\n";
  }
  EXPECT_EQ(fnmatch(lines.c_str(), found.c_str(), FNM_NOESCAPE), 0) << name << " gives\n"
                                                                    << found << "and not\n"
                                                                    << lines;
}

TEST(PeakboxCheck, NamesPlanesAndListsThatDoNotFit) {
  const auto lobes = [](int dim) { return put("p3", writeValues(makeValues(3, kFactors[3], scatterSignals(), dim))); };
  const Damage reversed{[](Files& files) {
    std::string& bytes = files["p3"];
    for (std::size_t i = 2048; i < bytes.size(); i += 4) std::reverse(&bytes[i], &bytes[i] + 4);
  }};
  const auto twice = [](const Values& values, int i, int j) { return 2 * values(i, j); };
  const auto invert = [](const Values& values, int i, int j) { return -values(i, j); };
  const auto clear = [](const Values& values, int i, int j) { return j > 40 && j < 60 ? 0 : values(i, j); };
  const auto listed = [](const std::string& text) { return put("peaks.xpk", text); };
  const std::string sign = ": warning: its peaks have the other sign than in all other spectra*\n";
  const Files healthy = makeDecay();
  const Row rows[] = {
      {"healthy", par("FIELD", "FIELD"), ""},
      {"scaled", change(twice), "p3: warning: its noise is * times that of most other spectra: *\n"},
      {"the first scaled", change(twice, 1), "p1: warning: its noise is * times that of most other spectra: *\n"},
      {"one FID twice", put("p3", writeValues(makeValues(2, 0.65F, scatterSignals()))),
       "p3: warning: its noise is that of p2, *the same FID*\n"},
      {"bytes reversed", reversed, "p3: error: magnitudes that no spectrum has*byte order*\n"},
      {"magnitude", change([](const Values& v, int i, int j) { return std::fabs(v(i, j)); }), "p3: *: magnitude *\n"},
      {"offset", change([](const Values& v, int i, int j) { return v(i, j) + 5; }), "p3: *: an offset; *\n"},
      {"reversed", change([](const Values& v, int i, int j) { return v(191 - i, j); }), "p3: *: another sample, *\n"},
      {"displaced", change([](const Values& v, int i, int j) { return v(i - 5, j); }),
       "p3: *: its peaks lie -0.08? ppm (+5 points) in dimension 1 from those of p1: *\n"},
      {"blanked", change(clear), "p3: *: the boxes of * of 30 peaks hold nothing but zeros: *\n"},
      {"out of phase", lobes(1), "p3: *a lobe of the other sign beside them in dimension 1: out of phase *\n"},
      {"out of phase in dimension 2", lobes(2), "p3: *a lobe of the other sign beside them in dimension 2: *\n"},
      {"inverted", change(invert), "p3" + sign},
      {"the first inverted", change(invert, 1), "p1" + sign},
      {"the last inverted", change(invert, 5), "p5" + sign},
      {"no repeat", par("p6 1", "p6 4"), "run.par:10: *p6 repeats p5 (4), but its intensities differ by +?? %:*\n"},
      {"exchanged parameters", par("p4 3", "p4 4") + par("p5 4", "p5 3"),
       "run.par:9: *order of the SPECTRUM lines, but not with the parameters (3 follows 4)*\n"},
      {"files in another order", par("p4 3", "p5 3") + par("p5 4", "p4 4"),
       "run.par:8: *order of the numbers in the names*, but not with the parameters (3 follows 4)*\n"},
      {"weakest first", par("SPECTRUM p5 4\n", "") + par("SPECTRUM p1", "SPECTRUM p5 4\nSPECTRUM p1"),
       "run.par:5: *p5, *, is the weakest spectrum, with ?? % of the height in p1: *\n"},
      {"list off", listed(listSignals(0.15, -1)),
       "peaks.xpk: *: the list is off: moved by -0.15? ppm (+9 points) in dimension 1 and +1.0?? ppm (-6 points) in "
       "*\n"},
      {"list in Hz", listed(listSignals(0, 0, 630, 60)),
       "peaks.xpk: *look like Hz (dimension 1) and Hz (dimension 2)*\n"},
      {"list in points", listed(listSignals(-6, -100, 60, 6)),
       "peaks.xpk: *look like points (dim*points (dimension 2)*\n"},
      {"list of 13C", listed(listSignals(0, -70)), "peaks.xpk: *look like ppm of another nucleus (dimension 2), *\n"},
      {"still boxes", par("TOLERANCE 0 0", "TOLERANCE 25 25"),
       "run.par:4: *TOLERANCE 25 25: the boxes of * of 30 peaks move although the peaks stay; TOLERANCE 0 0*\n"},
  };
  for (const auto& [name, damage, lines] : rows) {
    Files files = healthy;
    damage.apply(files);
    expectLines(name, files, lines);
  }
  expectLines("walking", makeDecay(1.6F), "run.par:4: *TOLERANCE 0 0 is too small: 1? of ?? peaks move out of it*\n");
  Files files = makeDecay(0.15F);
  par("TOLERANCE 0 0\n", "").apply(files);
  expectLines("below a point", files,
              "run.par: *10 10 (the default) is below a point of dimension 1 (10.5 Hz)*peaks move*\n");
}

}  // namespace

}  // namespace peakbox::test
