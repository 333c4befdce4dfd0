// peakbox-plot-data [-n NOISE] [-f] PARAMETER-FILE REPORT FOLDER: writes to FOLDER what peakbox-plot draws. It measures
// the run again, and goes on only if that gives REPORT.
//
// settings.gp      all numbers and texts, as assignments in gnuplot's language
// map-S            strips of the first spectrum, reduced: lines of ppm, ppm and value, with an empty line after each
// row boxes            for each peak: label, ppm and half-widths in ppm of its box, place of its label on the map
// near-K-1, -2     the points around the K-th peak in the first and in the last spectrum, as in map
// labels           the number K and the label of each peak but noise peaks, separated by a tab
// curve-K          for each spectrum: its parameter or number, the intensity, and with NOISE the uncertainty

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/RunSettings.h"
#include "base/TextNumbers.h"
#include "base/ThrowingMessages.h"
#include "integrate/BoxTable.h"
#include "peaks/PeakList.h"
#include "spectrum/Nuclei.h"
#include "spectrum/PointNoise.h"
#include "spectrum/Spectrum.h"

namespace {

using namespace peakbox;

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
  throw RunEnd{std::string("peakbox-plot: ").append(file).append(": ").append(reason).append("\n"), 1};
}

struct Request {
  std::string parameterFile;
  std::string reportFile;
  std::string folder;
  std::string noiseFile;
  bool isFit = false;
};

std::string readAll(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  if (!stream.is_open() || text.fail()) refuse(file, "cannot be read");
  return text.str();
}

/// The text as gnuplot reads it in single quotes: without control characters, and in UTF-8 or else in ASCII.
std::string quote(const std::string& text) {
  bool isUtf8 = true;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto first = static_cast<unsigned char>(text[i]);
    const std::size_t more = first < 0x80 ? 0 : first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : 1;
    isUtf8 = isUtf8 && (first < 0x80 || (first >= 0xc2 && first < 0xf5));
    for (std::size_t k = 0; k < more; ++k) {
      isUtf8 = isUtf8 && ++i < text.size() && (static_cast<unsigned char>(text[i]) & 0xc0) == 0x80;
    }
  }
  std::string quoted = "'";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    quoted += code < 0x20 || code == 0x7f ? ' ' : code >= 0x80 && !isUtf8 ? '?' : c;
    if (c == '\'') quoted += c;
  }
  quoted += '\'';
  return quoted;
}

/// The uncertainty of each spectrum, of a file of peakbox-noise.
std::vector<double> readNoise(const std::string& file, int spectrumCount) {
  std::istringstream lines(readAll(file));
  std::string line;
  std::getline(lines, line);
  if (!line.starts_with("# Spectrum\tBoxNoise\t")) refuse(file, "this is no file of peakbox-noise");
  std::vector<double> noise;
  while (std::getline(lines, line)) {
    std::istringstream words(line);
    std::int64_t number = 0;
    double value = 0;
    if (!(words >> number >> value) || number != static_cast<std::int64_t>(noise.size()) + 1 || !(value > 0)) {
      refuse(file, "line " + std::to_string(noise.size() + 2) + ": not a line of peakbox-noise");
    }
    noise.push_back(value);
  }
  if (noise.size() != static_cast<std::size_t>(spectrumCount)) {
    refuse(file, "has the noise of " + std::to_string(noise.size()) + " spectra, and the run has " +
                     std::to_string(spectrumCount));
  }
  return noise;
}

/// The steps of an axis at which it is to have numbers: about `count` of them.
double chooseStep(double range, int count) {
  const double rough = std::fabs(range) / count;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= rough) return factor * power;
  }
  return 10 * power;
}

/// Heights of contours from `lowest` up to `highest`, each `factor` times the one before, or their negatives.
std::string listLevels(double lowest, double highest, double factor, double sign) {
  std::ostringstream levels;
  int count = 0;
  for (double level = lowest; level > 0 && level <= highest && count < 40; level *= factor, ++count) {
    levels << (count == 0 ? "" : ",") << sign * level;
  }
  return std::string("'").append(levels.str()).append("'");
}

