// peakbox-plot-data [-n NOISE] [-f] PARAMETER-FILE REPORT FOLDER: writes to FOLDER what peakbox-plot draws. It measures
// the run again, and goes on only if that gives REPORT.
//
// settings.gp        numbers and runSettings of the run, as assignments in gnuplot's language
// map-S              strips of the first spectrum, reduced: lines of ppm, ppm and value, an empty line after each row
// boxes              for each peak the ppm and half-widths in ppm of its box on the map, and 1 where it is in trouble
// labels             the number K and the label of each peak but noise peaks, separated by a tab
// peak-K.gp          numbers and runSettings of the K-th peak
// near-K-1, -2       the points around it in the first and in the last spectrum, as in map
// boxes-K-1, -2      the boxes there, as in boxes, without trouble
// curve-K            for each spectrum: its parameter or number, the intensity, and with NOISE the uncertainty

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/TextNumbers.h"
#include "base/ThrowingMessages.h"
#include "driver/RunSettings.h"
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
  if (stream.peek() != std::ifstream::traits_type::eof()) text << stream.rdbuf();
  if (!stream.is_open() || stream.bad() || text.fail()) refuse(file, "cannot be read");
  return text.str();
}

/// The characters of a UTF-8 text that common fonts have, a question mark for each other one or for a wrong byte: drawn
/// without a glyph, one can cover a page.
std::vector<std::string> splitCharacters(const std::string& text) {
  std::vector<std::string> characters;
  for (std::size_t i = 0; i < text.size();) {
    const auto first = static_cast<unsigned char>(text[i]);
    const std::size_t length = first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    std::uint32_t code = length == 1 ? first : first & (0xffU >> (length + 1));
    bool isWhole = first < 0x80 || (first >= 0xc2 && first < 0xf5);
    for (std::size_t k = 1; k < length && isWhole; ++k) {
      const auto next = static_cast<unsigned char>(i + k < text.size() ? text[i + k] : 0);
      isWhole = (next & 0xc0) == 0x80;
      code = code << 6 | (next & 0x3fU);
    }
    const bool isLatinOrGreek = (code >= 0xa0 && code < 0x250) || (code >= 0x370 && code < 0x400);
    const bool isSign = (code >= 0x2010 && code < 0x2034) || (code >= 0x2070 && code < 0x20a0);
    if (!isWhole || !(code <= 0x7f || isLatinOrGreek || isSign)) {
      characters.emplace_back("?");
    } else {
      characters.push_back(code < 0x20 || code == 0x7f ? " " : text.substr(i, length));
    }
    i += isWhole ? length : 1;
  }
  return characters;
}

/// As much of a text as there is room for.
std::vector<std::string> shorten(const std::string& text, std::size_t room) {
  std::vector<std::string> characters = splitCharacters(text);
  if (characters.size() > room) {
    characters.resize(room - 1);
    characters.emplace_back("\u2026");
  }
  return characters;
}

constexpr std::size_t kLabelRoom = 22;

/// The text as gnuplot reads it in double quotes; what it would take for their end, an escape or a command is octal.
std::string quote(const std::string& text, std::size_t room = kLabelRoom) {
  std::string quoted = "\"";
  for (const std::string& character : shorten(text, room)) {
    quoted += character == "\"" ? "\\042" : character == "\\" ? "\\134" : character == "`" ? "\\140" : character;
  }
  quoted += '"';
  return quoted;
}

