#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Files = std::map<std::string, std::string>;

// Intensities of A, their uncertainties, and times.
const std::vector<double> kDecay{790, 1010, 640, 350, 160};
const std::vector<double> kNoise{10, 20, 10, 10, 20};
const std::vector<double> kTimes{0.5, 0, 1, 2, 4};
const std::string kHarmful = "B 2''`\"\\@red";  // which gnuplot could take for something else

double fit(std::size_t k) { return 1000 * std::exp(-0.5 * kTimes[k]); }

/// The value of a point in spectrum k. C is twice as high as A, but in the third spectrum both are found between them,
/// nearer to the listed place of C.
/// B is A turned over, and one point farther on in the last spectrum.
double valueAt(std::size_t k, int i, int j) {
  const double height = kDecay[k];
  if (j == 6 && i >= 5 && i <= 7) return k == 2 ? (i == 6) * height : (i == 5) * height + (i == 7) * 2 * height;
  if (j == 3 && i == (k == 4 ? 11 : 10)) return -height;
  return i == 3 && j == 9 ? 60 : 2 * ((i * i + j * j * j) % 5 % 3 - 1);
}

/// Runs a command with a series of single points, and a gnuplot that keeps what it gets.
std::string plot(const std::string& command, const std::vector<double>& times = kTimes, const Files& more = {}) {
  Files files{
      {"gnuplot", "#!/bin/sh\ncat \"$2\" >text\necho %%EOF\n"},
      {"run.par", "PEAKLIST peaks.xpk\nBOXSIZE 0\nTOLERANCE 100 50\n"},
      {"noise", "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n"},
      {"rates",
       "Num\tLabel\tR\tR_err\tR_scaled\tA\tA_err\tChi2\tDof\tRemark\n"
       "1\tA\u03b2\t0.5\t0.01\t0.0213\t1000\t12\t17.4238\t3\tpoor fit\n22\t" +
           kHarmful + "\tnan\tnan\tnan\tnan\tnan\tnan\t3\t\n4\tC\tnan\tnan\tnan\tnan\tnan\tnan\t3\t\n"},
      {"peaks.xpk", examplePeakHeader() + examplePeakLine({.number = "1", .label = "A\u03b2"}) +
                        examplePeakLine({.number = "22", .label = "{" + kHarmful + "}", .ppm1 = "5", .ppm2 = "8"}) +
                        examplePeakLine({.number = "3", .label = "noise3", .ppm1 = "12", .ppm2 = "2"}) +
                        examplePeakLine({.number = "4", .label = "C", .ppm1 = "8.4"})}};
  for (std::size_t k = 0; k < times.size(); ++k) {
    const std::string number = std::to_string(k + 1);
    Plane plane = examplePlane();
    plane.value = [k](int i, int j) { return static_cast<float>(valueAt(k, i, j)); };
    files[std::string("s").append(number)] = writePipe(plane);
    files["run.par"] += "SPECTRUM s" + number + " " + std::to_string(times[k]) + "\n";
    files["noise"] += number + "\t" + std::to_string(kNoise[k]) + "\t1\t1\t1\t1x1\ts" + number + "\n";
  }
  for (const auto& [name, text] : more) files[name] += text;
  return runExample(files, "sh -c 'chmod +x gnuplot; peakbox -i run.par -o r; " + command + "'");
}

/// What stands between a start and an end in all lines of a text that have these.
std::string findBetween(const std::string& text, const std::string& start, const std::string& end) {
  std::string found;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const bool isOne = line.starts_with(start) && line.ends_with(end);
    if (isOne) found += line.substr(start.size(), line.size() - start.size() - end.size()) + "; ";
  }
  return found;
}