/// A peak's place in one spectrum, in points.
using Place = std::array<int, 2>;

/// Points from first to last, both included, of both dimensions.
struct Region {
  Place first;
  Place last;
};

/// A peak in all spectra of the run.
struct Course {
  std::array<double, 2> listed{};  // its place in the list, folded, in points
  std::vector<Place> places;
  std::vector<double> intensities;
  std::string trouble;  // the first one, empty where there is none
};

/// Measures a run and writes what is drawn of it.
class PlotData {
 public:
  explicit PlotData(Request what) : request(std::move(what)) {}

  void write();

 private:
  void read();
  void measure();
  void followPeaks(int k);
  void noteSharedPoints(int k);
  bool isAtEdge(int j) const;
  void checkReport() const;
  bool isWrittenAbsolute() const { return report == absoluteText.str(); }

  void writeMap();
  std::vector<double> reduceRows(int j0, int j1, int step) const;
  void writeBoxes(const std::string& name, bool withLabels, std::size_t k) const;
  void writeNear(int which, std::size_t k);
  void writeCurves();
  void writeAxes();
  void writePeaks();

  Region findNear(std::size_t j) const;
  std::vector<std::array<double, 2>> placeLabels() const;
  std::string readParameter(int k) const;
  std::ofstream create(const std::string& name) const;

  bool isNoise(std::size_t j) const { return peaks.getLabel(static_cast<int>(j)).find("noise") != std::string::npos; }
  double ppm(double point, int dim) const { return spectrum.pointToPpm(point, dim); }
  double ppmPerPoint(int dim) const { return std::fabs(ppm(0, dim) - ppm(1, dim)); }
  int halfWidth(int dim) const { return settings.getBoxSize(dim); }

  const Request request;
  RunSettings settings;
  RunSettings absoluteSettings;
  Spectrum spectrum;
  PeakList peaks;
  std::vector<Course> courses;
  std::vector<std::string> parameters;
  std::vector<double> noise;
  std::string report;
  std::ostringstream plainText;
  std::ostringstream absoluteText;
  std::optional<BoxTable> boxes;
  std::ofstream texts;  // settings.gp
};

std::ofstream PlotData::create(const std::string& name) const {
  std::ofstream stream(request.folder + "/" + name);
  if (!stream.is_open()) refuse(request.folder + "/" + name, "cannot be created");
  return stream;
}

void PlotData::write() {
  read();
  measure();
  checkReport();
  writeCurves();
  writeAxes();
  writePeaks();
  texts.close();
  if (!texts) refuse(request.folder, "cannot be written");
}

void PlotData::read() {
  report = readAll(request.reportFile);
  const char* const arguments[] = {"peakbox", "-i", request.parameterFile.c_str(), "-abs"};
  settings.parseArguments(3, arguments);
  absoluteSettings.parseArguments(4, arguments);
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  courses.resize(peaks.read(settings.getPeakListFile(), spectrum, false));
  if (!request.noiseFile.empty()) noise = readNoise(request.noiseFile, settings.getSpectrumCount());
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    parameters.push_back(readParameter(k));
    if (request.isFit && !textToDecimal(parameters.back())) {
      refuse(request.parameterFile, "the parameter '" + parameters.back() + "' of spectrum " + std::to_string(k + 1) +
                                        " is not a number, and -f needs one");
    }
  }
  texts = create("settings.gp");
}

/// The first parameter of a spectrum, empty where it has none.
std::string PlotData::readParameter(int k) const {
  std::ostringstream header;
  settings.writeParametersHeader(k, header);
  std::string text = header.str();
  if (text.empty()) return text;
  text.erase(0, text.find(": ") + 2);
  return text.substr(0, text.find_first_of("\t\r\n"));
}