/// The uncertainty of each spectrum, of a file of peakbox-noise that found `boxCount` boxes in each.
std::vector<double> readNoise(const std::string& file, int spectrumCount, std::int64_t boxCount) {
  const std::string text = readAll(file);
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);
  if (line != "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed") refuse(file, "this is no file of peakbox-noise");
  std::vector<double> noise;
  while (std::getline(lines, line)) {
    std::istringstream words(line);
    std::size_t number = 0;
    double value = 0;
    std::int64_t boxes = 0;
    std::string other;
    const bool isWhole = words >> number >> value >> other >> boxes >> other && words.eof() && !lines.eof();
    const std::string place = "line " + std::to_string(noise.size() + 2) + ": ";
    if (!isWhole || number != noise.size() + 1) refuse(file, place + "not a whole line of peakbox-noise");
    if (!(value > 0)) refuse(file, place + "the noise is not above 0");
    if (boxes != boxCount) refuse(file, place + "the noise of boxes of another size, or of other spectra");
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
  double level = lowest;
  while (level > 0 && level <= highest) {
    levels << (level > lowest ? "," : "") << sign * level;
    level *= factor;
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

/// A rectangle on the map, in parts of its width and height.
struct Area {
  std::array<double, 2> centre{};
  std::array<double, 2> half{};
};

double overlap(const Area& a, const Area& b) {
  double size = 1;
  for (const std::size_t d : {0U, 1U}) {
    size *= std::max(0.0, a.half[d] + b.half[d] - std::fabs(a.centre[d] - b.centre[d]));
  }
  return size;
}

/// A label on the map, and the ends of the line that leads to it, in parts of the map's width and height.
struct LabelPlace {
  Area area;
  std::array<double, 2> from{};
  std::array<double, 2> to{};
};

/// Finds for each label the place beside its peak where it and its line cover least.
class LabelPlacer {
 public:
  /// `boxHalfWidths` are those of the boxes, at which the lines to the labels begin; contours are drawn of what is
  /// above `lowestContour` in the map's spectrum.
  LabelPlacer(const Spectrum& map, double lowestContour, std::vector<Area> peakAreas,
              const std::array<double, 2>& boxHalfWidths)
      : spectrum(map), base(lowestContour), peaks(std::move(peakAreas)), boxHalf(boxHalfWidths) {}

  LabelPlace place(std::size_t j, std::size_t characterCount);

 private:
  LabelPlace putBeside(const Area& peak, const std::array<int, 2>& side, double gap, std::size_t characterCount) const;
  double rate(const LabelPlace& label, std::size_t j) const;
  double findContours(const Area& area) const;

  const Spectrum& spectrum;
  const double base;
  const std::vector<Area> peaks;
  const std::array<double, 2> boxHalf;
  std::vector<Area> labels;
};

LabelPlace LabelPlacer::place(std::size_t j, std::size_t characterCount) {
  constexpr std::array<double, 4> kGaps{0.004, 0.008, 0.018, 0.034};
  constexpr std::array<std::array<int, 2>, 8> kSides{
      {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {-1, 1}, {1, -1}, {-1, -1}}};
  LabelPlace best;
  double least = std::numeric_limits<double>::infinity();
  for (const double gap : kGaps) {
    for (const auto& side : kSides) {
      const LabelPlace candidate = putBeside(peaks[j], side, gap, characterCount);
      const double covered = rate(candidate, j);
      if (covered >= least) continue;
      least = covered;
      best = candidate;
    }
  }
  labels.push_back(best.area);
  return best;
}

LabelPlace LabelPlacer::putBeside(const Area& peak, const std::array<int, 2>& side, double gap,
                                  std::size_t characterCount) const {
  constexpr std::array<double, 2> kCharacter{0.0054, 0.0165};
  LabelPlace label{
      .area = {.centre = peak.centre,
               .half = {0.5 * kCharacter[0] * (static_cast<double>(characterCount) + 1), 0.5 * kCharacter[1]}}};
  for (const std::size_t d : {0U, 1U}) {
    label.from[d] = peak.centre[d] + side[d] * boxHalf[d];
    label.to[d] = peak.centre[d] + side[d] * (peak.half[d] + gap);
    label.area.centre[d] = label.to[d] + side[d] * label.area.half[d];
  }
  return label;
}

/// What the label of the j-th peak would cover. A line through another peak is worse than a covered label, and a label
/// that leaves the map is worse than any that does not.
double LabelPlacer::rate(const LabelPlace& label, std::size_t j) const {
  Area line;
  double covered = 0;
  for (const std::size_t d : {0U, 1U}) {
    line.centre[d] = 0.5 * (label.from[d] + label.to[d]);
    line.half[d] = 0.5 * std::fabs(label.from[d] - label.to[d]);
    if (label.area.centre[d] < label.area.half[d] || label.area.centre[d] + label.area.half[d] > 1) covered += 1;
  }
  covered += findContours(label.area);
  for (const Area& other : labels) covered += overlap(label.area, other) + overlap(line, other);
  for (std::size_t other = 0; other < peaks.size(); ++other) {
    if (other == j) continue;
    covered += overlap(label.area, peaks[other]);
    if (overlap(line, peaks[other]) > 0) covered += 0.01;
  }
  return covered;
}

/// How much of an area has contours, in parts of the map.
double LabelPlacer::findContours(const Area& area) const {
  const std::array<int, 2> sizes{spectrum.getSize(0), spectrum.getSize(1)};
  Region region{};
  for (const std::size_t d : {0U, 1U}) {
    region.first[d] = std::max(0, static_cast<int>((area.centre[d] - area.half[d]) * sizes[d]));
    region.last[d] = std::min(sizes[d] - 1, static_cast<int>((area.centre[d] + area.half[d]) * sizes[d]));
  }
  double points = 0;
  for (int i = region.first[0]; i <= region.last[0]; ++i) {
    for (int j = region.first[1]; j <= region.last[1]; ++j) points += std::fabs(spectrum.getData()[i][j]) > base;
  }
  return points / sizes[0] / sizes[1];
}

/// A dimension of the first spectrum. All spectra are drawn on its axes, since boxes are carried from one to the next
/// as points, whatever the references of later ones.
struct Axis {
  double ppmAtZero = 0;
  double ppmPerPoint = 0;
};

/// A peak in all spectra of the run.
struct Course {
  std::array<double, 2> listed{};  // its place in the list, folded, in points
  std::vector<Place> places;
  std::vector<double> intensities;
  std::string trouble;             // empty where there is none
  std::array<double, 2> extent{};  // from the top to where the map's contours of the peak end, in points
  LabelPlace label;
  /// In the first and in the last spectrum: edges of the search area in points, low and high of either dimension, and
  /// the heights of the contours.
  std::array<std::array<double, 4>, 2> areas{};
  std::array<std::string, 2> positive;
  std::array<std::string, 2> negative;
};

/// Measures a run and writes what is drawn of it.
class PlotData {
 public:
  explicit PlotData(Request what) : request(std::move(what)) {}

  void write();

 private:
  void read();
  std::string readParameter(int k) const;
  void measure();
  void checkValues(int k) const;
  void followPeaks(int k);
  void noteSharedPoints(int k);
  bool isAtEdge(int k, int j) const;
  void checkReport();

  std::pair<double, double> findRange(const Region& region) const;
  void writeMap();
  std::vector<double> reduceRows(int j0, int j1, int step) const;
  double chooseMapLevels();
  double findExtent(const Place& top, std::size_t d, double base) const;
  void placeLabels(double base);
  void chooseReach();
  Region findNear(std::size_t j) const;
  void writeSurroundings(std::size_t which, std::size_t k);
  std::string listBoxes(const Region& region, std::size_t k) const;
  void writeBox(std::ostream& stream, std::size_t j, std::size_t k) const;
  void writeAxes();
  void writeParameters();
  void writeLists() const;
  void writeCurve(std::size_t j) const;
  void writePeak(std::size_t j) const;
  std::string describeFolding(std::size_t j) const;
  void writeLabel(std::size_t j, std::ostream& stream) const;
  void writeScale(std::size_t j, std::ostream& stream) const;

  void save(const std::string& name, const std::string& text) const;

  bool isNoise(std::size_t j) const { return peaks.getLabel(static_cast<int>(j)).find("noise") != std::string::npos; }
  /// As in the report, which may be one of magnitudes.
  double writtenIntensity(std::size_t j, std::size_t k) const {
    const double intensity = courses[j].intensities[k];
    return isAbsolute && !isNoise(j) ? std::fabs(intensity) : intensity;
  }
  /// Of the spectrum loaded last; 0 outside of it.
  double heightAt(const Place& point) const {
    const bool isInside =
        point[0] >= 0 && point[0] < spectrum.getSize(0) && point[1] >= 0 && point[1] < spectrum.getSize(1);
    return isInside ? std::fabs(spectrum.getData()[point[0]][point[1]]) : 0;
  }
  double ppm(double point, int dim) const {
    const Axis& axis = axes[static_cast<std::size_t>(dim)];
    return axis.ppmAtZero + point * axis.ppmPerPoint;
  }
  int halfWidth(int dim) const { return settings.getBoxSize(dim); }
  /// Of the box's outline, which is drawn around its points.
  double halfWidthPpm(int dim) const { return std::fabs(ppm(halfWidth(dim) + 0.5, dim) - ppm(0, dim)); }
  std::string nameOf(std::size_t j) const {
    const std::string& label = peaks.getLabel(static_cast<int>(j));
    return label.empty() ? "(no label)" : label;
  }

  const Request request;
  RunSettings settings;
  RunSettings absoluteSettings;
  Spectrum spectrum;
  std::array<Axis, 2> axes;
  PeakList peaks;
  std::vector<Course> courses;
  std::vector<std::string> parameters;
  std::vector<double> abscissas;  // what the curves run over
  std::vector<double> noise;
  double pointNoise = 0;  // of the spectrum loaded last
  Place reach{};          // of the surroundings to either side of a peak, in points
  std::string report;
  bool isAbsolute = false;
  bool hasNumbers = false;  // all parameters are numbers
  std::ostringstream plainText;
  std::ostringstream absoluteText;
  std::optional<BoxTable> boxes;
  std::ostringstream runSettings;  // settings.gp
};

void PlotData::save(const std::string& name, const std::string& text) const {
  std::ofstream stream(request.folder + "/" + name);
  stream << text;
  stream.close();
  if (!stream) refuse(request.folder + "/" + name, "cannot be written");
}

void PlotData::write() {
  read();
  writeAxes();
  measure();
  checkReport();
  writeParameters();
  writeLists();
  for (std::size_t j = 0; j < courses.size(); ++j) {
    writePeak(j);
    writeCurve(j);
  }
  save("settings.gp", runSettings.str());
}

void PlotData::read() {
  report = readAll(request.reportFile);
  const char* const arguments[] = {"peakbox", "-i", request.parameterFile.c_str(), "-abs"};
  settings.parseArguments(3, arguments);
  absoluteSettings.parseArguments(4, arguments);
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  courses.resize(peaks.read(settings.getPeakListFile(), spectrum, false));
  for (const int dim : {0, 1}) {
    axes[static_cast<std::size_t>(dim)] = {spectrum.pointToPpm(0, dim),
                                           spectrum.pointToPpm(1, dim) - spectrum.pointToPpm(0, dim)};
  }
  if (!request.noiseFile.empty()) {
    const auto countAlong = [this](int dim) { return spectrum.getSize(dim) / (2 * std::int64_t{halfWidth(dim)} + 1); };
    noise = readNoise(request.noiseFile, settings.getSpectrumCount(), countAlong(0) * countAlong(1));
  }
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    parameters.push_back(readParameter(k));
    if (request.isFit && parameters.back().empty()) {
      refuse(request.parameterFile, "spectrum " + std::to_string(k + 1) + " has no parameter, and -f needs one");
    }
    if (request.isFit && !textToDecimal(parameters.back())) {
      refuse(request.parameterFile, "the parameter '" + parameters.back() + "' of spectrum " + std::to_string(k + 1) +
                                        " is not a number, and -f needs one");
    }
  }
  hasNumbers = std::all_of(parameters.begin(), parameters.end(), [](const auto& p) { return textToDecimal(p); });
  for (std::size_t k = 0; k < parameters.size(); ++k) {
    abscissas.push_back(hasNumbers ? *textToDecimal(parameters[k]) : static_cast<double>(k + 1));
  }
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
    checkValues(k);
    pointNoise = estimatePointNoise(spectrum, 1 << 17);
    followPeaks(k);
    if (k == 0) boxes->recentreBoxes(peaks.getCount());
    boxes->writeSpectrumTable(k, plainText, settings, spectrum, peaks);
    boxes->writeSpectrumTable(k, absoluteText, absoluteSettings, spectrum, peaks);
    if (k == 0) {
      writeMap();
      placeLabels(chooseMapLevels());
      chooseReach();
      writeSurroundings(0, 0);
    }
    if (k == last) writeSurroundings(1, static_cast<std::size_t>(k));
  }
}

