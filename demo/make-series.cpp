// make-series FOLDER [SEED [KIND [NOISE]]]: writes a synthetic relaxation series whose decay rates are known, with
// other noise for each SEED, which is 2 where none is given. The KIND is sparse, with the peaks that are listed and
// nothing else, or crowded, with many others between them, or ridge, with one of water; NOISE is that of a point, 1000.
// There is one plane for each delay, as an NMRPipe file in the machine's byte order and as an NMRView file in the other
// one; with them go the peak list, a parameter file for either format, and the known rates. The same planes and peaks
// stand in a cube, a list of delays and a list of another kind, as they may come from elsewhere. In planes of
// their own every third of the peaks walks, as in a titration. Series of other kinds with the same peaks
// have a folder each. Where a KIND is given there is only the series itself.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/TextNumbers.h"
#include "demo/SpectrumWriter.h"
#include "peaks/PeakListWriter.h"

namespace {

/// One dimension of the planes. ppm falls as the 0-based point rises; `originPpm` lies one point before point 0.
struct Axis {
  std::string_view name;
  int points;
  double observeMHz;
  double sweepHz;
  double originPpm;
  double lineWidth;    // standard deviation of a line, in points
  double searchWidth;  // full width of a peak's bounds in the peak list, in points
  int tilePoints;