void PlotData::measure() {
  boxes.emplace(static_cast<unsigned>(courses.size()), settings.getTolerance1(), settings.getTolerance2());
  boxes->placeBoxes(spectrum, peaks);
  for (std::size_t j = 0; j < courses.size(); ++j) {
    // Folding moves the area and not its centre.
    const BoxExtent& extent1 = boxes->getExtent1(static_cast<int>(j));
    const BoxExtent& extent2 = boxes->getExtent2(static_cast<int>(j));
    courses[j].listed = {0.5 * (extent1.low + extent1.high), 0.5 * (extent2.low + extent2.high)};
  }
  const int last = settings.getSpectrumCount() - 1;
  for (int k = 0; k <= last; ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), false);
    followPeaks(k);
    if (k == 0) boxes->recentreBoxes(peaks.getCount());
    boxes->writeSpectrumTable(k, plainText, settings, spectrum, peaks);
    boxes->writeSpectrumTable(k, absoluteText, absoluteSettings, spectrum, peaks);
    if (k == 0) {
      writeMap();
      writeBoxes("boxes-1", true, 0);
      writeNear(1, 0);
    }
    if (k == last) {
      writeBoxes("boxes-2", false, static_cast<std::size_t>(k));
      writeNear(2, static_cast<std::size_t>(k));
    }
  }
}

void PlotData::followPeaks(int k) {
  for (int j = 0; j < peaks.getCount(); ++j) {
    Course& course = courses[static_cast<std::size_t>(j)];
    boxes->integratePeak(j, spectrum, halfWidth(0), halfWidth(1));
    course.places.push_back(
        {static_cast<int>(boxes->getExtent1(j).centre), static_cast<int>(boxes->getExtent2(j).centre)});
    course.intensities.push_back(boxes->getIntensity(j));
    if (course.trouble.empty() && !isNoise(static_cast<std::size_t>(j)) && isAtEdge(j)) {
      course.trouble = "edge of search area, spectrum " + std::to_string(k + 1);
    }
  }
  noteSharedPoints(k);
}

/// Whether the point that was found lies at the end of a search area that is wide enough for this to be no chance.
bool PlotData::isAtEdge(int j) const {
  constexpr double kFewestPoints = 5;
  for (const int dim : {0, 1}) {
    const BoxExtent& extent = dim == 0 ? boxes->getExtent1(j) : boxes->getExtent2(j);
    const double first = std::max(0.0, std::ceil(extent.low));
    const double last = std::min(spectrum.getSize(dim) - 1.0, std::floor(extent.high));
    if (last - first + 1 >= kFewestPoints && (extent.centre <= first || extent.centre >= last)) return true;
  }
  return false;
}

void PlotData::noteSharedPoints(int k) {
  std::map<Place, std::size_t> peakAt;
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const auto [other, isFree] = peakAt.emplace(courses[j].places.back(), j);
    if (isFree) continue;
    for (const auto& [one, partner] : {std::pair{j, other->second}, {other->second, j}}) {
      if (!courses[one].trouble.empty()) continue;
      courses[one].trouble =
          "same point as " + peaks.getLabel(static_cast<int>(partner)) + ", spectrum " + std::to_string(k + 1);
    }
  }
}

void PlotData::checkReport() const {
  const std::string expected = plainText.str();
  if (report == expected || isWrittenAbsolute()) return;
  if (expected.starts_with(report) || absoluteText.str().starts_with(report)) {
    refuse(request.reportFile, "is incomplete: it ends within the run of " + request.parameterFile);
  }
  const std::string& wanted = report.size() > 0 ? expected : report;
  const auto difference = std::mismatch(report.begin(), report.end(), wanted.begin(), wanted.end());
  const auto line = 1 + std::count(report.begin(), difference.first, '\n');
  refuse(request.reportFile, "line " + std::to_string(line) + " is not what a run of " + request.parameterFile +
                                 " writes: this is the report of another run, or its files have changed since");
}

/// Makes one row of cells of a row of points or several: of each cell the extreme.
std::vector<double> PlotData::reduceRows(int j0, int j1, int step) const {
  std::vector<double> cells(static_cast<std::size_t>((spectrum.getSize(0) + step - 1) / step));
  for (int j = j0; j < j1; ++j) {
    for (int i = 0; i < spectrum.getSize(0); ++i) {
      const double value = spectrum.getData()[i][j];
      double& cell = cells[static_cast<std::size_t>(i / step)];
      if (std::fabs(value) > std::fabs(cell) && std::isfinite(value)) cell = value;
    }
  }
  return cells;
}