void PlotData::checkValues(int k) const {
  for (int i = 0; i < spectrum.getSize(0); ++i) {
    for (int j = 0; j < spectrum.getSize(1); ++j) {
      if (!std::isfinite(spectrum.getData()[i][j])) refuse(settings.getSpectrumFile(k), "not all values are finite");
    }
  }
}

void PlotData::followPeaks(int k) {
  constexpr double kAboveNoise = 5;  // of a point: below it the greatest one of a peak that has decayed is anywhere
  for (int j = 0; j < peaks.getCount(); ++j) {
    Course& course = courses[static_cast<std::size_t>(j)];
    boxes->integratePeak(j, spectrum, halfWidth(0), halfWidth(1));
    const BoxExtent& extent1 = boxes->getExtent1(j);
    const BoxExtent& extent2 = boxes->getExtent2(j);
    course.places.push_back({static_cast<int>(extent1.centre), static_cast<int>(extent2.centre)});
    course.areas[1] = {extent1.low, extent1.high, extent2.low, extent2.high};
    if (k == 0) course.areas[0] = course.areas[1];
    course.intensities.push_back(boxes->getIntensity(j));
    const bool isSeen = k == 0 || heightAt(course.places.back()) > kAboveNoise * pointNoise;
    if (course.trouble.empty() && isSeen && !isNoise(static_cast<std::size_t>(j)) && isAtEdge(k, j)) {
      course.trouble = "edge of search area, spectrum " + std::to_string(k + 1);
    }
  }
  noteSharedPoints(k);
}