TEST(PeakboxPlot, GivesGnuplotWhatIsMeasured) {
  const std::string text = plot("PATH=.:$PATH peakbox-plot -n noise -f rates run.par r o.pdf && cat text");
  // Point i of dimension 1 lies at 15 - i ppm, j of dimension 2 at 11 - j. A comes first, as it is in trouble, in the
  // first, the third and the last spectrum; the others are drawn in the first and in the last one.
  const std::string a = "10.5,5.5 to 9.5,4.5; 9.5,5.5 to 8.5,4.5; 10.5,5.5 to 9.5,4.5; ";
  const std::string c = "8.5,5.5 to 7.5,4.5; 8.5,5.5 to 7.5,4.5; ";
  const std::string bAndNoise = "5.5,8.5 to 4.5,7.5; 4.5,8.5 to 3.5,7.5; 12.5,2.5 to 11.5,1.5; 12.5,2.5 to 11.5,1.5; ";
  const std::string same = "C, in 1 of 5 spectra; poor fit; ";
  const std::string box = "set object rectangle from ";
  const std::string border = " clip fillstyle empty border @";
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"boxes of cells", box, border + "own", a + a + bAndNoise + c},
      {"boxes of the map", box, border + "calm", "5.5,8.5 to 4.5,7.5; 12.5,2.5 to 11.5,1.5; 8.5,5.5 to 7.5,4.5; "},
      {"its box in trouble", box, border + "troubled", "10.5,5.5 to 9.5,4.5; "},
      {"search areas of B", box + "6,9", border + "area", " to 4,7;  to 4,7; "},
      {"across", "set xrange [1", "]", "2.9:4.1; 6:4; 6:4; 6:4; 6:4; 6:4; 6:4; 1:-1; 1:-1; 8:6; 8:6; 4:2; 4:2; "},
      {"up", "set yrange [8", "]", ".85:1.15; :-4; :-4; "},
      // B, -790, has its first contour at -63.2, 8 % of it: 61.2 / 788 of the way from a neighbour of -2, 0.08 from one
      // of 0. It is seen three times at this level, from A twice.
      {"contour of B, left", "5.92234 ", "", "8 -1; 8 -1; 8 -1; "},
      {"contour of B, right", "4.07766 ", "", "8 -1; 8 -1; 8 -1; "},
      {"contour of B, below, where it begins and ends", "5 8.92234 ", "", "-1; -1; -1; -1; -1; -1; "},
      {"contour of B, above, as in the third spectrum", "5 7.08 ", "", "-1; -1; -1; -1; -1; "},
      {"line to A", "set arrow from graph 0.38636", "middle",
       "3636364,0.5 to graph 0.440936363636,0.5 back nohead linecolor rgb ; "},
      {"spectra", "title = \"no. 3: 1", "\"", ".000000; .000000; "},
      {"names", "name = \"22   B", "\"", " 2''\\140\\042\\134@red; "},
      {"remarks", "remark = \"same point as ", "\"", same + same},
      {"peaks in trouble", "foot = \"in", "", " trouble: A\u03b2\"; "},
      {"rate", "result = 'R = 0.500 \u00b1 0.021,  \u03c7\u00b2/dof = ", "'", "5.81; 5.81; "},
      {"start of the fit", "0 1000", "", "; ; "},
  };
  for (const auto& [name, start, end, expected] : rows) EXPECT_EQ(findBetween(text, start, end), expected) << name;
  for (std::size_t k = 0; k < kTimes.size(); ++k) {
    std::ostringstream start;
    start << kTimes[k] << " " << kDecay[k] << " " << kNoise[k] << " ";
    const std::string residual = findBetween(text, start.str(), k == 2 ? " 1" : " 0");
    EXPECT_NEAR(std::strtod(residual.c_str(), nullptr), kDecay[k] - fit(k), 1e-6) << "residual " << k;
  }
  // A and B differ by 220 between two spectra at 0, C by 440: 2 (2 x 110^2 + 220^2) / 3 is the square of 220.
  const std::string ofRepeats = plot("PATH=.:$PATH peakbox-plot -r run.par r o.pdf && cat text", {0, 0, 1, 2, 4});
  EXPECT_EQ(findBetween(ofRepeats, "1 640 ", " 0 1"), "220; 220; ");
}

TEST(PeakboxPlot, DrawsWhatPeakboxRatesFound) {
  const std::string draw = "peakbox-plot -n noise -f rates run.par r o.pdf && cat text";
  if (plot("command -v peakbox-rates").find("peakbox-rates") == std::string::npos) GTEST_SKIP() << "no peakbox-rates";
  // In spectrum 2, the reference, A has 1010 +- 20. The ratio of 160 +- 20 is 0.158416, its error the root of 400 and
  // 400 times its square over 1010; its effective rate at a time of 0.5 is 3.68506, with twice the error over the
  // ratio. B is A turned over, C has twice as much with the same noise. They come as A in trouble, C of all peaks, A, B
  // and C.
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"-m ratio -z 2", "4 0.158416 ", "",
       "0.0200489 0 0; 0.0100245 0 0; 0.0200489 0 0; 0.0200489 0 0; 0.0100245 0 0; "},
      {"-m r2eff -z 2 -T 0.5", "4 3.68506 ", "",
       "0.253118 0 0; 0.126559 0 0; 0.253118 0 0; 0.253118 0 0; 0.126559 0 0; "},
      {"-m r2eff -z 2 -T 0.5", "foot = \"red: in", "", " trouble or with a remark; triangles: beyond the range\"; "},
      {"-m recovery", "ordinate = 'R", "'", " (in the inverse of the unit of the parameters); "},
  };
  for (const auto& [options, start, end, expected] : rows) {
    const std::string text = plot("PATH=.:$PATH; peakbox-rates " + options + " -n noise r >rates; " + draw);
    EXPECT_EQ(findBetween(text, start, end), expected) << options;
  }
  for (const std::string options : {"-m ratio -z 2", "-m r2eff -z 2 -T 0.5", "-m recovery"}) {
    const std::string text = plot("PATH=.:$PATH; sed -i s/10/11/ noise; peakbox-rates " + options +
                                  " -n noise r >rates; sed -i s/11/10/ noise; " + draw);
    EXPECT_NE(text.find(options == "-m recovery" ? "gives another Chi2" : "gives another ratio"), std::string::npos);
  }
}

