// peakbox-check [-o REPORT] PARAMETER-FILE: reads what a run of peakbox would read, does what it would do, and says
// what is wrong with it: see peakbox-check(1).

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/RunSettings.h"
#include "base/TextNumbers.h"
#include "base/ThrowingMessages.h"
#include "integrate/BoxTable.h"
#include "peaks/LineSplitter.h"
#include "peaks/PeakList.h"
#include "spectrum/FileHeader.h"
#include "spectrum/Spectrum.h"

namespace {

using namespace peakbox;
namespace fs = std::filesystem;

// What is told and what is not, so that a healthy series gives no finding.
constexpr double kSureHeight = 5.0;        // noise of a point below which a peak is not trusted
constexpr double kSameMHz = 0.01;          // relative: people round the MHz of a list
constexpr double kSameAxisPoints = 0.1;    // of a later spectrum against the first
constexpr double kMovedPoints = 1.0;       // median of all peaks of a spectrum
constexpr std::size_t kFewestMoved = 3;    // peaks that a median needs
constexpr std::size_t kMostPartners = 20;  // overlapping boxes that are told of one peak

constexpr std::size_t kHeaderLines = 6;

/// The findings of a run in the order in which they are printed: by stage, and in a stage by line.
class Findings {
 public:
  enum Stage { Parameters, Peaks, Spectra, Measurement };

  /// `line` is 0 where there is none.
  void error(Stage stage, const std::string& file, std::int64_t line, const std::string& text) {
    hasErrors = true;
    add(stage, file, line, "error: " + text);
  }
  void warning(Stage stage, const std::string& file, std::int64_t line, const std::string& text) {
    add(stage, file, line, "warning: " + text);
  }

  /// Prints all of them; false when that failed.
  bool print() {
    for (auto& stage : stages) {
      std::stable_sort(stage.begin(), stage.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
      for (const auto& [line, text] : stage) std::cout << text << '\n';
    }
    return static_cast<bool>(std::cout.flush());
  }

  bool anyErrors() const { return hasErrors; }

 private:
  void add(Stage stage, const std::string& file, std::int64_t line, const std::string& text) {
    const std::string place = line > 0 ? file + ":" + std::to_string(line) : file;
    stages[stage].emplace_back(line, showControls(place + ": " + text));
  }

  /// Control characters as they are written in source code.
  static std::string showControls(const std::string& text) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string shown;
    for (const char c : text) {
      const auto code = static_cast<unsigned char>(c);
      if (code >= 0x20 && code != 0x7f) {
        shown += c;
      } else if (c == '\r' || c == '\t' || c == '\n') {
        shown += c == '\r' ? "\\r" : c == '\t' ? "\\t" : "\\n";
      } else {
        shown += std::string("\\x") + kDigits[code >> 4] + kDigits[code & 15];
      }
    }
    return shown;
  }

  std::array<std::vector<std::pair<std::int64_t, std::string>>, 4> stages;
  bool hasErrors = false;
};

/// What peakbox prints when it ends there, on one line.
std::string textOf(const RunEnd& end) {
  std::string text = end.message;
  while (text.ends_with('\n')) text.pop_back();
  for (std::size_t place = 0; (place = text.find("\n\t", place)) != std::string::npos;) text.replace(place, 2, " ");
  return text;
}

/// All of a file; an open stream of its own, since a pipe can be read only once.
std::string readAll(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool isNumber(const char* text) {
  char* end = nullptr;
  std::strtod(text, &end);
  return end != text;
}

bool hasTextBehindNumber(const char* text) {
  char* end = nullptr;
  std::strtod(text, &end);
  return end != text && *end != '\0';
}

/// Digits, and no leading zero that would make them octal.
bool isPlainDecimal(const std::string& text) {
  return text == "0" || (!text.empty() && text[0] != '0' && text.find_first_not_of("0123456789") == std::string::npos);
}

/// "1, 3 to 5 and 8"
std::string describeList(const std::vector<int>& numbers) {
  std::vector<std::string> parts;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
    if (last < i + 2) last = i;
    parts.push_back(last == i ? std::to_string(numbers[i])
                              : std::to_string(numbers[i]) + " to " + std::to_string(numbers[last]));
    i = last + 1;
  }
  std::string text = parts.front();
  for (std::size_t i = 1; i < parts.size(); ++i) text += (i + 1 == parts.size() ? " and " : ", ") + parts[i];
  return text;
}

std::string describeSpectra(const std::vector<int>& numbers) {
  return (numbers.size() == 1 ? "spectrum " : "spectra ") + describeList(numbers);
}

/// The middle value; changes the order of `values`, of which there is at least one.
double takeMedian(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// 1.4826 times the median absolute deviation of the plane's finite values: the standard deviation of its noise.
double estimateNoise(const Spectrum& spectrum) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(spectrum.getSize(0)) * static_cast<std::size_t>(spectrum.getSize(1)));
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    for (int i = 0; i < spectrum.getSize(0); ++i) {
      const double value = spectrum.getData()[i][j];
      if (std::isfinite(value)) values.push_back(value);
    }
  }
  if (values.empty()) return 0.0;
  const double median = takeMedian(values);
  for (double& value : values) value = std::fabs(value - median);
  return 1.4826 * takeMedian(values);
}

/// What a plane holds, as far as it matters for telling planes apart and good ones from bad.
struct PlaneContents {
  std::uint64_t fingerprint = 0;
  std::int64_t notFinite = 0;
  bool isAllZero = true;
};

PlaneContents surveyPlane(const Spectrum& spectrum) {
  PlaneContents contents;
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    for (int i = 0; i < spectrum.getSize(0); ++i) {
      const double value = spectrum.getData()[i][j];
      contents.fingerprint = (contents.fingerprint ^ std::bit_cast<std::uint64_t>(value)) * 0x9e3779b97f4a7c15u;
      contents.fingerprint ^= contents.fingerprint >> 32;
      contents.notFinite += !std::isfinite(value);
      contents.isAllZero = contents.isAllZero && value == 0.0;
    }
  }
  return contents;
}