/// Whether the point that was found lies at the end of its search area. Where that is a few points wide, this may be
/// chance, and counts if the point beyond it is higher.
bool PlotData::isAtEdge(int k, int j) const {
  constexpr int kFewPoints = 5;
  const Place& point = courses[static_cast<std::size_t>(j)].places.back();
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const BoxExtent& extent = dim == 0 ? boxes->getExtent1(j) : boxes->getExtent2(j);
    const int first = static_cast<int>(std::max(0.0, std::ceil(extent.low)));
    const int last = static_cast<int>(std::min(spectrum.getSize(dim) - 1.0, std::floor(extent.high)));
    if (k > 0 && last <= first) continue;  // TOLERANCE lets the point stay
    for (const auto& [end, step] : {std::pair{first, -1}, {last, 1}}) {
      if (step * (point[d] - end) < 0) continue;
      Place beyond = point;
      beyond[d] += step;
      if (last - first >= kFewPoints - 1 || heightAt(beyond) > heightAt(point) + pointNoise) return true;
    }
  }
  return false;
}

/// However low they are: two lines of the report have one number then.
void PlotData::noteSharedPoints(int k) {
  std::map<Place, std::size_t> peakAt;
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const auto [other, isFree] = peakAt.emplace(courses[j].places.back(), j);
    if (isFree) continue;
    for (const auto& [one, partner] : {std::pair{j, other->second}, {other->second, j}}) {
      if (courses[one].trouble.starts_with("same")) continue;
      courses[one].trouble = "same point as " + nameOf(partner) + ", spectrum " + std::to_string(k + 1);
    }
  }
}