  double ppmPerPoint() const { return sweepHz / observeMHz / points; }
  double ppm(double point) const { return originPpm - (point + 1) * ppmPerPoint(); }
};

/// A decaying line, or with height 0 a place without signal. Positions are 0-based points; one outside the plane is
/// seen folded into it.
struct Line {
  std::string_view label;
  double point1;
  double point2;
  double height;
  double ratePerSecond;
};

using Plane = std::vector<double>;

// Every axis value is exact in single precision, so both formats give the same ppm to the last digit.
constexpr Axis kAxis1{.name = "H1",
                      .points = 256,
                      .observeMHz = 600.0,
                      .sweepHz = 2700.0,
                      .originPpm = 10.5,
                      .lineWidth = 2.0,
                      .searchWidth = 10.0,
                      .tilePoints = 48};
constexpr Axis kAxis2{.name = "N15",
                      .points = 128,
                      .observeMHz = 60.8125,
                      .sweepHz = 1581.125,
                      .originPpm = 131.0,
                      .lineWidth = 1.5,
                      .searchWidth = 8.0,
                      .tilePoints = 20};

/// A series of another kind: the words behind its spectra, and the share of its height that a line has there.
struct Kind {
  std::string name;
  std::string comment;
  std::vector<std::string> words;
  double (*share)(const Line& line, const std::string& word);
};

double recover(const Line& line, const std::string& word) {
  return 1 - 2 * std::exp(-line.ratePerSecond * peakbox::textToReal(word.c_str()));
}

double enhance(const Line& line, const std::string& word) { return word == "sat" ? 1 - line.ratePerSecond / 20 : 1; }

/// A dip at 100 Hz and, of lines that decay fast, a small one at -200 Hz.
double saturate(const Line& line, const std::string& word) {
  const double offset = peakbox::textToReal(word.c_str());
  const auto dip = [&](double place) { return std::exp(-std::pow((offset - place) / 60, 2)); };
  return word == "-12000" ? 1 : 0.85 * (1 - 0.9 * dip(100) - (line.ratePerSecond > 5 ? 0.3 * dip(-200) : 0));
}

/// Effective rates fall from twice the rate to the rate itself, within 40 ms.
double disperse(const Line& line, const std::string& word) {
  const double exchange = 1 / (1 + std::pow(peakbox::textToReal(word.c_str()) / 200, 2));
  return word == "0" ? 1 : std::exp(-0.04 * line.ratePerSecond * (1 + exchange));
}

constexpr std::array<double, 4> kDelaysSeconds{0.01, 0.05, 0.12, 0.25};

constexpr std::array<Line, 12> kLines{{
    {"T7", 100.3, 74.3, 70e3, 5.0},
    {"G10", 150.9, 105.3, 85e3, 1.0},
    {"I13", 54.8, 14.3, 60e3, 8.0},
    {"G35", 113.9, 106.8, 65e3, 3.0},
    {"I44", 79.8, 41.3, 75e3, 6.5},
    {"A46", 86.6, -9.4, 70e3, 10.0},
    {"K48", 142.9, 41.8, 80e3, 2.2},
    {"L50", 111.1, 24.1, 90e3, 12.0},
    {"Y59", 132.1, 71.9, 55e3, 1.5},
    {"E64", 68.4, 78.3, 65e3, 4.0},
    {"noise1", 190.0, 95.0, 0.0, 0.0},
    {"noise2", 205.0, 30.0, 0.0, 0.0},
}};

constexpr std::array<double, 6> kRatios{0, 0.25, 0.5, 1, 1.5, 2};  // of ligand to protein
constexpr std::array<double, 2> kWalkPoints{3.2, -2.2};            // of every third peak, from plane to plane
constexpr double kNoise = 1e3;  // standard deviation of a data point, unless another is asked for

std::size_t toIndex(int number) { return static_cast<std::size_t>(number); }

/// Index of a point in a plane; points beyond an edge are those at the opposite one.
std::size_t at(int i, int j) {
  const int column = (i + kAxis1.points) % kAxis1.points;
  const int row = (j + kAxis2.points) % kAxis2.points;
  return toIndex(row * kAxis1.points + column);
}

Plane emptyPlane() { return Plane(toIndex(kAxis1.points * kAxis2.points)); }

/// The sum of twelve uniform numbers: unlike std::normal_distribution it gives the same values with every library.
double gaussian(std::mt19937& generator) {
  double sum = -6.0;
  for (int k = 0; k < 12; ++k) {
    sum += static_cast<double>(generator()) / 4294967296.0;
  }
  return sum;
}

/// Weights 1, 4, 6, 4, 1 along the direction (di, dj).
Plane smoothed(const Plane& plane, int di, int dj) {
  Plane result = emptyPlane();
  for (int j = 0; j < kAxis2.points; ++j) {
    for (int i = 0; i < kAxis1.points; ++i) {
      result[at(i, j)] = (6.0 * plane[at(i, j)] + 4.0 * (plane[at(i - di, j - dj)] + plane[at(i + di, j + dj)]) +
                          plane[at(i - 2 * di, j - 2 * dj)] + plane[at(i + 2 * di, j + 2 * dj)]) /
                         16.0;
    }
  }
  return result;
}

/// Noise that neighbouring points share, as window functions and zero filling leave it in real planes.
Plane makeNoise(double deviation, std::mt19937& generator) {
  Plane noise = emptyPlane();
  for (double& value : noise) {
    value = gaussian(generator);
  }
  noise = smoothed(smoothed(noise, 1, 0), 0, 1);
  const double shrinkage = (1.0 + 16.0 + 36.0 + 16.0 + 1.0) / 256.0;  // of the standard deviation, by both passes
  for (double& value : noise) {
    value *= deviation / shrinkage;
  }
  return noise;
}

/// Gaussian shape of height 1 at `distance` points from the centre or from its nearest folded image.
double lineShape(double distance, const Axis& axis) {
  const double widths = std::remainder(distance, axis.points) / axis.lineWidth;
  return std::exp(-0.5 * widths * widths);
}

/// Adds what lies in the plane besides the listed peaks: 50 lines with the feet of Lorentzian ones, 50 to 1000 times as
/// high as the noise, or a ridge along the indirect dimension. They are the same at all delays, but for their decay.
void addClutter(Plane& plane, std::string_view kind, double delaySeconds, std::mt19937 generator) {
  const auto draw = [&](double from, double to) {
    return from + (to - from) * (static_cast<double>(generator()) / 4294967296.0);
  };
  const auto add = [&](double point1, double width1, const std::function<double(int)>& along, double height) {
    for (int j = 0; j < kAxis2.points; ++j) {
      for (int i = 0; i < kAxis1.points; ++i) {
        const double distance = std::remainder(i - point1, kAxis1.points) / width1;
        plane[at(i, j)] += height * along(j) / (1 + distance * distance);
      }
    }
  };
  for (int n = 0; kind == "crowded" && n < 50;) {
    const double point1 = draw(0, kAxis1.points);
    const double point2 = draw(0, kAxis2.points);
    const double height = kNoise * 50 * std::pow(20, draw(0, 1)) * std::exp(-draw(1, 12) * delaySeconds);
    const bool isNearPeak = std::any_of(kLines.begin(), kLines.end(), [&](const Line& line) {
      return std::fabs(std::remainder(point1 - line.point1, kAxis1.points)) < kAxis1.searchWidth &&
             std::fabs(std::remainder(point2 - line.point2, kAxis2.points)) < kAxis2.searchWidth;
    });
    if (isNearPeak) continue;
    ++n;
    add(
        point1, 0.5 * kAxis1.lineWidth,
        [&](int j) {
          return 1 / (1 + std::pow(std::remainder(j - point2, kAxis2.points) / (0.5 * kAxis2.lineWidth), 2));
        },
        height);
  }
  const double phase = draw(0, 6.28);
  if (kind == "ridge")
    add(
        180, 4, [&](int j) { return 1 + 0.3 * std::sin(0.15 * j + phase); }, 100 * kNoise);
}

double decay(const Line& line, double seconds) { return std::exp(-line.ratePerSecond * seconds); }

/// A plane in which each line has a share of its height, after so many steps on the peaks' walk.
template <typename Share>
Plane makePlane(const Share& share, double noise, std::mt19937& generator, double steps = 0) {
  Plane plane = makeNoise(noise, generator);
  for (std::size_t k = 0; k < kLines.size(); ++k) {
    Line line = kLines[k];
    const double way = k % 3 == 0 ? steps : 0.0;
    line.point1 += way * kWalkPoints[0];
    line.point2 += way * kWalkPoints[1];
    const double height = line.height * share(line);
    for (int j = 0; j < kAxis2.points; ++j) {
      for (int i = 0; i < kAxis1.points; ++i) {
        plane[at(i, j)] += height * lineShape(i - line.point1, kAxis1) * lineShape(j - line.point2, kAxis2);
      }
    }
  }
  return plane;
}

peakbox::demo::Axis fileAxis(const Axis& axis) {
  return {.size = axis.points,
          .observeMHz = static_cast<float>(axis.observeMHz),
          .sweepWidthHz = static_cast<float>(axis.sweepHz),
          .lastPpm = static_cast<float>(axis.ppm(axis.points - 1)),
          .tile = axis.tilePoints,
          .name = std::string(axis.name)};
}

/// Neither tile size divides the plane, so the last tiles of an NMRView file are padded.
peakbox::demo::Plane filePlane(const Plane& plane, bool swapped) {
  return {.direct = fileAxis(kAxis1),
          .indirect = fileAxis(kAxis2),
          .value = [&plane](int i, int j) { return static_cast<float>(plane[at(i, j)]); },
          .swapped = swapped,
          .unused = 0};
}

std::string makePeakList() {
  const peakbox::Axes axes{.sizes = {kAxis1.points, kAxis2.points},
                           .observeMHz = {kAxis1.observeMHz, kAxis2.observeMHz},
                           .hzPerPoint = {kAxis1.sweepHz / kAxis1.points, kAxis2.sweepHz / kAxis2.points},
                           .originPpm = {kAxis1.originPpm, kAxis2.originPpm}};
  std::string text = peakbox::writeListHeader(axes, {std::string(kAxis1.name), std::string(kAxis2.name)}, "synthetic");
  int number = 0;
  for (const Line& line : kLines) {
    ++number;
    const double offset = number % 2 == 0 ? 0.8 : -0.7;  // picked by hand, the positions are a little off the maxima
    const auto inBoth = [](double (*value)(const Axis&)) -> std::array<std::string, 2> {
      return {peakbox::realToText(value(kAxis1)), peakbox::realToText(value(kAxis2))};
    };
    text += peakbox::writeListLine(
        {.number = number,
         .label = std::string(line.label),
         .ppm = {peakbox::realToText(kAxis1.ppm(line.point1 + offset)),
                 peakbox::realToText(kAxis2.ppm(line.point2 - offset))},
         .bounds = inBoth([](const Axis& axis) { return axis.searchWidth * axis.ppmPerPoint(); }),
         .lineWidth = inBoth([](const Axis& axis) { return 2.355 * axis.lineWidth * axis.ppmPerPoint(); })});
  }
  return text;
}

std::string spectrumFile(const std::string& format, std::size_t plane) {
  return format + "-" + std::to_string(plane + 1) + (format == "view" ? ".nv" : ".ft2");
}

/// Boxes of 5 x 3 points, in all planes of a decay at the points found in the first.
std::string makeParameterFile(const std::string& format) {
  const bool isTitration = format == "titration";
  std::ostringstream text;
  text << "# The third word of a SPECTRUM line is the "
       << (isTitration ? "ratio of ligand to protein" : "relaxation delay in seconds") << ".\nFIELD "
       << kAxis1.observeMHz << "\nBOXSIZE 2 1\nPEAKLIST peaks.xpk\nTOLERANCE " << (isTitration ? "63 50" : "0 0")
       << '\n';
  const std::vector<double> values = isTitration ? std::vector<double>(kRatios.begin(), kRatios.end())
                                                 : std::vector<double>(kDelaysSeconds.begin(), kDelaysSeconds.end());
  for (std::size_t k = 0; k < values.size(); ++k) {
    text << "SPECTRUM " << spectrumFile(format, k) << ' ' << values[k] << '\n';
  }
  return text.str();
}

std::string makeRates() {
  std::ostringstream text;
  text << "# Label\tRate(1/s)\n";
  for (const Line& line : kLines) {
    if (line.height > 0) {
      text << line.label << '\t' << line.ratePerSecond << '\n';
    }
  }
  return text.str();
}

/// All planes as one pseudo-three-dimensional file, whose indirect dimension is axis number 3 and whose delays are axis
/// number 1.
std::string makeCube(const std::vector<Plane>& planes) {
  using peakbox::demo::putReal;
  std::string bytes;
  for (const Plane& plane : planes) {
    const std::string file = writePipe(filePlane(plane, false));
    bytes += bytes.empty() ? file : file.substr(2048);
  }
  constexpr std::array<std::pair<std::size_t, std::size_t>, 3> kMoved{{{229, 11}, {249, 12}, {218, 10}}};
  for (const auto& [from, to] : kMoved) {
    bytes.replace(4 * to, 4, bytes, 4 * from, 4);
    putReal(bytes, 4 * from, 0, false);
  }
  const auto planeCount = static_cast<float>(planes.size());
  const std::array<std::pair<std::size_t, float>, 7> words{
      {{9, 3.0F}, {25, 3.0F}, {26, 1.0F}, {15, planeCount}, {13, 1.0F}, {222, 0.0F}, {51, 1.0F}}};
  for (const auto& [word, value] : words) putReal(bytes, 4 * word, value, false);
  bytes.replace(std::size_t{4} * 20, 3, bytes, std::size_t{4} * 18, 3);
  bytes.replace(std::size_t{4} * 18, 3, "TAU");
  return bytes;
}

std::string makeDelayList() {
  std::ostringstream text;
  for (const double delay : kDelaysSeconds) text << 1000 * delay << "m\n";
  return text.str();
}

std::string makeSparkyList() {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << "      Assignment         w1         w2\n\n";
  for (const Line& line : kLines) {
    if (line.height == 0) continue;
    text << std::setw(16) << std::string(line.label) + "N-HN" << std::setw(11) << kAxis2.ppm(line.point2)
         << std::setw(11) << kAxis1.ppm(line.point1) << '\n';
  }
  return text.str();
}

void write(const std::filesystem::path& path, const std::string& content) {
  std::ofstream stream(path, std::ios::binary);
  stream << content << std::flush;
  if (!stream) {
    std::cerr << "make-series: cannot write " << path << '\n';
    std::exit(1);
  }
}

/// The planes of a series and its parameter file; of peaks that stay where they are the boxes do not move.
void writeKind(const std::filesystem::path& folder, const Kind& kind, std::mt19937& generator) {
  std::ostringstream text;
  text << "# " << kind.comment << "\nFIELD " << kAxis1.observeMHz
       << "\nBOXSIZE 2 1\nPEAKLIST peaks.xpk\nTOLERANCE 0 0\n";
  std::error_code error;
  std::filesystem::create_directories(folder / kind.name, error);
  for (std::size_t k = 0; k < kind.words.size(); ++k) {
    const std::string file = kind.name + "/" + std::to_string(k + 1) + ".ft2";
    const Plane plane = makePlane([&](const Line& line) { return kind.share(line, kind.words[k]); }, kNoise, generator);
    write(folder / file, writePipe(filePlane(plane, false)));
    text << "SPECTRUM " << file << ' ' << kind.words[k] << '\n';
  }
  write(folder / (kind.name + ".par"), text.str());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2 || argumentCount > 5) {
    std::cerr << "usage: make-series FOLDER [SEED [sparse|crowded|ridge [NOISE]]]\n";
    return 1;
  }
  const std::filesystem::path folder = arguments[1];
  std::error_code error;  // a folder that cannot be made shows when the first file is written
  std::filesystem::create_directories(folder, error);