/// Whether a file is there that is neither an ordinary one nor a folder: reading a pipe would use it up.
bool isUnusual(const std::string& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

/// The files of formats that people try although peakbox does not read them.
std::string describeForeignFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  char bytes[8] = {};
  stream.read(bytes, sizeof bytes);
  const std::string start(bytes, static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  const fs::path name = fs::path(path).filename();
  if (start.starts_with("UCSF NMR")) return "this is a UCSF file, as Sparky has them";
  if (start.starts_with("\x89HDF")) return "this is an HDF5 file";
  if (start.starts_with("\x1f\x8b")) return "this is a compressed file; unpack it first";
  if (name == "2rr" || name == "ser" || name == "fid") return "this is a file of a Bruker data set";
  if (start.empty()) return "this is an empty file";
  return "";
}

/// What a file of other lines than the six that peakbox's lists begin with may be; empty where that cannot be told.
std::string describeForeignList(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    std::istringstream words(line);
    std::string first;
    words >> first;
    if (first == "Assignment") return "this is a list of Sparky or POKY";
    if (first == "VARS" || first == "FORMAT") return "this is a table of NMRPipe";
    if (!first.empty() && first != "REMARK" && first != "DATA") return "";
  }
  return "";
}

/// Takes the carriage returns out of Windows line ends, so that what else is wrong can be found.
std::string removeCarriageReturns(const std::string& text, Findings& findings, Findings::Stage stage,
                                  const std::string& file) {
  const std::size_t first = text.find("\r\n");
  if (first == std::string::npos) return text;
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(first), '\n');
  findings.error(
      stage, file, line,
      "lines end with a carriage return (\r), as Windows writes them, and peakbox takes it for a part of the "
      "last value; take them out, for instance with dos2unix");
  std::string unixText;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') unixText += text[i];
  }
  return unixText;
}

/// Reads the parameter file into `settings`, as far as it can be read.
class ParameterCheck {
 public:
  ParameterCheck(std::string path, RunSettings& target, Findings& sink)
      : file(std::move(path)), settings(target), findings(sink) {}

  void run();

  /// Tolerances in points need the axes of the first spectrum.
  void checkTolerancePoints(const Spectrum& spectrum);

  /// What would become of a report of this name.
  void checkReport(const std::string& report);

 private:
  void noteKeyword(std::int64_t line);
  void checkValues(std::int64_t line);
  void checkBoxSize(std::int64_t line);
  void checkTolerance(std::int64_t line);
  void checkSpectrumLine(std::int64_t line);
  std::vector<std::string> listInputs() const;

  void error(std::int64_t line, const std::string& text) { findings.error(Findings::Parameters, file, line, text); }
  void warning(std::int64_t line, const std::string& text) { findings.warning(Findings::Parameters, file, line, text); }

  const std::string file;
  RunSettings& settings;
  Findings& findings;
  std::map<std::string, std::int64_t> lineOfKeyword;
  std::int64_t toleranceLine = 0;  // of the one that counts
};

void ParameterCheck::run() {
  std::ifstream opened(file);
  if (!opened.is_open()) return error(0, "ERROR: Unable to open '" + file + "'");
  std::istringstream stream(removeCarriageReturns(readAll(opened), findings, Findings::Parameters, file));
  const auto accept = [&](std::int64_t line, const auto& step) {
    try {
      step();
      return true;
    } catch (const RunEnd& end) {
      error(line, textOf(end));
      return false;
    }
  };
  for (std::int64_t line = 1; !stream.fail(); ++line) {
    const bool isGood = accept(line, [&] { settings.parseNextLine(stream, line); });
    if (settings.getTokens().empty()) continue;
    noteKeyword(line);
    if (isGood) checkValues(line);
  }
  accept(0, [&] { settings.refuseNoSpectrum(); });
  if (!lineOfKeyword.contains("BOXSIZE")) accept(0, [&] { settings.getBoxSize(0); });
  if (!lineOfKeyword.contains("PEAKLIST")) error(0, "no PEAKLIST specified (ERROR: Unable to open '')");
}

void ParameterCheck::noteKeyword(std::int64_t line) {
  std::string keyword = settings.getTokens()[0];
  for (char& c : keyword) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (keyword == "FIELD" || keyword == "BOXSIZE" || keyword == "PEAKLIST" || keyword == "TOLERANCE") {
    if (lineOfKeyword.contains(keyword)) {
      warning(line, keyword + " again: this line counts, not line " + std::to_string(lineOfKeyword[keyword]));
    }
  }
  lineOfKeyword[keyword] = line;
}

void ParameterCheck::checkValues(std::int64_t line) {
  const auto isAt = [&](const char* keyword) {
    return lineOfKeyword.contains(keyword) && lineOfKeyword[keyword] == line;
  };
  if (isAt("BOXSIZE")) checkBoxSize(line);
  if (isAt("TOLERANCE")) checkTolerance(line);
  if (isAt("SPECTRUM")) checkSpectrumLine(line);
}

void ParameterCheck::checkBoxSize(std::int64_t line) {
  const std::vector<std::string>& tokens = settings.getTokens();
  if (tokens.size() <= 3 && std::all_of(tokens.begin() + 1, tokens.end(), isPlainDecimal)) return;
  std::string values = tokens[1];
  for (std::size_t i = 2; i < tokens.size(); ++i) values += " " + tokens[i];
  const std::int64_t half1 = settings.getBoxSize(0);
  const std::int64_t half2 = settings.getBoxSize(1);
  warning(line, "BOXSIZE '" + values + "' is read as " + std::to_string(half1) + " and " + std::to_string(half2) +
                    ", a box of " + std::to_string(2 * half1 + 1) + " x " + std::to_string(2 * half2 + 1) +
                    " points; write one or two plain decimal numbers");
}