void PlotData::checkReport() {
  const std::string expected = plainText.str();
  isAbsolute = report == absoluteText.str() && report != expected;
  if (report == expected || isAbsolute) return;
  if (expected.starts_with(report) || absoluteText.str().starts_with(report)) {
    refuse(request.reportFile, "is incomplete: it ends within the run of " + request.parameterFile);
  }
  std::ptrdiff_t line = 0;  // where it departs from the one that it follows farther
  for (const std::string& wanted : {expected, absoluteText.str()}) {
    const auto difference = std::mismatch(report.begin(), report.end(), wanted.begin(), wanted.end());
    line = std::max(line, 1 + std::count(report.begin(), difference.first, '\n'));
  }
  refuse(request.reportFile, "line " + std::to_string(line) + " is not what a run of " + request.parameterFile +
                                 " writes: this is the report of another run, or its files have changed since");
}

/// The least and the greatest value of the spectrum loaded last, or 0.
std::pair<double, double> PlotData::findRange(const Region& region) const {
  std::pair<double, double> range{0, 0};
  for (int i = region.first[0]; i <= region.last[0]; ++i) {
    for (int j = region.first[1]; j <= region.last[1]; ++j) {
      const double value = spectrum.getData()[i][j];
      range = {std::min(range.first, value), std::max(range.second, value)};
    }
  }
  return range;
}

