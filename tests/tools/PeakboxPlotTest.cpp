#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <tuple>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

using Files = std::map<std::string, std::string>;

const std::vector<double> kTimes{0.5, 0, 1, 2, 4};
// Intensities of A1 and, times -1, of B2, and their uncertainties.
const std::vector<double> kDecay{790, 1010, 640, 350, 160};
const std::vector<double> kNoise{10, 20, 10, 10, 20};

// A label with all that gnuplot could take for something else.
const std::string kHarmful = "B 2''`\"\\";

/// A series of single points, so that an intensity is the value of its point.
Files makeSeries(const std::vector<std::string>& parameters) {
  Files files{
      {"peaks.xpk", examplePeakHeader() + examplePeakLine({.number = "1", .label = "{A_1}"}) +
                        examplePeakLine({.number = "2", .label = "{" + kHarmful + "}", .ppm1 = "5", .ppm2 = "8"}) +
                        examplePeakLine({.number = "3", .label = "{noise3}", .ppm1 = "12", .ppm2 = "2"})}};
  std::string& settings = files["run.par"];
  settings = "PEAKLIST peaks.xpk\nBOXSIZE 0\nTOLERANCE 100 50\n";
  std::string& noise = files["noise"];
  noise = "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed\n";
  for (std::size_t k = 0; k < parameters.size(); ++k) {
    const std::string number = std::to_string(k + 1);
    Plane plane = examplePlane();
    plane.value = [k](int i, int j) {
      const auto height = static_cast<float>(kDecay[k]);
      if (i == 5 && j == 6) return height;
      if (i == 10 && j == 3) return -height;
      const bool isSlope = j == 10 && i > 9 && i < 13;
      return static_cast<float>(isSlope ? 100 * i : i * j % 7 - 3);
    };
    files[std::string("s").append(number)] = writePipe(plane);
    settings.append("SPECTRUM s").append(number).append(" ").append(parameters[k]).append("\n");
    noise.append(number).append("\t").append(std::to_string(kNoise[k])).append("\t1\t192\t190\n");
  }
  return files;
}

std::vector<std::string> kParameters{"0.5", "0", "1", "2", "4"};

std::string plot(const Files& files, const std::string& command) {
  return runExample(files, "sh -c 'peakbox -i run.par -o r && " + command + "'");
}

/// The sum of squares that the best A exp(-R t) of this R leaves.
double sumSquares(double rate, const std::vector<double>& uncertainties) {
  double above = 0;
  double below = 0;
  for (std::size_t k = 0; k < kTimes.size(); ++k) {
    const double shape = std::exp(-rate * kTimes[k]) / uncertainties[k];
    above += shape * kDecay[k] / uncertainties[k];
    below += shape * shape;
  }
  double sum = 0;
  for (std::size_t k = 0; k < kTimes.size(); ++k) {
    sum += std::pow((kDecay[k] - above / below * std::exp(-rate * kTimes[k])) / uncertainties[k], 2);
  }
  return sum;
}

/// A test of pictures needs what draws them and what reads them.
class PeakboxPlot : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("command -v gnuplot pdftotext pdfinfo >/dev/null") != 0)
      GTEST_SKIP() << "gnuplot or poppler is missing";
  }
};

TEST_F(PeakboxPlot, GivesTheRatesOfAnIndependentFit) {
  // kTimes in some unit and from some start, the unit, and whether the noise is given.
  const std::tuple<std::vector<std::string>, double, bool> rows[] = {
      {kParameters, 1, true}, {kParameters, 1, false}, {{"9500", "9000", "10000", "11000", "13000"}, 1000, true}};
  for (const auto& [parameters, unit, hasNoise] : rows) {
    const std::vector<double> weights = hasNoise ? kNoise : std::vector<double>(kTimes.size(), 1.0);
    double best = 0.01;
    for (double rate = 0.01; rate < 3; rate += 1e-5) {
      if (sumSquares(rate, weights) < sumSquares(best, weights)) best = rate;
    }
    const double least = sumSquares(best, weights);
    const double step = 1e-3;
    const double curvature =
        (sumSquares(best + step, weights) - 2 * least + sumSquares(best - step, weights)) / (step * step);
    const double error = std::sqrt(2 / curvature * (hasNoise ? 1 : least / 3));

    // A user's own settings of gnuplot do not count.
    const std::string end =
        plot(makeSeries(parameters), std::string("echo set datafile separator comma >.gnuplot; HOME=. peakbox-plot ") +
                                         (hasNoise ? "-n noise" : "") + " -f run.par r o.pdf");
    const std::string start = outcome(
        0, "", "(no file)",
        std::string("# Label\tRate\tError") + (hasNoise ? "" : " (from the scatter)") + "\tChi2\tDegreesOfFreedom\n");
    ASSERT_TRUE(end.starts_with(start)) << end;
    std::istringstream lines(end.substr(start.size()));
    for (const std::string& label : {std::string("A_1"), kHarmful}) {
      std::string found;
      std::string line;
      std::getline(lines, found, '\t');
      std::getline(lines, line);
      EXPECT_EQ(found, label);
      std::istringstream numbers(line);
      double values[4] = {};
      for (double& value : values) numbers >> value;
      EXPECT_NEAR(values[0] * unit, best, 1e-4);
      EXPECT_NEAR(values[1] * unit / error, 1, 0.02);
      EXPECT_NEAR(values[2] / least, 1, 1e-4);
      EXPECT_EQ(values[3], 3);
      EXPECT_TRUE(numbers.eof());
    }
  }
}