void ParameterCheck::checkTolerance(std::int64_t line) {
  const std::vector<std::string>& tokens = settings.getTokens();
  toleranceLine = line;
  for (const std::size_t i : {1U, 2U}) {
    const double value = textToReal(tokens[i].c_str());
    const std::string readAs = "TOLERANCE '" + tokens[i] + "' is read as " + realToText(value) + " Hz";
    if (!isNumber(tokens[i].c_str()) || hasTextBehindNumber(tokens[i].c_str())) warning(line, readAs);
    if (value < 0) warning(line, "TOLERANCE " + tokens[i] + " is negative");
  }
  if (tokens.size() > 3 && isNumber(tokens[3].c_str())) {
    warning(line, "of more than two TOLERANCE values the first two count, " + tokens[1] + " and " + tokens[2] +
                      "; numbers have a decimal point, and a comma separates values");
  }
}

void ParameterCheck::checkSpectrumLine(std::int64_t line) {
  const std::vector<std::string>& tokens = settings.getTokens();
  const auto comment = std::find_if(tokens.begin() + 2, tokens.end(), [](const auto& word) { return word[0] == '#'; });
  if (comment != tokens.end()) {
    warning(line, "'" + *comment + "' begins no comment here: this and what follows count as words of the spectrum");
  } else if (tokens.size() > 4) {
    warning(line, "nothing keeps the words from '" + tokens[4] + "' on: a spectrum has at most two");
  }
}

void ParameterCheck::checkTolerancePoints(const Spectrum& spectrum) {
  if (settings.getSpectrumCount() < 2 || toleranceLine == 0) return;
  const double tolerances[] = {settings.getTolerance1(), settings.getTolerance2()};
  for (const int dim : {0, 1}) {
    const double points = spectrum.hzToPoints(tolerances[dim], dim);
    if (!(points > 0.0 && points < 1.0)) continue;
    const std::string value = realToText(tolerances[dim]);
    const std::string place = " of dimension " + std::to_string(dim + 1);
    warning(toleranceLine, "TOLERANCE" + place + ", " + value + " Hz, is less than a point (" +
                               realToText(tolerances[dim] / points) + " Hz) and acts as 0");
  }
}

std::vector<std::string> ParameterCheck::listInputs() const {
  std::vector<std::string> inputs{file, settings.getPeakListFile()};
  for (int k = 0; k < settings.getSpectrumCount(); ++k) inputs.emplace_back(settings.getSpectrumFile(k));
  return inputs;
}

void ParameterCheck::checkReport(const std::string& report) {
  const auto refuse = [&](const std::string& text) { findings.error(Findings::Parameters, report, 0, text); };
  std::error_code ignored;
  for (const std::string& input : listInputs()) {
    if (fs::equivalent(report, input, ignored)) return refuse("the report would overwrite the input " + input);
  }
  if (fs::is_directory(report, ignored)) return refuse("the report cannot be written: this is a folder");
  if (fs::exists(report, ignored)) {
    if (access(report.c_str(), W_OK) != 0) return refuse("the report cannot be written: no permission");
    std::ifstream stream(report);
    std::string line;
    const bool isReport =
        !std::getline(stream, line) || line.starts_with("# FIELD(MHz): ") || line.starts_with("# SPECTRUM ");
    if (fs::is_regular_file(report, ignored) && !isReport)
      refuse("the report would overwrite a file that is no report");
    return;
  }
  const fs::path folder = fs::path(report).has_parent_path() ? fs::path(report).parent_path() : ".";
  if (report.empty() || !fs::is_directory(folder, ignored))
    return refuse("the report cannot be created: no such folder");
  if (access(folder.c_str(), W_OK | X_OK) != 0) refuse("the report cannot be created: no permission in its folder");
}

/// The peaks of the list that can be read and placed, each with its line.
struct ListedPeaks {
  std::string file;
  std::unique_ptr<PeakList> list = std::make_unique<PeakList>();
  std::vector<std::int64_t> lines;

  /// How a finding begins that concerns peak `j`.
  std::string nameOf(std::size_t j) const { return list->getLabel(static_cast<int>(j)); }
};

/// Reads the peak list, as far as it can be read, and places its peaks by the axes of the first spectrum.
class PeakListCheck {
 public:
  PeakListCheck(const RunSettings& runSettings, const Spectrum& firstSpectrum, bool axesAreKnown, Findings& sink)
      : settings(runSettings), spectrum(firstSpectrum), hasAxes(axesAreKnown), findings(sink) {
    peaks.file = settings.getPeakListFile();
  }

  ListedPeaks run();

  /// Whether what was read can be measured.
  bool isUsable() const { return usable; }

 private:
  bool readHeader(const std::vector<std::string>& lines);
  void readPeak(const std::string& text, std::int64_t line);
  bool checkFields(const LineSplitter& fields, std::int64_t line);
  void checkRepetition(std::int64_t line);
  void checkFrequencies(const std::string& text);
  void checkDimensions();
  bool isFarOff(const PeakList& alone) const;
  void dropUnplaceable();
  void checkFolding();

  void error(std::int64_t line, const std::string& text) { findings.error(Findings::Peaks, peaks.file, line, text); }
  void warning(std::int64_t line, const std::string& text) {
    findings.warning(Findings::Peaks, peaks.file, line, text);
  }

  const RunSettings& settings;
  const Spectrum& spectrum;
  const bool hasAxes;
  Findings& findings;
  ListedPeaks peaks;
  std::string header;
  std::vector<std::string> texts;  // the peaks' lines
  std::vector<bool> hasNumbers;    // in all fields of these that are read
  std::unordered_map<std::string, std::int64_t> lineOfLabel;
  std::unordered_map<std::int32_t, std::int64_t> lineOfNumber;
  bool isComplete = false;  // all columns are there
  bool frequenciesExchanged = false;
  bool usable = false;
};