/// Reduced, and in strips that share a row with the next: the time that gnuplot takes for contours grows with the
/// square of their length.
void PlotData::writeMap() {
  constexpr int kMostCells = 400;
  constexpr int kStripRows = 16;
  const int size1 = spectrum.getSize(0);
  const int size2 = spectrum.getSize(1);
  const int step1 = (size1 + kMostCells - 1) / kMostCells;
  const int step2 = (size2 + kMostCells - 1) / kMostCells;
  double highest = 0;
  double lowest = 0;
  int strips = 0;
  std::ofstream strip;
  std::string row;
  for (int n = 0; n * step2 < size2; ++n) {
    const int j0 = n * step2;
    const int j1 = std::min(j0 + step2, size2);
    const std::vector<double> cells = reduceRows(j0, j1, step1);
    std::ostringstream text;
    for (std::size_t c = 0; c < cells.size(); ++c) {
      const int i0 = static_cast<int>(c) * step1;
      const int i1 = std::min(i0 + step1, size1);
      text << ppm(0.5 * (i0 + i1 - 1), 0) << ' ' << ppm(0.5 * (j0 + j1 - 1), 1) << ' ' << cells[c] << '\n';
      highest = std::max(highest, cells[c]);
      lowest = std::min(lowest, cells[c]);
    }
    text << '\n';
    if (n % kStripRows == 0) {
      strip = create("map-" + std::to_string(++strips));
      strip << row;
    }
    row = text.str();
    strip << row;
  }
  constexpr double kAboveNoise = 7;
  constexpr double kFactor = 1.6;
  const double base = std::max(kAboveNoise * estimatePointNoise(spectrum, 1 << 18), 1e-3 * std::max(highest, -lowest));
  texts << "strips = " << strips << "\nmapPositive = " << listLevels(base, highest, kFactor, 1)
        << "\nmapNegative = " << listLevels(base, -lowest, kFactor, -1) << '\n';
}

std::vector<std::array<double, 2>> PlotData::placeLabels() const {
  // In parts of the map's width and height: the size of a character, and what a box keeps clear around it.
  constexpr std::array<double, 2> kCharacter{0.0052, 0.015};
  constexpr double kGap = 0.003;
  constexpr std::array<std::array<int, 2>, 8> kSides{
      {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {-1, 1}, {1, -1}, {-1, -1}}};
  struct Area {
    std::array<double, 2> centre;
    std::array<double, 2> half;
  };
  const auto overlap = [](const Area& a, const Area& b) {
    double size = 1;
    for (const std::size_t d : {0U, 1U}) {
      size *= std::max(0.0, a.half[d] + b.half[d] - std::fabs(a.centre[d] - b.centre[d]));
    }
    return size;
  };
  std::vector<Area> taken;
  for (const Course& course : courses) {
    Area box{};
    for (const int dim : {0, 1}) {
      const auto d = static_cast<std::size_t>(dim);
      const double size = spectrum.getSize(dim);
      box.centre[d] = course.places[0][d] / size;
      box.half[d] = (1.8 * halfWidth(dim) + 2) / size;  // with the flanks of the peak
    }
    taken.push_back(box);
  }
  std::vector<std::array<double, 2>> labels;
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const auto length = static_cast<double>(peaks.getLabel(static_cast<int>(j)).size());
    Area best{};
    double least = 1e9;
    for (const auto& side : kSides) {
      Area label{.centre = taken[j].centre, .half = {0.5 * kCharacter[0] * length, 0.5 * kCharacter[1]}};
      for (const std::size_t d : {0U, 1U}) label.centre[d] += side[d] * (taken[j].half[d] + label.half[d] + kGap);
      double cost = 0;
      for (const Area& other : taken) cost += overlap(label, other);
      for (const std::size_t d : {0U, 1U}) {
        const bool isOutside = label.centre[d] - label.half[d] < 0 || label.centre[d] + label.half[d] > 1;
        cost += isOutside ? 1 : 0;
      }
      if (cost < least) {
        least = cost;
        best = label;
      }
    }
    taken.push_back(best);
    labels.push_back({best.centre[0] * spectrum.getSize(0), best.centre[1] * spectrum.getSize(1)});
  }
  return labels;
}