/// Makes one row of cells of a row of points or several: of each cell the extreme.
std::vector<double> PlotData::reduceRows(int j0, int j1, int step) const {
  std::vector<double> cells(static_cast<std::size_t>((spectrum.getSize(0) + step - 1) / step));
  for (int j = j0; j < j1; ++j) {
    for (int i = 0; i < spectrum.getSize(0); ++i) {
      const double value = spectrum.getData()[i][j];
      double& cell = cells[static_cast<std::size_t>(i / step)];
      if (std::fabs(value) > std::fabs(cell)) cell = value;
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
  int strips = 0;
  std::string strip;
  for (int n = 0; n * step2 < size2; ++n) {
    const int j0 = n * step2;
    const int j1 = std::min(j0 + step2, size2);
    const std::vector<double> cells = reduceRows(j0, j1, step1);
    std::ostringstream row;
    for (std::size_t c = 0; c < cells.size(); ++c) {
      const int i0 = static_cast<int>(c) * step1;
      const int i1 = std::min(i0 + step1, size1);
      row << ppm(0.5 * (i0 + i1 - 1), 0) << ' ' << ppm(0.5 * (j0 + j1 - 1), 1) << ' ' << cells[c] << '\n';
    }
    row << '\n';
    strip += row.str();
    if (n % kStripRows == kStripRows - 1 || j1 == size2) {
      save("map-" + std::to_string(++strips), strip);
      strip = row.str();
    }
  }
  runSettings << "strips = " << strips << '\n';
}

/// The contours of the map, how far those of the peaks reach, and the height of the lowest one.
double PlotData::chooseMapLevels() {
  constexpr double kAboveNoise = 7;
  constexpr double kFactor = 1.6;
  const auto [lowest, highest] = findRange({{0, 0}, {spectrum.getSize(0) - 1, spectrum.getSize(1) - 1}});
  double tallest = 0;
  for (const Course& course : courses) tallest = std::max(tallest, heightAt(course.places[0]));
  const double base = std::max(kAboveNoise * pointNoise, 1e-3 * (tallest > 0 ? tallest : std::max(highest, -lowest)));
  runSettings << "mapBase = " << base << "\nmapFactor = " << kFactor
              << "\nmapPositive = " << listLevels(base, highest, kFactor, 1)
              << "\nmapNegative = " << listLevels(base, -lowest, kFactor, -1) << '\n';
  for (Course& course : courses) {
    course.extent = {findExtent(course.places[0], 0, base), findExtent(course.places[0], 1, base)};
  }
  return base;
}

/// How far from its top a peak falls above `base` along a dimension, to the farther side, in points.
double PlotData::findExtent(const Place& top, std::size_t d, double base) const {
  int farthest = 0;
  for (const int step : {-1, 1}) {
    Place point = top;
    double height = heightAt(top);
    while (height > base) {
      farthest = std::max(farthest, std::abs(point[d] - top[d]) + 1);
      point[d] += step;
      const double next = heightAt(point);
      height = next < height ? next : 0;
    }
  }
  return farthest;
}

void PlotData::placeLabels(double base) {
  const std::array<double, 2> sizes{static_cast<double>(spectrum.getSize(0)), static_cast<double>(spectrum.getSize(1))};
  const std::array<double, 2> boxHalf{(halfWidth(0) + 0.5) / sizes[0], (halfWidth(1) + 0.5) / sizes[1]};
  std::vector<Area> areas(courses.size());
  for (std::size_t j = 0; j < courses.size(); ++j) {
    for (const std::size_t d : {0U, 1U}) {
      areas[j].centre[d] = courses[j].places[0][d] / sizes[d];
      areas[j].half[d] = std::max(boxHalf[d], courses[j].extent[d] / sizes[d]);
    }
  }
  LabelPlacer placer(spectrum, base, std::move(areas), boxHalf);
  for (std::size_t j = 0; j < courses.size(); ++j) {
    courses[j].label = placer.place(j, shorten(nameOf(j), kLabelRoom).size());
  }
}

/// The box of the j-th peak in the k-th spectrum.
void PlotData::writeBox(std::ostream& stream, std::size_t j, std::size_t k) const {
  const Place& place = courses[j].places[k];
  stream << ppm(place[0], 0) << '\t' << ppm(place[1], 1) << '\t' << halfWidthPpm(0) << '\t' << halfWidthPpm(1);
}

/// Chooses how far the surroundings reach to either side, of all peaks alike: so that boxes, search areas and peaks as
/// most of them are take a good part.
void PlotData::chooseReach() {
  constexpr int kLeast = 5;
  constexpr int kMost = 60;
  for (const std::size_t d : {0U, 1U}) {
    std::vector<double> needed{0};
    for (const Course& course : courses) {
      const double searched = 0.5 * std::fabs(course.areas[0][2 * d + 1] - course.areas[0][2 * d]);
      const double halfHeight = 0.5 * heightAt(course.places[0]);
      needed.push_back(std::max(1.3 * searched, 2.5 * findExtent(course.places[0], d, halfHeight)));
    }
    std::sort(needed.begin(), needed.end());
    const double ofBox = 6 * (halfWidth(static_cast<int>(d)) + 0.5);
    reach[d] = static_cast<int>(std::clamp<double>(std::max(ofBox, needed[needed.size() / 2]), kLeast, kMost));
  }
}

/// The surroundings of a peak that are drawn; they may reach beyond the plane.
Region PlotData::findNear(std::size_t j) const {
  const Place& place = courses[j].places[0];
  return {{place[0] - reach[0], place[1] - reach[1]}, {place[0] + reach[0], place[1] + reach[1]}};
}

/// What is around each peak in the first or in the last spectrum.
void PlotData::writeSurroundings(std::size_t which, std::size_t k) {
  constexpr double kAboveNoise = 3;
  constexpr double kPart = 0.08;  // of the peak
  constexpr double kFactor = 1.5;
  for (std::size_t j = 0; j < courses.size(); ++j) {
    const Region near = findNear(j);
    const Region inside{
        {std::max(0, near.first[0]), std::max(0, near.first[1])},
        {std::min(near.last[0], spectrum.getSize(0) - 1), std::min(near.last[1], spectrum.getSize(1) - 1)}};
    std::ostringstream points;
    for (int b = inside.first[1]; b <= inside.last[1]; ++b) {
      for (int a = inside.first[0]; a <= inside.last[0]; ++a) {
        points << ppm(a, 0) << ' ' << ppm(b, 1) << ' ' << spectrum.getData()[a][b] << '\n';
      }
      points << '\n';
    }
    const std::string name = std::to_string(j + 1) + "-" + std::to_string(which + 1);
    save("near-" + name, points.str());
    save("boxes-" + name, listBoxes(near, k));

    Course& course = courses[j];
    const auto [lowest, highest] = findRange(inside);
    const double base = std::max(kAboveNoise * pointNoise, kPart * heightAt(course.places[k]));
    course.positive[which] = listLevels(base, highest, kFactor, 1);
    course.negative[which] = listLevels(base, -lowest, kFactor, -1);
  }
}

/// The boxes of the k-th spectrum that reach into a region.
std::string PlotData::listBoxes(const Region& region, std::size_t k) const {
  std::ostringstream boxesThere;
  for (std::size_t j = 0; j < courses.size(); ++j) {
    bool isThere = true;
    for (const int dim : {0, 1}) {
      const auto d = static_cast<std::size_t>(dim);
      const int point = courses[j].places[k][d];
      isThere = isThere && point + halfWidth(dim) >= region.first[d] && point - halfWidth(dim) <= region.last[d];
    }
    if (!isThere) continue;
    writeBox(boxesThere, j, k);
    boxesThere << '\n';
  }
  return boxesThere.str();
}

/// "1H" with its mass number raised, and the frequency.
void PlotData::writeAxes() {
  const std::array<std::string, 2> names = nameDimensions(spectrum);
  for (const int dim : {0, 1}) {
    std::string name = names[static_cast<std::size_t>(dim)];
    runSettings << "name" << dim + 1 << " = '" << name << "'\n";
    if (name[0] != 'D') {
      const std::size_t digits = name.find_first_not_of("0123456789");
      const std::string element = name.substr(digits, name.find('_') - digits);
      name = std::string("^{").append(name, 0, digits).append("}").append(element);
    }
    const std::string d = std::to_string(dim + 1);
    std::ostringstream mhz;
    mhz << spectrum.getObserveMHz(dim);
    runSettings << "title" << d << " = '" << name << " (ppm), " << mhz.str() << " MHz'\nplaneLow" << d << " = "
                << ppm(spectrum.getSize(dim) - 0.5, dim) << "\nplaneHigh" << d << " = " << ppm(-0.5, dim)
                << "\nboxWidth" << d << " = " << 2 * halfWidthPpm(dim) << '\n';
  }
  runSettings << "peaks = " << courses.size() << "\nspectra = " << parameters.size()
              << "\nfirstName = " << quote(settings.getSpectrumFile(0), 80)
              << "\nrunName = " << quote(request.reportFile, 80) << "\nfirstTitle = " << quote(parameters.front(), 10)
              << "\nlastTitle = " << quote(parameters.back(), 10) << '\n';
}

void PlotData::writeParameters() {
  const std::set<double> distinct(abscissas.begin(), abscissas.end());
  const double range = *distinct.rbegin() - *distinct.begin();
  const double margin = range > 0 ? 0.05 * range : 0.5;
  const double step = chooseStep(range + 2 * margin, 4);
  runSettings.precision(17);  // a narrow range may lie far from 0
  runSettings << "startX = " << *distinct.begin() << "\nrangeX = " << range << "\nlowX = " << *distinct.begin() - margin
              << "\nhighX = " << *distinct.rbegin() + margin
              << "\nstepX = " << (hasNumbers ? step : std::max(1.0, step)) << "\nhasNumbers = " << hasNumbers
              << "\nhasNoise = " << !noise.empty() << "\ndistinct = " << distinct.size() << '\n';
}

/// The lists of all peaks.
void PlotData::writeLists() const {
  std::ostringstream boxesOfMap;
  std::ostringstream labels;
  for (std::size_t j = 0; j < courses.size(); ++j) {
    writeBox(boxesOfMap, j, 0);
    boxesOfMap << '\t' << !courses[j].trouble.empty() << '\n';
    std::string label = peaks.getLabel(static_cast<int>(j));
    std::replace(label.begin(), label.end(), '\t', ' ');
    if (!isNoise(j)) labels << j + 1 << '\t' << label << '\n';
  }
  save("boxes", boxesOfMap.str());
  save("labels", labels.str());
}

void PlotData::writeCurve(std::size_t j) const {
  std::ostringstream stream;
  stream.precision(17);
  for (std::size_t k = 0; k < parameters.size(); ++k) {
    stream << abscissas[k] << '\t' << writtenIntensity(j, k);
    if (!noise.empty()) stream << '\t' << noise[k];
    stream << '\n';
  }
  save("curve-" + std::to_string(j + 1), stream.str());
}

/// Where a folded peak is in the list.
std::string PlotData::describeFolding(std::size_t j) const {
  std::ostringstream text;
  for (const int dim : {0, 1}) {
    const double position = peaks.getPosition(static_cast<int>(j), dim);
    if (std::fabs(position - courses[j].listed[static_cast<std::size_t>(dim)]) < 0.5) continue;
    text << (text.tellp() > 0 ? ", " : "folded, listed at ") << ppm(position, dim) << " ppm";
  }
  return text.str();
}

/// Arrays have one entry for the first and one for the last spectrum.
void PlotData::writePeak(std::size_t j) const {
  const Course& course = courses[j];
  const int entry = static_cast<int>(j);
  std::ostringstream stream;
  const auto writePair = [&stream](const std::string& name, const auto& first, const auto& second) {
    stream << "array " << name << "[2] = [" << first << ", " << second << "]\n";
  };
  stream << "isFitted = 0\nremark = ''\nnumber = " << peaks.getNumber(entry) << "\nname = " << quote(nameOf(j))
         << "\ntrouble = " << quote(course.trouble, 60) << "\nnote = " << quote(describeFolding(j), 60) << '\n';
  writePair("positive", course.positive[0], course.positive[1]);
  writePair("negative", course.negative[0], course.negative[1]);
  const Region near = findNear(j);
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const std::string number = std::to_string(dim + 1);
    const double low = ppm(near.last[d], dim);
    const double high = ppm(near.first[d], dim);
    stream << "low" << number << " = " << low << "\nhigh" << number << " = " << high << "\nstep" << number << " = "
           << chooseStep(high - low, dim == 0 ? 8 : 4) << "\nlisted" << number << " = " << ppm(course.listed[d], dim)
           << '\n';
    writePair("found" + number, ppm(course.places.front()[d], dim), ppm(course.places.back()[d], dim));
    writePair("areaLow" + number, ppm(course.areas[0][2 * d + 1], dim), ppm(course.areas[1][2 * d + 1], dim));
    writePair("areaHigh" + number, ppm(course.areas[0][2 * d], dim), ppm(course.areas[1][2 * d], dim));
  }
  writeLabel(j, stream);
  writeScale(j, stream);
  save("peak-" + std::to_string(j + 1) + ".gp", stream.str());
}

void PlotData::writeLabel(std::size_t j, std::ostream& stream) const {
  const LabelPlace& place = courses[j].label;
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const std::string equals = std::to_string(dim + 1) + " = ";
    const auto size = static_cast<double>(spectrum.getSize(dim));
    stream << "map" << equals << ppm(size * place.area.centre[d], dim) << "\nfrom" << equals
           << ppm(size * place.from[d], dim) << "\nto" << equals << ppm(size * place.to[d], dim) << '\n';
  }
}

/// The range of the intensities with their uncertainties and 0, and the power of ten that they are divided by.
void PlotData::writeScale(std::size_t j, std::ostream& stream) const {
  double lowest = 0;
  double highest = 0;
  for (std::size_t k = 0; k < parameters.size(); ++k) {
    const double uncertainty = noise.empty() ? 0 : noise[k];
    lowest = std::min(lowest, writtenIntensity(j, k) - uncertainty);
    highest = std::max(highest, writtenIntensity(j, k) + uncertainty);
  }
  if (lowest == highest) highest = 1;
  const double exponent = std::floor(std::log10(std::max(highest, -lowest)));
  const double scale = std::pow(10, exponent);
  const double margin = 0.06 * (highest - lowest) / scale;
  const double lowY = lowest / scale - (lowest < 0 ? margin : 0);
  const double highY = highest / scale + (highest > 0 ? margin : 0);
  stream << "exponent = " << exponent << "\nlowY = " << lowY << "\nhighY = " << highY
         << "\nstepY = " << chooseStep(highY - lowY, 5) << '\n';
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