ListedPeaks PeakListCheck::run() {
  if (peaks.file.empty()) return std::move(peaks);
  std::ifstream opened(peaks.file);
  if (!opened.is_open()) {
    error(0, "ERROR: Unable to open '" + peaks.file + "'");
    return std::move(peaks);
  }
  const std::string text = removeCarriageReturns(readAll(opened), findings, Findings::Peaks, peaks.file);
  const std::vector<std::string> lines = splitLines(text);
  if (!readHeader(lines)) return std::move(peaks);
  for (std::size_t i = kHeaderLines; i < lines.size(); ++i) readPeak(lines[i], static_cast<std::int64_t>(i) + 1);
  if (!text.ends_with('\n')) {
    const auto last = static_cast<std::int64_t>(lines.size());
    const bool isPeak = !peaks.lines.empty() && peaks.lines.back() == last;
    error(last, "no newline ends the last line, so that " +
                    (isPeak ? "peak " + peaks.nameOf(peaks.lines.size() - 1) : std::string("it")) + " is lost");
  }
  if (peaks.lines.empty()) error(0, "no peaks");
  usable = hasAxes && isComplete && !peaks.lines.empty();
  if (hasAxes) checkFrequencies(lines[4]);
  if (usable) checkDimensions();
  if (usable) dropUnplaceable();
  if (usable) checkFolding();
  return std::move(peaks);
}

bool PeakListCheck::readHeader(const std::vector<std::string>& lines) {
  const std::string refusal = "not a peak list of the kind that peakbox reads";
  const std::string kind = describeForeignList(lines);
  if (!kind.empty() || lines.size() < kHeaderLines) {
    error(0, refusal + ": " + (kind.empty() ? "fewer than six header lines" : kind));
    return false;
  }
  for (std::size_t i = 0; i < kHeaderLines; ++i) header += lines[i] + "\n";
  std::istringstream stream(header);
  try {
    peaks.list->readHeader(stream);
  } catch (const RunEnd& end) {
    error(2, refusal + ": line 2 does not name two dimensions (" + textOf(end) + ")");
    return false;
  }
  LineSplitter names;
  std::istringstream secondLine(lines[1] + "\n");
  names.readLine(secondLine);
  const std::string name1 = names.getField(0);
  const std::string name2 = names.getField(1);
  const std::tuple<std::int32_t, std::string, std::string> columns[] = {
      {peaks.list->getLabelColumn(), name1 + ".L", "label"},
      {peaks.list->getPositionColumn(0), name1 + ".P", "position in dimension 1"},
      {peaks.list->getBoundsColumn(0), name1 + ".B", "width in dimension 1"},
      {peaks.list->getPositionColumn(1), name2 + ".P", "position in dimension 2"},
      {peaks.list->getBoundsColumn(1), name2 + ".B", "width in dimension 2"}};
  const auto isMissing = [](const auto& column) { return std::get<0>(column) == 0; };
  if (std::all_of(std::begin(columns), std::end(columns), isMissing)) {
    error(6, refusal + ": none of the columns " + name1 + ".L, " + name1 + ".P, " + name1 + ".B, " + name2 + ".P and " +
                 name2 + ".B that line 2 asks for");
    return false;
  }
  isComplete = std::none_of(std::begin(columns), std::end(columns), isMissing);
  for (const auto& [column, name, meaning] : columns) {
    if (column == 0) error(6, "no column " + name + ": the peak number would be read as the " + meaning);
  }
  return true;
}

void PeakListCheck::readPeak(const std::string& text, std::int64_t line) {
  const int countBefore = peaks.list->getCount();
  std::istringstream stream(text + "\n");
  try {
    peaks.list->readPeaks(stream, spectrum);
  } catch (const RunEnd& end) {
    const bool isEmpty = text.find_first_not_of(" \t") == std::string::npos;
    return error(line, std::string(isEmpty ? "empty line" : "too few fields") + ", which ends the run: " + textOf(end));
  }
  if (peaks.list->getCount() == countBefore) return;  // a deleted peak
  peaks.lines.push_back(line);
  texts.push_back(text);
  LineSplitter fields;
  std::istringstream again(text + "\n");
  fields.readLine(again);
  hasNumbers.push_back(checkFields(fields, line));
  checkRepetition(line);
}

bool PeakListCheck::checkFields(const LineSplitter& fields, std::int64_t line) {
  bool areNumbers = true;
  const std::string name = peaks.nameOf(peaks.lines.size() - 1);
  for (const int dim : {0, 1}) {
    const std::string where = " in dimension " + std::to_string(dim + 1);
    for (const bool isWidth : {false, true}) {
      const std::int32_t column = isWidth ? peaks.list->getBoundsColumn(dim) : peaks.list->getPositionColumn(dim);
      if (column == 0) continue;
      const std::string text = fields.getField(column);
      const std::string what = name + ": " + (isWidth ? "width" : "position") + where + " '" + text + "'";
      if (!isNumber(text.c_str())) {
        error(line, what + " is no number and is read as 0");
        areNumbers = false;
      } else if (hasTextBehindNumber(text.c_str())) {
        warning(line, what + " is read as " + realToText(textToReal(text.c_str())));
      } else if (isWidth && textToReal(text.c_str()) <= 0) {
        warning(line, what + " is not above 0");
      }
    }
  }
  return areNumbers;
}

void PeakListCheck::checkRepetition(std::int64_t line) {
  const int j = peaks.list->getCount() - 1;
  const std::string& label = peaks.list->getLabel(j);
  const auto [withLabel, isNewLabel] = lineOfLabel.emplace(label, line);
  if (!isNewLabel)
    warning(line, label + ": the peak of line " + std::to_string(withLabel->second) + " has this label too");
  const std::int32_t number = peaks.list->getNumber(j);
  const auto [withNumber, isNewNumber] = lineOfNumber.emplace(number, line);
  if (!isNewNumber) {
    warning(line, label + ": the peak of line " + std::to_string(withNumber->second) + " has the number " +
                      std::to_string(number) + " too");
  }
}