void PlotData::writeBoxes(const std::string& name, bool withLabels, std::size_t k) const {
  std::ofstream stream = create(name);
  const std::vector<std::array<double, 2>> labels = withLabels ? placeLabels() : std::vector<std::array<double, 2>>();
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const Place& place = courses[j].places[k];
    stream << ppm(place[0], 0) << '\t' << ppm(place[1], 1) << '\t' << (halfWidth(0) + 0.5) * ppmPerPoint(0) << '\t'
           << (halfWidth(1) + 0.5) * ppmPerPoint(1);
    if (withLabels) stream << '\t' << ppm(labels[j][0], 0) << '\t' << ppm(labels[j][1], 1);
    stream << '\n';
  }
}

/// The surroundings of a peak that are drawn.
Region PlotData::findNear(std::size_t j) const {
  Region near{};
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const int reach = std::max(dim == 0 ? 16 : 9, 3 * halfWidth(dim) + 3);
    near.first[d] = std::max(0, courses[j].places[0][d] - reach);
    near.last[d] = std::min(spectrum.getSize(dim) - 1, courses[j].places[0][d] + reach);
  }
  return near;
}

void PlotData::writeNear(int which, std::size_t k) {
  constexpr double kAboveNoise = 3;
  constexpr double kPart = 0.08;  // of the peak
  constexpr double kFactor = 1.5;
  const double pointNoise = estimatePointNoise(spectrum, 1 << 18);
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const std::string name = std::to_string(j + 1) + "-" + std::to_string(which);
    std::ofstream stream = create("near-" + name);
    const Region near = findNear(j);
    double highest = 0;
    double lowest = 0;
    for (int b = near.first[1]; b <= near.last[1]; ++b) {
      for (int a = near.first[0]; a <= near.last[0]; ++a) {
        const double value = spectrum.getData()[a][b];
        highest = std::max(highest, value);
        lowest = std::min(lowest, value);
        stream << ppm(a, 0) << ' ' << ppm(b, 1) << ' ' << value << '\n';
      }
      stream << '\n';
    }
    const double top = std::fabs(spectrum.getData()[courses[j].places[k][0]][courses[j].places[k][1]]);
    const double base = std::max({kAboveNoise * pointNoise, kPart * top, 1e-3 * std::max(highest, -lowest)});
    const std::string suffix = std::to_string(which) + "_" + std::to_string(j + 1) + " = ";
    texts << "positive" << suffix << listLevels(base, highest, kFactor, 1) << "\nnegative" << suffix
          << listLevels(base, -lowest, kFactor, -1) << '\n';
  }
}

void PlotData::writeCurves() {
  const bool hasNumbers =
      std::all_of(parameters.begin(), parameters.end(), [](const auto& p) { return textToDecimal(p); });
  for (std::size_t j = 0; j < courses.size(); ++j) {
    std::ofstream stream = create("curve-" + std::to_string(j + 1));
    stream.precision(10);
    for (std::size_t k = 0; k < parameters.size(); ++k) {
      const double intensity = courses[j].intensities[k];
      stream << (hasNumbers ? parameters[k] : std::to_string(k + 1)) << '\t'
             << (isWrittenAbsolute() && !isNoise(j) ? std::fabs(intensity) : intensity);
      if (!noise.empty()) stream << '\t' << noise[k];
      stream << '\n';
    }
  }
  std::set<double> distinct;
  for (std::size_t k = 0; k < parameters.size(); ++k) {
    distinct.insert(hasNumbers ? *textToDecimal(parameters[k]) : static_cast<double>(k + 1));
  }
  const double range = *distinct.rbegin() - *distinct.begin();
  const double margin = range > 0 ? 0.05 * range : 1;
  texts << "lowX = " << *distinct.begin() - margin << "\nhighX = " << *distinct.rbegin() + margin
        << "\nstepX = " << chooseStep(range + 2 * margin, 4) << '\n';
  texts << "hasNumbers = " << hasNumbers << "\nhasNoise = " << !noise.empty() << "\ndistinct = " << distinct.size()
        << '\n';
}