TEST(PeakboxPlot, DrawsAllPages) {
  if (std::system("command -v gnuplot pdftotext pdfinfo >/dev/null") != 0) GTEST_SKIP() << "no gnuplot or poppler";
  Files more{{"labels", "A\u03b2\n" + kHarmful + "\nnoise3\n"}};
  for (int n = 0; n < 10; ++n) {
    const std::string label = "noise-" + std::to_string(n);
    more["peaks.xpk"] +=
        examplePeakLine({"9", label, std::to_string(14 - 3 * (n % 5)), "0.2", n < 5 ? "10" : "0", "0.2", ""});
    more["labels"] += label + "\n";
  }
  // The parameters come through a pipe, and a user's own settings of gnuplot do not count. All cells follow the map and
  // the page of peaks in trouble.
  const std::string command =
      "rm gnuplot; echo set datafile separator comma >.gnuplot; export HOME=$PWD GNUTERM=none; "
      "cat run.par | peakbox-plot /dev/stdin r o.pdf; pdfinfo o.pdf | grep -o Pages.*; pdftotext -f 3 o.pdf t; "
      "while read -r label; do grep -qF \"$label\" t || echo no $label; done <labels; pdftotext -l 1 o.pdf t; "
      "grep -F -e \"page 1 of\" -e \"D1 (ppm)\" t";
  EXPECT_EQ(plot(command, kTimes, more),
            outcome(0, "", "(no file)", "Pages:           4\nD1 (ppm), 100 MHz\npage 1 of 4\n"));
}

TEST(PeakboxPlot, LeavesNothingOfWhatFails) {
  const std::tuple<std::string, std::string, int> rows[] = {
      {"sed -i s/790/791/ r",
       "r: line 4 is not what a run of run.par writes: this is the report of another run, or its files have changed "
       "since",
       1},
      {"head -n 8 r >x; mv x r", "r: is incomplete: it ends within the run of run.par", 1},
      {"rm r", "r: cannot be read", 1},
      {"head -n 3 noise >x; mv x noise", "noise: has the noise of 2 spectra, and r has 5 spectra", 1},
      {"sed -i s/1x1/1x3/ noise", "noise: line 2: the noise of another box; run peakbox-noise again", 1},
      {"sed -i \"s/ 0[.]5/ 5ms/\" run.par r",
       "r: the parameter \"5ms00000\" of spectrum 1 is not a number, and -f needs one", 1},
      {"sed -i s/^4/5/ rates", "rates: line 4: not that of peak 4 of r", 1},
      {"sed -i s/1000/1001/ rates", "rates: line 2: r gives another Chi2 with these uncertainties", 1},
      {"ln s4 o.pdf", "o.pdf: is the input s4", 1},
      {"mkdir o.pdf", "o.pdf: cannot be written", 1},
      {"echo \"echo oops >&2; exit 1\" >gnuplot", "gnuplot: oops", 1},
      {"echo echo half >gnuplot", "gnuplot: ended early", 1},
      {"none=/none", "gnuplot: cannot be run; the Debian package is gnuplot-nox", 1},
      {"echo kill -TERM \\$PPID >gnuplot", "", 143},
  };
  for (const auto& [damage, message, status] : rows) {
    EXPECT_EQ(plot("p=$(command -v peakbox-plot); " + damage +
                   "; touch a e text; ls >a; PATH=${none-.:$PATH} "
                   "$p -n noise -f rates run.par r o.pdf & wait $! 2>e; echo $?; ls | diff a -"),
              outcome(0, message.empty() ? "" : "peakbox-plot: " + message + "\n", "(no file)",
                      std::to_string(status) + "\n"))
        << damage;
  }
  for (const std::string arguments : {"run.par r", "run.par r o.ps", "-n noise -r run.par r o.pdf"}) {
    const std::string usage = "usage: peakbox-plot [-n NOISE | -r] [-f RATES] PARAMETER-FILE REPORT OUTPUT.pdf\n";
    EXPECT_EQ(runExample({}, "peakbox-plot " + arguments), outcome(2, usage)) << arguments;
  }
}

}  // namespace
}  // namespace peakbox::test