/// Line 5 is not read by a run, but it tells what the list was made for.
void PeakListCheck::checkFrequencies(const std::string& text) {
  LineSplitter fields;
  std::istringstream stream(text + "\n");
  fields.readLine(stream);
  double listed[2] = {};
  try {
    for (const int dim : {0, 1}) listed[dim] = textToReal(fields.getField(dim) + (*fields.getField(dim) == '{'));
  } catch (const RunEnd&) {
    return;
  }
  if (!(listed[0] > 0 && listed[1] > 0)) return;
  const auto fits = [&](double mhz, int dim) {
    const double own = std::fabs(spectrum.getObserveMHz(dim));
    return std::fabs(mhz - own) <= kSameMHz * own;
  };
  if (fits(listed[0], 0) && fits(listed[1], 1)) return;
  frequenciesExchanged = fits(listed[0], 1) && fits(listed[1], 0);
  if (frequenciesExchanged) return;
  warning(5, "the list was made at " + realToText(listed[0]) + " and " + realToText(listed[1]) +
                 " MHz, but the spectrum has " + realToText(spectrum.getObserveMHz(0)) + " and " +
                 realToText(spectrum.getObserveMHz(1)) + " MHz");
}

void PeakListCheck::checkDimensions() {
  const auto isInside = [&](double ppm, int dim) {
    const double point = spectrum.ppmToPoint(ppm, dim);
    return point > -0.5 && point < spectrum.getSize(dim) - 0.5;
  };
  std::size_t straight = 0;
  std::size_t exchanged = 0;
  for (int j = 0; j < peaks.list->getCount(); ++j) {
    const double ppm1 = spectrum.pointToPpm(peaks.list->getPosition(j, 0), 0);
    const double ppm2 = spectrum.pointToPpm(peaks.list->getPosition(j, 1), 1);
    straight += isInside(ppm1, 0) && isInside(ppm2, 1);
    exchanged += isInside(ppm1, 1) && isInside(ppm2, 0);
  }
  const std::size_t half = (peaks.lines.size() + 1) / 2;
  const bool positionsExchanged = exchanged >= half && straight < half;
  const bool positionsFit = straight >= half && exchanged < half;
  if (!positionsExchanged && !(frequenciesExchanged && !positionsFit)) return;
  error(2, std::string("the dimensions are exchanged: the ") + (positionsExchanged ? "positions" : "MHz of line 5") +
               " fit the spectrum only the other way round; line 2 must name the direct dimension first, and the "
               "spectrum must not "
               "be transposed");
  usable = false;
}

/// Whether the list's only peak lies so far off that no spectrum can mean it; folding it would take seconds.
bool PeakListCheck::isFarOff(const PeakList& alone) const {
  constexpr double kMostSizes = 1e6;
  for (const int dim : {0, 1}) {
    const double reach = std::fabs(alone.getPosition(0, dim)) + std::fabs(alone.getBoundsWidth(0, dim));
    if (reach > kMostSizes * spectrum.getSize(dim) && std::isfinite(reach)) return true;
  }
  return false;
}

/// Leaves out the peaks that cannot be measured; a run ends at the first that has no place in the spectrum.
void PeakListCheck::dropUnplaceable() {
  ListedPeaks kept;
  kept.file = peaks.file;
  std::istringstream headerStream(header);
  kept.list->readHeader(headerStream);
  for (std::size_t j = 0; j < texts.size(); ++j) {
    if (!hasNumbers[j]) continue;
    PeakList alone;
    std::istringstream lines(header + texts[j] + "\n");
    alone.readHeader(lines);
    alone.readPeaks(lines, spectrum);
    if (isFarOff(alone)) {
      error(peaks.lines[j], peaks.nameOf(j) + ": more than a million spectral widths outside the spectrum");
      continue;
    }
    try {
      BoxTable(1, settings.getTolerance1(), settings.getTolerance2()).placeBoxes(spectrum, alone);
    } catch (const RunEnd& end) {
      std::string text = textOf(end);
      text.replace(text.find("Peak 0"), 6, "Peak " + std::to_string(j));
      error(peaks.lines[j], peaks.nameOf(j) + ": no place in the spectrum, which ends the run: " + text);
      continue;
    }
    std::istringstream line(texts[j] + "\n");
    kept.list->readPeaks(line, spectrum);
    kept.lines.push_back(peaks.lines[j]);
  }
  takeMessages();
  peaks = std::move(kept);
  usable = !peaks.lines.empty();
}

void PeakListCheck::checkFolding() {
  BoxTable boxes(static_cast<unsigned>(peaks.list->getCount()), settings.getTolerance1(), settings.getTolerance2());
  boxes.placeBoxes(spectrum, *peaks.list);
  takeMessages();
  for (int j = 0; j < peaks.list->getCount(); ++j) {
    const int folds[] = {std::abs(boxes.getFoldCount1(j)), std::abs(boxes.getFoldCount2(j))};
    for (const int dim : {0, 1}) {
      if (folds[dim] < 2) continue;
      warning(peaks.lines[static_cast<std::size_t>(j)],
              peaks.list->getLabel(j) + ": folded " + std::to_string(folds[dim]) + " times in dimension " +
                  std::to_string(dim + 1) + ", so that its position is probably wrong");
    }
  }
}

/// Measures the peaks as a run does and remembers what is odd about it.
class MeasurementCheck {
 public:
  MeasurementCheck(const RunSettings& runSettings, const ListedPeaks& listed, Findings& sink)
      : settings(runSettings),
        peaks(listed),
        findings(sink),
        boxes(static_cast<unsigned>(listed.list->getCount()), settings.getTolerance1(), settings.getTolerance2()),
        places(listed.lines.size()),
        isLost(listed.lines.size()),
        flankSpectra(listed.lines.size()) {}