/// "1H" with its mass number raised, and the frequency.
void PlotData::writeAxes() {
  const std::array<std::string, 2> names = nameDimensions(spectrum);
  texts.precision(10);
  for (const int dim : {0, 1}) {
    std::string name = names[static_cast<std::size_t>(dim)];
    if (name[0] != 'D') {
      const std::size_t digits = name.find_first_not_of("0123456789");
      const std::string element = name.substr(digits, name.find('_') - digits);
      name = std::string("^{").append(name, 0, digits).append("}").append(element);
    }
    const std::string d = std::to_string(dim + 1);
    std::ostringstream mhz;
    mhz << spectrum.getObserveMHz(dim);
    texts << "title" << d << " = '" << name << " (ppm), " << mhz.str() << " MHz'\nlow" << d << " = "
          << ppm(spectrum.getSize(dim) - 0.5, dim) << "\nhigh" << d << " = " << ppm(-0.5, dim) << '\n';
  }
  texts << "spectra = " << parameters.size() << "\nfirstName = " << quote(settings.getSpectrumFile(0))
        << "\nfirstTitle = " << quote(parameters.front()) << "\nlastTitle = " << quote(parameters.back()) << '\n';
}

void PlotData::writePeaks() {
  std::ofstream labels = create("labels");
  texts << "peaks = " << courses.size() << '\n';
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const Course& course = courses[j];
    const int entry = static_cast<int>(j);
    const std::string suffix = std::string("_").append(std::to_string(j + 1)).append(" = ");
    const Region near = findNear(j);
    texts << "label" << suffix << quote(peaks.getLabel(entry)) << "\nnumber" << suffix << peaks.getNumber(entry)
          << "\ntrouble" << suffix << quote(course.trouble) << "\nisNoise" << suffix << isNoise(j) << '\n';
    if (!isNoise(j)) {
      std::string label = peaks.getLabel(entry);
      std::replace(label.begin(), label.end(), '\t', ' ');
      labels << j + 1 << '\t' << label << '\n';
    }
    for (const int dim : {0, 1}) {
      const auto d = static_cast<std::size_t>(dim);
      const std::string name = std::to_string(dim + 1) + suffix;
      const double low = ppm(near.last[d], dim);
      const double high = ppm(near.first[d], dim);
      texts << "low" << name << low << "\nhigh" << name << high << "\nstep" << name << chooseStep(high - low, 3)
            << "\nlisted" << name << ppm(course.listed[d], dim) << "\nfound" << name
            << ppm(course.places.front()[d], dim) << "\nlast" << name << ppm(course.places.back()[d], dim) << "\nwidth"
            << name << (halfWidth(dim) + 0.5) * ppmPerPoint(dim) << '\n';
    }
    double greatest = 0;
    for (const double intensity : course.intensities) greatest = std::max(greatest, std::fabs(intensity));
    texts << "exponent" << suffix << (greatest > 0 ? std::floor(std::log10(greatest)) : 0) << '\n';
  }
}

[[noreturn]] void usage() {
  std::cerr << "usage: peakbox-plot-data [-n NOISE] [-f] PARAMETER-FILE REPORT FOLDER\n";
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  Request request;
  for (int option = 0; (option = getopt(argc, argv, "n:f")) != -1;) {
    if (option == 'n') {
      request.noiseFile = optarg;
    } else if (option == 'f') {
      request.isFit = true;
    } else {
      usage();
    }
  }
  if (optind + 3 != argc) usage();
  request.parameterFile = argv[optind];
  request.reportFile = argv[optind + 1];
  request.folder = argv[optind + 2];
  try {
    PlotData(request).write();
  } catch (const RunEnd& end) {  // of status 0, too: there is nothing to draw then
    std::cerr << end.message;
    return 1;
  } catch (const std::bad_alloc&) {
    std::cerr << "peakbox-plot: not enough memory\n";
    return 1;
  }
  return 0;
}