TEST_F(PeakboxPlot, RemarksOnFitsThatShowNothing) {
  const std::string head = "# Label\tRate\tError (from the scatter)\tChi2\tDegreesOfFreedom\n";
  const std::string few = "\tfewer than three distinct parameters\n";
  EXPECT_EQ(plot(makeSeries({"1", "1.0", "1"}), "peakbox-plot -f run.par r o.pdf"),
            outcome(0, "", "(no file)", head + "A_1\tnan\tnan\tnan\t1" + few + kHarmful + "\tnan\tnan\tnan\t1" + few));
  const std::string end = plot(makeSeries({"0", "0", "1", "1"}), "peakbox-plot -f run.par r o.pdf | grep -c few");
  EXPECT_EQ(end, outcome(0, "", "(no file)", "2\n"));
}

TEST_F(PeakboxPlot, HasAPageForTwelvePeaks) {
  Files files = makeSeries({"a", "b"});
  files["peaks.xpk"] += examplePeakLine({.label = "{flank}", .ppm1 = "4", .width1 = "0.5", .ppm2 = "1"});
  for (int n = 0; n < 9; ++n) files["peaks.xpk"] += examplePeakLine({.number = "9", .label = "{twin}"});
  EXPECT_EQ(plot(files,
                 "peakbox-plot run.par r o.pdf && pdfinfo o.pdf | grep Pages | tr -d \" \"; pdftotext o.pdf text; "
                 "for t in A_1 noise3 \"D1 (ppm), 100 MHz\" \"same point as A_1, spectrum 1\" "
                 "\"same point as twin, spectrum 1\" \"edge of search area, spectrum 1\" "
                 "spectrum \"first: a\" \"last: b\"; do grep -qF \"$t\" text || "
                 "echo no $t; done"),
            outcome(0, "", "(no file)", "Pages:3\n"));
  for (const std::string format : {"png", "svg"}) {
    EXPECT_EQ(plot(files, "peakbox-plot -n noise run.par r o." + format + " && ls o-*"),
              outcome(0, "", "(no file)", "o-1." + format + "\no-2." + format + "\no-3." + format + "\n"));
  }
}

TEST_F(PeakboxPlot, RefusesWhatIsNotOfTheRun) {
  const std::string other = ": this is the report of another run, or its files have changed since";
  const std::pair<std::string, std::string> rows[] = {
      {"sed -i s/790/791/ r", "r: line 4 is not what a run of run.par writes" + other},
      {"echo >>r", "r: line 36 is not what a run of run.par writes" + other},
      {"head -n 8 r >x && mv x r", "r: is incomplete: it ends within the run of run.par"},
      {"rm r", "r: cannot be read"},
      {"head -n 3 noise >x && mv x noise", "noise: has the noise of 2 spectra, and the run has 5"},
      {"head -c -3 noise >x && mv x noise", "noise: line 6: not a whole line of peakbox-noise"},
      {"sed -i s/192/91/ noise", "noise: line 2: the noise of boxes of another size, or of other spectra"},
      {": >r", "r: is incomplete: it ends within the run of run.par"},
      {"mkdir o.pdf", "o.pdf: cannot be written"},
      {"sed -i \"s/ 0[.]5/ 5ms/\" run.par r",
       "run.par: the parameter '5ms' of spectrum 1 is not a number, and -f needs one"},
  };
  for (const auto& [damage, message] : rows) {
    EXPECT_EQ(
        plot(makeSeries(kParameters), damage + "; peakbox-plot -n noise -f run.par r o.pdf; echo $?; test -f o.pdf"),
        outcome(1, "peakbox-plot: " + message + "\n", "(no file)", "1\n"))
        << damage;
  }
  EXPECT_EQ(plot(makeSeries(kParameters), "rm s4; peakbox-plot run.par r o.pdf; test -f o.pdf"),
            outcome(1, "Unable to open datafile s4\n"));
  for (const std::string arguments : {"run.par r", "-x run.par r o.pdf", "run.par r o.ps"}) {
    const std::string reason = arguments.ends_with(".ps") ? "o.ps: the ending must be .pdf, .png or .svg\n" : "";
    EXPECT_EQ(runExample({}, "peakbox-plot " + arguments),
              outcome(2, (reason.empty() ? "" : "peakbox-plot: " + reason) +
                             "usage: peakbox-plot [-n NOISE] [-f] PARAMETER-FILE REPORT OUTPUT.(pdf|png|svg)\n"));
  }
}

}  // namespace peakbox::test