  /// Measures spectrum `k` of the run, from 0; the first one comes first.
  void measure(int k, const Spectrum& spectrum);

  /// What concerns several spectra is told at the end.
  void finish();

 private:
  struct Place {
    std::int64_t a = 0;
    std::int64_t b = 0;
  };
  struct Pair {
    std::vector<int> sameSpectra;
    std::vector<int> sharedSpectra;
    std::int64_t mostShared = 0;
  };

  void measurePeak(int k, std::size_t j, const Spectrum& spectrum);
  void checkHeight(std::size_t j, const Spectrum& spectrum);
  void checkPairs(int k);
  void checkMovement(int k, const Spectrum& spectrum);
  bool isOnFlank(const Spectrum& spectrum, const Place& place, bool along1, bool along2, Place& higher) const;
  bool isNoise(std::size_t j) const { return peaks.nameOf(j).find("noise") != std::string::npos; }

  void error(std::size_t j, const std::string& text) {
    findings.error(Findings::Measurement, peaks.file, peaks.lines[j], peaks.nameOf(j) + ": " + text);
  }
  void warning(std::size_t j, const std::string& text) {
    findings.warning(Findings::Measurement, peaks.file, peaks.lines[j], peaks.nameOf(j) + ": " + text);
  }

  const RunSettings& settings;
  const ListedPeaks& peaks;
  Findings& findings;
  BoxTable boxes;
  double noise = 0.0;  // of a point of the first spectrum
  bool movesAlong1 = true;
  bool movesAlong2 = true;
  std::vector<Place> places;       // in the spectrum in hand
  std::vector<Place> firstPlaces;  // in the first spectrum
  std::vector<bool> isLost;        // the run would have ended at this peak
  std::vector<std::vector<int>> flankSpectra;
  std::map<std::pair<std::size_t, std::size_t>, Pair> pairs;
};

void MeasurementCheck::measure(int k, const Spectrum& spectrum) {
  if (k == 0) {
    noise = estimateNoise(spectrum);
    boxes.placeBoxes(spectrum, *peaks.list);
    takeMessages();
  }
  for (std::size_t j = 0; j < places.size(); ++j) {
    if (!isLost[j]) measurePeak(k, j, spectrum);
  }
  if (k == 0) {
    firstPlaces = places;
    boxes.recentreBoxes(peaks.list->getCount());
    movesAlong1 = spectrum.hzToPoints(settings.getTolerance1(), 0) >= 1.0;
    movesAlong2 = spectrum.hzToPoints(settings.getTolerance2(), 1) >= 1.0;
  } else {
    checkMovement(k, spectrum);
  }
  checkPairs(k);
}

void MeasurementCheck::measurePeak(int k, std::size_t j, const Spectrum& spectrum) {
  const int peak = static_cast<int>(j);
  try {
    boxes.integratePeak(peak, spectrum, settings.getBoxSize(0), settings.getBoxSize(1));
  } catch (const RunEnd& end) {
    isLost[j] = true;
    takeMessages();
    return error(j, "the run ends at this peak in spectrum " + std::to_string(k + 1) + ", " +
                        settings.getSpectrumFile(k) + ": " + textOf(end));
  }
  const bool hadNoPoints = takeMessages().find("No data points") != std::string::npos;
  const bool hasWidth = peaks.list->getBoundsWidth(peak, 0) > 0 && peaks.list->getBoundsWidth(peak, 1) > 0;
  if (k == 0 && hadNoPoints && hasWidth) {
    findings.warning(Findings::Peaks, peaks.file, peaks.lines[j],
                     peaks.nameOf(j) + ": no data point in its search area, so that the nearest two are searched");
  }
  places[j] = {std::llround(boxes.getExtent1(peak).centre), std::llround(boxes.getExtent2(peak).centre)};
  if (isNoise(j)) return;
  if (k == 0) checkHeight(j, spectrum);
  Place higher;
  if (isOnFlank(spectrum, places[j], k == 0 || movesAlong1, k == 0 || movesAlong2, higher)) {
    flankSpectra[j].push_back(k + 1);
  }
}

void MeasurementCheck::checkHeight(std::size_t j, const Spectrum& spectrum) {
  const double height = spectrum.getData()[places[j].a][places[j].b];
  if (!(std::fabs(height) < kSureHeight * noise)) return;
  warning(j,
          "height " + realToText(height) + " is below 5 times the noise of the first spectrum, " + realToText(noise));
}

/// Whether a neighbouring point is higher by more than the noise; `higher` is then the highest one. Points that are
/// themselves in the noise are on no flank.
bool MeasurementCheck::isOnFlank(const Spectrum& spectrum, const Place& place, bool along1, bool along2,
                                 Place& higher) const {
  const DataPlane& data = spectrum.getData();
  const double value = data[place.a][place.b];
  if (!(std::fabs(value) >= kSureHeight * noise)) return false;
  const double sign = value < 0 ? -1.0 : 1.0;
  double highest = sign * value + noise;
  bool found = false;
  for (std::int64_t a = place.a - along1; a <= place.a + along1; ++a) {
    for (std::int64_t b = place.b - along2; b <= place.b + along2; ++b) {
      const bool isInside = a >= 0 && a < spectrum.getSize(0) && b >= 0 && b < spectrum.getSize(1);
      if (!isInside || !(sign * data[a][b] > highest)) continue;
      highest = sign * data[a][b];
      higher = {a, b};
      found = true;
    }
  }
  return found;
}