  // The same noise on every machine and in every run. With seed 2 all fitted rates lie within two uncertainties of the
  // known ones, as they do in about six of ten such series.
  const unsigned long seed = argumentCount > 2 ? std::strtoul(arguments[2], nullptr, 10) : 2;
  const std::string_view clutter = argumentCount > 3 ? arguments[3] : "sparse";
  const double noise = argumentCount > 4 ? std::strtod(arguments[4], nullptr) : kNoise;
  std::mt19937 generator(static_cast<std::mt19937::result_type>(seed));
  std::vector<Plane> planes;
  for (std::size_t k = 0; k < kDelaysSeconds.size(); ++k) {
    const double delay = kDelaysSeconds[k];
    Plane& plane =
        planes.emplace_back(makePlane([&](const Line& line) { return decay(line, delay); }, noise, generator));
    addClutter(plane, clutter, delay, std::mt19937(static_cast<std::mt19937::result_type>(seed + 1000)));
    write(folder / spectrumFile("pipe", k), writePipe(filePlane(plane, false)));
    write(folder / spectrumFile("view", k), writeView(filePlane(plane, true)));
  }
  write(folder / "peaks.xpk", makePeakList());
  write(folder / "pipe.par", makeParameterFile("pipe"));
  write(folder / "view.par", makeParameterFile("view"));
  write(folder / "rates.txt", makeRates());
  if (argumentCount > 3) return 0;
  write(folder / "series.ft3", makeCube(planes));
  write(folder / "vdlist", makeDelayList());
  write(folder / "hsqc.list", makeSparkyList());
  for (std::size_t k = 0; k < kRatios.size(); ++k) {
    const Plane plane = makePlane([](const Line&) { return 1.0; }, kNoise, generator, static_cast<double>(k));
    write(folder / spectrumFile("titration", k), writePipe(filePlane(plane, false)));
  }
  write(folder / "titration.par", makeParameterFile("titration"));
  for (const Kind& kind : {
           Kind{"recovery",
                "Inversion recovery: the third word is the delay in seconds.",
                {"0.02", "0.08", "0.2", "0.4", "0.8", "1.5"},
                recover},
           Kind{"noe", "Heteronuclear NOE: a reference, and a plane with saturated protons.", {"ref", "sat"}, enhance},
           Kind{"saturation",
                "Saturation transfer: the third word is the offset of the field in Hz; the first is the reference.",
                {"-12000", "-400", "-300", "-250", "-200", "-150", "-100", "0", "50", "100", "150", "200"},
                saturate},
           Kind{"dispersion",
                "Dispersion, 40 ms: the third word is the CPMG frequency in Hz, 0 for the references.",
                {"0", "50", "100", "200", "400", "800", "0"},
                disperse},
       }) {
    writeKind(folder, kind, generator);
  }
}