/// From the points of the first spectrum uphill to those of this one, however narrow the tolerance is.
void MeasurementCheck::checkMovement(int k, const Spectrum& spectrum) {
  constexpr int kMostSteps = 10;
  std::vector<double> moved[2];
  for (std::size_t j = 0; j < places.size(); ++j) {
    if (isLost[j] || isNoise(j)) continue;
    Place place = firstPlaces[j];
    for (int step = 0; step < kMostSteps && isOnFlank(spectrum, place, true, true, place); ++step) {
    }
    if (!(std::fabs(spectrum.getData()[place.a][place.b]) >= kSureHeight * noise)) continue;
    moved[0].push_back(static_cast<double>(place.a - firstPlaces[j].a));
    moved[1].push_back(static_cast<double>(place.b - firstPlaces[j].b));
  }
  for (const int dim : {0, 1}) {
    if (moved[dim].size() < kFewestMoved) return;
    const double median = takeMedian(moved[dim]);
    if (std::fabs(median) < kMovedPoints) continue;
    findings.warning(Findings::Measurement, settings.getSpectrumFile(k), 0,
                     "all peaks have moved by " + realToText(median) + " points in dimension " +
                         std::to_string(dim + 1) + " against the first spectrum (median)");
  }
}

/// Boxes that share points, found by going through the peaks in the order of dimension 1.
void MeasurementCheck::checkPairs(int k) {
  const std::int64_t reach1 = std::int64_t{2} * settings.getBoxSize(0);
  const std::int64_t reach2 = std::int64_t{2} * settings.getBoxSize(1);
  std::vector<std::size_t> order;
  for (std::size_t j = 0; j < places.size(); ++j) {
    if (!isLost[j]) order.push_back(j);
  }
  std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) { return places[i].a < places[j].a; });
  for (std::size_t i = 0; i < order.size(); ++i) {
    std::size_t partners = 0;
    for (std::size_t n = i + 1; n < order.size() && partners < kMostPartners; ++n) {
      const Place& place1 = places[order[i]];
      const Place& place2 = places[order[n]];
      const std::int64_t distance1 = place2.a - place1.a;
      const std::int64_t distance2 = std::abs(place2.b - place1.b);
      if (distance1 > reach1) break;
      if (distance2 > reach2) continue;
      ++partners;
      Pair& pair = pairs[std::minmax(order[i], order[n])];
      (distance1 == 0 && distance2 == 0 ? pair.sameSpectra : pair.sharedSpectra).push_back(k + 1);
      pair.mostShared = std::max(pair.mostShared, (reach1 + 1 - distance1) * (reach2 + 1 - distance2));
    }
  }
}

void MeasurementCheck::finish() {
  for (const auto& [entries, pair] : pairs) {
    const auto [first, second] = entries;
    const std::string other = peaks.nameOf(first) + " (line " + std::to_string(peaks.lines[first]) + ")";
    if (!pair.sameSpectra.empty()) {
      error(second, "measured at the same point as " + other + " in " + describeSpectra(pair.sameSpectra));
    } else if (!isNoise(first) && !isNoise(second)) {
      // Both boxes lie in the plane, so they have no more points than that.
      const std::int64_t boxPoints =
          (std::int64_t{2} * settings.getBoxSize(0) + 1) * (std::int64_t{2} * settings.getBoxSize(1) + 1);
      warning(second, "its box shares up to " + std::to_string(pair.mostShared) + " of " + std::to_string(boxPoints) +
                          " points with that of " + other + " in " + describeSpectra(pair.sharedSpectra));
    }
  }
  for (std::size_t j = 0; j < flankSpectra.size(); ++j) {
    if (flankSpectra[j].empty()) continue;
    warning(j, "its point is no local extreme but on a flank in " + describeSpectra(flankSpectra[j]));
  }
}

/// Reads the spectra as a run does, the header of the first one before the peaks, and has them measured.
class SpectraCheck {
 public:
  SpectraCheck(const RunSettings& runSettings, Findings& sink) : settings(runSettings), findings(sink) {}

  /// Whether the axes of the first spectrum are known.
  bool readFirstHeader();
  const Spectrum& getSpectrum() const { return spectrum; }

  /// Loads all spectra; those that are sound go to `measurement`, if there is one, as long as the first one is.
  void run(MeasurementCheck* measurement);

 private:
  bool load(int k);
  bool checkHeader(int k);
  bool checkAxisOrder(int k);
  bool checkLength(int k);
  void checkAxes(int k);
  bool checkContents(int k);
  std::string explain(const std::string& path) const;

  void error(int k, const std::string& text) {
    findings.error(Findings::Spectra, settings.getSpectrumFile(k), 0, text);
  }
  void warning(int k, const std::string& text) {
    findings.warning(Findings::Spectra, settings.getSpectrumFile(k), 0, text);
  }

  const RunSettings& settings;
  Findings& findings;
  Spectrum spectrum;
  bool hasFirstHeader = false;
  SpectrumFormat firstFormat = SpectrumFormat::None;
  std::array<std::array<double, 2>, 2> firstEnds{};  // ppm of the first and the last point of either dimension
  std::unordered_map<std::uint64_t, int> spectrumOfContents;
};

bool SpectraCheck::readFirstHeader() {
  if (settings.getSpectrumCount() == 0) return false;
  const std::string path = settings.getSpectrumFile(0);
  if (isUnusual(path)) return false;
  try {
    spectrum.readHeader(path.c_str(), false);
    firstFormat = spectrum.getFormat();
    hasFirstHeader = true;
    for (const int dim : {0, 1}) {
      if (spectrum.getSize(dim) > 0) continue;
      error(0, "dimension " + std::to_string(dim + 1) + " has no data points");
      hasFirstHeader = false;
    }
  } catch (const RunEnd& end) {
    error(0, textOf(end) + explain(path));
  }
  takeMessages();
  return hasFirstHeader;
}

void SpectraCheck::run(MeasurementCheck* measurement) {
  bool isFirstSound = false;
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    const bool isSound = load(k) && checkHeader(k) && checkContents(k);
    if (k == 0) isFirstSound = isSound;
    if (measurement != nullptr && isFirstSound && isSound) measurement->measure(k, spectrum);
  }
  if (measurement != nullptr) measurement->finish();
}

bool SpectraCheck::load(int k) {
  const std::string path = settings.getSpectrumFile(k);
  if (isUnusual(path)) {
    warning(k, "not a regular file, and so not checked");
    return false;
  }
  if (k == 0 && !hasFirstHeader) return false;  // already told
  try {
    if (hasFirstHeader) {
      spectrum.loadData(path.c_str(), false);
    } else {
      Spectrum alone;
      alone.readHeader(path.c_str(), false);
      alone.loadData(path.c_str(), false);
    }
    takeMessages();
    return hasFirstHeader;
  } catch (const RunEnd& end) {
    takeMessages();
    error(k, textOf(end) + explain(path));
    return false;
  }
}

/// What else can be said of a file that is refused.
std::string SpectraCheck::explain(const std::string& path) const {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) return " (this is a folder)";
  if (!fs::exists(path, ignored)) return " (there is no such file)";
  const std::string foreign = describeForeignFile(path);
  if (!foreign.empty()) return " (" + foreign + ")";
  try {
    Spectrum alone;
    alone.readHeader(path.c_str(), false);
    takeMessages();
    if (hasFirstHeader && alone.getFormat() != firstFormat)
      return " (it does not have the format of the first spectrum)";
  } catch (const RunEnd&) {
    takeMessages();
  }
  return "";
}

bool SpectraCheck::checkHeader(int k) {
  const bool isInOrder = checkAxisOrder(k);
  const bool isWhole = checkLength(k);
  if (isInOrder) checkAxes(k);
  return isInOrder && isWhole;
}

bool SpectraCheck::checkAxisOrder(int k) {
  if (spectrum.getFormat() != SpectrumFormat::NMRPipe) return true;
  std::ifstream stream(settings.getSpectrumFile(k), std::ios::binary);
  const FileHeader header(stream);
  const auto word = [&](std::size_t index) { return header.getTruncated(4 * index, spectrum.isByteSwapped()); };
  const std::int32_t fastest = word(24);
  const std::int32_t second = word(25);
  for (const int dim : {0, 1}) {
    if (word(dim == 0 ? 56 : 55) != 0) continue;
    warning(k, "complex data in dimension " + std::to_string(dim + 1) + ", of which the real values are measured");
  }
  if (word(221) == 1 || (fastest != 0 && fastest != 2)) {
    error(k,
          "transposed: the rows are not the direct dimension, so that all peaks would be looked for in wrong places");
    return false;
  }
  if (second != 0 && second != 1) {
    error(k, "the second axis is number " + std::to_string(second) + " of its experiment, and peakbox reads number 1");
    return false;
  }
  return true;
}

bool SpectraCheck::checkLength(int k) {
  std::error_code failed;
  const std::uintmax_t bytes = fs::file_size(settings.getSpectrumFile(k), failed);
  const std::uintmax_t wanted = FileHeader::kSize + 4 * spectrum.countDataWords();
  if (failed || bytes == wanted) return true;
  if (bytes > wanted) {
    warning(k, "more data than one plane holds (" + std::to_string(bytes - wanted) +
                   " bytes more): of a cube only the first plane is measured");
    return true;
  }
  error(k, "truncated: " + std::to_string(wanted - bytes) + " bytes are missing at its end, and a value counts as 0");
  return false;
}

void SpectraCheck::checkAxes(int k) {
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const int last = spectrum.getSize(dim) - 1;
    const std::array<double, 2> ends{spectrum.pointToPpm(0, dim), spectrum.pointToPpm(last, dim)};
    if (k == 0) firstEnds[d] = ends;
    const double perPoint = (firstEnds[d][0] - firstEnds[d][1]) / std::max(last, 1);
    const double shift1 = (ends[0] - firstEnds[d][0]) / perPoint;
    const double shift2 = (ends[1] - firstEnds[d][1]) / perPoint;
    const double worst = std::fabs(shift1) > std::fabs(shift2) ? shift1 : shift2;
    if (!(std::fabs(worst) > kSameAxisPoints)) continue;
    warning(k, "the axis of dimension " + std::to_string(dim + 1) + " is off by up to " + realToText(worst) +
                   " points from that of the first spectrum, and peaks are placed by the first");
  }
}

bool SpectraCheck::checkContents(int k) {
  const PlaneContents contents = surveyPlane(spectrum);
  if (contents.notFinite > 0) warning(k, std::to_string(contents.notFinite) + " values are NaN or infinite");
  if (contents.isAllZero) {
    warning(k, "nothing but zeros");
    return true;
  }
  const auto [earlier, isNew] = spectrumOfContents.emplace(contents.fingerprint, k);
  if (isNew) return true;
  error(k, "the same data as spectrum " + std::to_string(earlier->second + 1) + ", " +
               settings.getSpectrumFile(earlier->second));
  return true;
}

void usage() {
  std::cerr << "usage: peakbox-check [-o REPORT] PARAMETER-FILE\n";
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  const char* report = nullptr;
  for (int option = 0; (option = getopt(argc, argv, "o:")) != -1;) {
    if (option != 'o') usage();
    report = optarg;
  }
  if (optind + 1 != argc) usage();

  Findings findings;
  RunSettings settings;
  ParameterCheck parameters(argv[optind], settings, findings);
  parameters.run();
  if (report != nullptr) parameters.checkReport(report);

  SpectraCheck spectra(settings, findings);
  const bool hasAxes = spectra.readFirstHeader();
  if (hasAxes) parameters.checkTolerancePoints(spectra.getSpectrum());
  PeakListCheck list(settings, spectra.getSpectrum(), hasAxes, findings);
  const ListedPeaks peaks = list.run();
  MeasurementCheck measurement(settings, peaks, findings);
  const bool hasBox = settings.hasBoxSize() && settings.getBoxSize(0) >= 0 && settings.getBoxSize(1) >= 0;
  spectra.run(hasBox && list.isUsable() ? &measurement : nullptr);

  if (!findings.print()) {
    std::cerr << "peakbox-check: the findings cannot be written\n";
    return 1;
  }
  return findings.anyErrors() ? 1 : 0;
}
