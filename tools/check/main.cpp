// peakbox-check [-o REPORT] PARAMETER-FILE: reads what a run of peakbox would read, does what it would do, and says
// what is wrong with it: see peakbox-check(1).

#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "base/ThrowingMessages.h"
#include "driver/RunSettings.h"
#include "integrate/BoxTable.h"
#include "peaks/LineSplitter.h"
#include "peaks/PeakList.h"
#include "spectrum/FileHeader.h"
#include "spectrum/PipeWords.h"
#include "spectrum/PointNoise.h"
#include "spectrum/Spectrum.h"

namespace {

using namespace peakbox;
namespace fs = std::filesystem;

// What is told and what is not, so that a healthy series gives no finding.
constexpr double kSureHeight = 5.0;            // noise of a point below which a peak is not trusted
constexpr double kSignalHeight = 10.0;         // noise of a point above which a noise peak lies on a signal
constexpr double kSameMHz = 0.01;              // relative: people round the MHz of a list
constexpr double kSameAxisPoints = 0.1;        // of a later spectrum against the first
constexpr double kMovedPoints = 0.85;          // median of the peaks of a spectrum; tops are known to a fraction
constexpr std::size_t kFewestPeaks = 3;        // that say something of a whole spectrum
constexpr std::size_t kMostPartners = 3;       // overlapping boxes that are told of one peak
constexpr std::size_t kMostPairs = 10000;      // overlapping boxes that are told at all
constexpr std::size_t kMostFindings = 1000;    // of one stage
constexpr std::size_t kMostCharacters = 1000;  // of one finding

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
    for (std::size_t k = 0; k < stages.size(); ++k) {
      auto& stage = stages[k];
      std::stable_sort(stage.begin(), stage.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
      for (const auto& [line, text] : stage) std::cout << text << '\n';
      if (leftOut[k] > 0) std::cout << "peakbox-check: warning: " << leftOut[k] << " more findings of this stage\n";
    }
    return static_cast<bool>(std::cout.flush());
  }

  bool anyErrors() const { return hasErrors; }

 private:
  void add(Stage stage, const std::string& file, std::int64_t line, const std::string& text) {
    if (stages[stage].size() == kMostFindings) {
      ++leftOut[stage];
      return;
    }
    const std::string place = line > 0 ? file + ":" + std::to_string(line) : file;
    std::string finding = place + ": " + text;
    if (finding.size() > kMostCharacters) finding.replace(kMostCharacters, std::string::npos, "...");
    stages[stage].emplace_back(line, showControls(finding));
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
  std::array<std::size_t, 4> leftOut{};
  bool hasErrors = false;
};

/// What peakbox prints when it ends there, on one line.
std::string textOf(const RunEnd& end) {
  std::string text = end.message;
  while (text.ends_with('\n')) text.pop_back();
  for (std::size_t place = 0; (place = text.find("\n\t", place)) != std::string::npos;) text.replace(place, 2, " ");
  return text;
}

/// peakbox's text with the number that a peak has in the list as it is, where unusable peaks count.
std::string withPeakNumber(std::string text, const std::string& old, const std::string& now) {
  const std::size_t place = text.find(old);
  return place == std::string::npos ? text : text.replace(place, old.size(), now);
}

/// All that can be read of a file.
std::string readAll(std::istream& stream) {
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// Where the number at the start of the text ends; the start itself when there is none.
const char* findNumberEnd(const char* text) {
  char* end = nullptr;
  static_cast<void>(std::strtod(text, &end));
  return end;
}

bool isNumber(const char* text) { return findNumberEnd(text) != text; }

bool hasTextBehindNumber(const char* text) { return isNumber(text) && *findNumberEnd(text) != '\0'; }

/// Digits, and no leading zero that would make them octal.
bool isPlainDecimal(const std::string& text) {
  const bool hasDigitsOnly = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  return text == "0" || (hasDigitsOnly && text[0] != '0' && text.size() < 10);
}

std::vector<std::string> splitWords(const std::string& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), {}};
}

/// The first number of a line that is written with a decimal comma.
std::string findDecimalComma(const std::string& line) {
  for (const std::string& word : splitWords(line)) {
    const std::size_t comma = word.find(',');
    const bool isInside = comma != std::string::npos && comma > 0 && comma + 1 < word.size();
    if (isInside && word.find_first_not_of("0123456789", word[0] == '-' ? 1 : 0) == comma &&
        word.find_first_not_of("0123456789", comma + 1) == std::string::npos) {
      return word;
    }
  }
  return "";
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

/// What a plane holds, as far as it matters for telling planes apart and good ones from bad.
struct PlaneContents {
  std::uint64_t fingerprint = 0;
  std::int64_t notFinite = 0;
  std::int64_t zeroRows = 0;  // at the plane's end
  bool isConstant = true;
};

/// Goes through the bits of the values, which is several times as fast as going through the values.
PlaneContents surveyPlane(const Spectrum& spectrum) {
  constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15u;
  constexpr std::uint64_t kExponent = 0x7ff0000000000000u;
  PlaneContents contents;
  const auto first = std::bit_cast<std::uint64_t>(spectrum.getData()[0][0]);
  std::uint64_t differences = 0;
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    std::uint64_t rowSum = 0;
    std::uint64_t anyBits = 0;
    std::uint64_t weight = kFactor;
    std::int64_t notFinite = 0;
    const double* row = &spectrum.getData()[0][j];  // dimension 1 runs fastest
    for (int i = 0; i < spectrum.getSize(0); ++i, weight += 2 * kFactor) {
      const auto bits = std::bit_cast<std::uint64_t>(row[i]);
      rowSum += bits * weight;
      anyBits |= bits << 1;  // without the sign of a zero
      differences |= bits ^ first;
      notFinite += (bits & kExponent) == kExponent;
    }
    contents.notFinite += notFinite;
    contents.fingerprint = (contents.fingerprint ^ (rowSum >> 29 | rowSum << 35)) * kFactor;
    contents.zeroRows = anyBits == 0 ? contents.zeroRows + 1 : 0;
  }
  contents.isConstant = differences == 0;
  return contents;
}

/// Why a file is not read: a folder or a device would give nothing, or without end, and a pipe would be used up. Empty
/// for an ordinary file and for one that is not there.
std::string describeUnusual(const std::string& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::is_directory(status)) return "this is a folder";
  if (fs::is_fifo(status)) return "this is a pipe, and so not checked";
  return fs::exists(status) && !fs::is_regular_file(status) ? "this is no regular file" : "";
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
  if (stream.eof() && start.empty()) return "this is an empty file";
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
    if (!first.empty() && first != "REMARK" && first != "DATA") break;
  }
  bool hasColumns = false;
  for (std::size_t i = 0; i < std::min(lines.size(), kHeaderLines); ++i) {
    hasColumns = hasColumns || lines[i].find(".P") != std::string::npos;
  }
  const bool isTable = !hasColumns && !lines.empty() && lines[0].find_first_of("\t,") != std::string::npos;
  return isTable ? "this is a table" : "";
}

/// Makes Unix lines of what Windows and old Macs write, so that what else is wrong can be found.
std::string mendLines(std::string text, Findings& findings, Findings::Stage stage, const std::string& file) {
  if (text.starts_with("\xef\xbb\xbf")) {
    text.erase(0, 3);
    if (stage == Findings::Parameters) {
      findings.error(stage, file, 1, "begins with a byte-order mark, as Windows editors write it; take it out");
    }
  }
  const std::size_t first = text.find('\r');
  if (first == std::string::npos) return text;
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(first), '\n');
  findings.error(
      stage, file, line,
      "lines end with a carriage return (\r), as Windows writes them, and peakbox takes it for a part of the "
      "last value; take them out, for instance with dos2unix");
  std::string unixText;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') unixText += text[i];
    const bool isLineEnd = text[i] == '\r' && i + 1 < text.size() && text[i + 1] != '\n' && text[i + 1] != '\r';
    if (isLineEnd) unixText += '\n';
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
  std::vector<std::string> lines;
  std::map<std::string, std::int64_t> lineOfKeyword;
  std::int64_t toleranceLine = 0;  // of the one that counts
};

void ParameterCheck::run() {
  // It may come from a pipe, which is read here and nowhere else.
  const std::string unusual = describeUnusual(file);
  if (!unusual.empty() && !fs::is_fifo(file)) return error(0, unusual);
  std::ifstream opened(file);
  if (!opened.is_open()) return error(0, "ERROR: Unable to open '" + file + "'");
  const std::string text = mendLines(readAll(opened), findings, Findings::Parameters, file);
  lines = splitLines(text);
  std::istringstream stream(text);
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
  if (!lineOfKeyword.contains("PEAKLIST")) error(0, "no PEAKLIST specified");
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
  const std::vector<std::string>& tokens = settings.getTokens();
  if (isAt("FIELD") && (!isNumber(tokens[1].c_str()) || hasTextBehindNumber(tokens[1].c_str()))) {
    warning(line, "FIELD '" + tokens[1] + "' is no number");
  }
  if ((isAt("FIELD") || isAt("PEAKLIST")) && tokens.size() > 2 && tokens[2][0] != '#') {
    warning(line, "only '" + tokens[1] + "' counts, and not '" + tokens[2] + "' behind it");
  }
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
  } else if (const std::string number = findDecimalComma(lines[static_cast<std::size_t>(line - 1)]); !number.empty()) {
    warning(line, "'" + number + "' is read as two words, since a comma separates words; write a decimal point");
  } else if (tokens.size() > 4) {
    warning(line, "nothing keeps the words from '" + tokens[4] + "' on: a spectrum has at most two");
  }
}

void ParameterCheck::checkTolerancePoints(const Spectrum& spectrum) {
  if (settings.getSpectrumCount() < 2 || toleranceLine == 0) return;
  const double tolerances[] = {settings.getTolerance1(), settings.getTolerance2()};
  for (const int dim : {0, 1}) {
    const double points = spectrum.hzToPoints(tolerances[dim], dim);
    if (!(points > 0.0 && points < 0.999)) continue;
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
    if (!fs::is_regular_file(report, ignored)) return;
    std::ifstream stream(report);
    std::string line;
    if (std::getline(stream, line) && !line.starts_with("# FIELD(MHz): ") && !line.starts_with("# SPECTRUM ")) {
      refuse("the report would overwrite a file that is no report");
    }
    return;
  }
  if (report.empty()) return findings.error(Findings::Parameters, "-o", 0, "the report has no name");
  // What a link points to is created.
  fs::path target = report;
  if (fs::is_symlink(target, ignored)) target = target.parent_path() / fs::read_symlink(target, ignored);
  const fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
  if (!fs::is_directory(folder, ignored)) return refuse("the report cannot be created: no such folder");
  if (target.filename().native().size() > NAME_MAX) return refuse("the report cannot be created: its name is too long");
  if (access(folder.c_str(), W_OK | X_OK) != 0) refuse("the report cannot be created: no permission in its folder");
}

/// The peaks of the list that can be read and placed, each with its line.
struct ListedPeaks {
  std::string file;
  std::unique_ptr<PeakList> list = std::make_unique<PeakList>();
  std::vector<std::int64_t> lines;
  std::vector<std::size_t> positions;  // in the list as it is

  /// How a finding begins that concerns peak `j`.
  std::string nameOf(std::size_t j) const {
    const std::string& label = list->getLabel(static_cast<int>(j));
    return label.empty() ? "peak " + std::to_string(list->getNumber(static_cast<int>(j))) : label;
  }
  bool isNoise(std::size_t j) const { return nameOf(j).find("noise") != std::string::npos; }
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
  PeakList columns;                // a list without peaks
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
  const std::string unusual = describeUnusual(peaks.file);
  std::ifstream opened;
  if (unusual.empty()) opened.open(peaks.file);
  if (!opened.is_open()) {
    error(0, unusual.empty() ? "ERROR: Unable to open '" + peaks.file + "'" : unusual);
    return std::move(peaks);
  }
  const std::string text = mendLines(readAll(opened), findings, Findings::Peaks, peaks.file);
  const std::vector<std::string> lines = splitLines(text);
  if (!readHeader(lines)) return std::move(peaks);
  for (std::size_t i = kHeaderLines; i < lines.size(); ++i) readPeak(lines[i], static_cast<std::int64_t>(i) + 1);
  if (!text.ends_with('\n')) {
    const auto last = static_cast<std::int64_t>(lines.size());
    const bool isPeak = !peaks.lines.empty() && peaks.lines.back() == last;
    if (isPeak) {
      error(last, "no newline ends the last line, so that peak " + peaks.nameOf(peaks.lines.size() - 1) + " is lost");
    }
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
    error(0, refusal + ": " + (kind.empty() ? "fewer than six header lines" : kind + "; peakbox-list converts it"));
    return false;
  }
  std::string header;
  for (std::size_t i = 0; i < kHeaderLines; ++i) header += lines[i] + "\n";
  std::istringstream stream(header);
  try {
    columns.readHeader(stream);
    *peaks.list = columns;
  } catch (const RunEnd& end) {
    error(2, refusal + ": line 2 does not name two dimensions (" + textOf(end) + ")");
    return false;
  }
  LineSplitter names;
  std::istringstream secondLine(lines[1] + "\n");
  names.readLine(secondLine);
  const std::string name1 = names.getField(0);
  const std::string name2 = names.getField(1);
  const std::tuple<std::int32_t, std::string, std::string> named[] = {
      {peaks.list->getLabelColumn(), name1 + ".L", "label"},
      {peaks.list->getPositionColumn(0), name1 + ".P", "position in dimension 1"},
      {peaks.list->getBoundsColumn(0), name1 + ".B", "width in dimension 1"},
      {peaks.list->getPositionColumn(1), name2 + ".P", "position in dimension 2"},
      {peaks.list->getBoundsColumn(1), name2 + ".B", "width in dimension 2"}};
  const auto isMissing = [](const auto& column) { return std::get<0>(column) == 0; };
  if (std::all_of(std::begin(named), std::end(named), isMissing)) {
    error(6, refusal + ": none of the columns " + name1 + ".L, " + name1 + ".P, " + name1 + ".B, " + name2 + ".P and " +
                 name2 + ".B that line 2 asks for");
    return false;
  }
  for (std::int32_t field = 1; const auto& name : splitWords(lines[5])) {
    if (name == "stat" && field != 17) {
      warning(6, "the column stat is field " + std::to_string(field + 1) +
                     " of a line, but peakbox looks for deleted peaks in the 18th");
    }
    ++field;
  }
  isComplete = std::none_of(std::begin(named), std::end(named), isMissing);
  for (const auto& [column, name, meaning] : named) {
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
    const std::string what = isEmpty ? "empty line" : "too few fields (it begins with '" + text.substr(0, 20) + "')";
    return error(line, what + ", which ends the run: " + textOf(end));
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
  if (!isNewLabel && !label.empty() && !peaks.isNoise(peaks.lines.size() - 1))
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
  if (!positionsExchanged && !frequenciesExchanged) return;
  error(2, std::string("the dimensions are exchanged: the ") + (positionsExchanged ? "positions" : "MHz of line 5") +
               " fit the spectrum only the other way round; line 2 must name the direct dimension first, and the "
               "spectrum must not "
               "be transposed");
  usable = !positionsExchanged;
}

/// Whether the list's only peak lies so far off that no spectrum can mean it; folding it would take seconds.
bool PeakListCheck::isFarOff(const PeakList& alone) const {
  constexpr double kMostSizes = 1e4;
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
  *kept.list = columns;
  for (std::size_t j = 0; j < texts.size(); ++j) {
    if (!hasNumbers[j]) continue;
    PeakList alone = columns;
    std::istringstream aloneLine(texts[j] + "\n");
    alone.readPeaks(aloneLine, spectrum);
    if (isFarOff(alone)) {
      error(peaks.lines[j], peaks.nameOf(j) + ": more than 10000 spectral widths outside the spectrum");
      continue;
    }
    try {
      BoxTable(1, settings.getTolerance1(), settings.getTolerance2()).placeBoxes(spectrum, alone);
    } catch (const RunEnd& end) {
      const std::string text = withPeakNumber(textOf(end), "Peak 0", "Peak " + std::to_string(j));
      error(peaks.lines[j], peaks.nameOf(j) + ": no place in the spectrum, which ends the run: " + text);
      continue;
    }
    std::istringstream line(texts[j] + "\n");
    kept.list->readPeaks(line, spectrum);
    kept.lines.push_back(peaks.lines[j]);
    kept.positions.push_back(j);
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
        flankSpectra(listed.lines.size()),
        tops(listed.lines.size()) {}

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
  /// The top of a peak in the first spectrum, if it is sure, and the last spectrum that shows it with the same sign.
  struct Top {
    bool isSure = false;
    double sign = 1;
    Place place;
    std::array<double, 2> exact{};
    double height = 0;
    int lastSeen = 0;
    double lastHeight = 0;
  };
  /// The sure peaks that a spectrum does not show, and the noise that they should stand out of.
  struct Gap {
    std::vector<std::size_t> missing;
    double noise = 0;
  };

  void measurePeak(int k, std::size_t j, const Spectrum& spectrum);
  void checkHeight(std::size_t j, const Spectrum& spectrum);
  void checkPairs(int k);
  void findTops(const Spectrum& spectrum);
  void checkMovement(int k, const Spectrum& spectrum);
  void checkDisplacement(int k, const Spectrum& spectrum);
  void tellMovement(const std::string& file, std::vector<double>& moved, int dim, const std::string& text);
  void tellVanished();

  bool isSure(double value) const { return std::fabs(value) > 0 && std::fabs(value) >= kSureHeight * noise; }
  bool isOnFlank(const Spectrum& spectrum, const Place& place, bool along1, bool along2, Place& higher) const;
  Place climb(const Spectrum& spectrum, Place place) const;
  bool isNoise(std::size_t j) const { return peaks.isNoise(j); }

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
  double noise = 0.0;  // of a point of the spectrum in hand
  bool movesAlong1 = true;
  bool movesAlong2 = true;
  std::vector<Place> places;  // in the spectrum in hand
  std::vector<bool> isLost;   // the run would have ended at this peak
  std::vector<std::vector<int>> flankSpectra;
  std::map<std::pair<std::size_t, std::size_t>, Pair> pairs;
  std::vector<Top> tops;
  std::map<int, Gap> gaps;                         // by spectrum
  std::map<int, std::vector<std::size_t>> turned;  // the peaks of the other sign than in the first one
  std::size_t lowPeaks = 0;
};

void MeasurementCheck::measure(int k, const Spectrum& spectrum) {
  noise = estimatePointNoise(spectrum, k == 0 ? 1 << 18 : 1 << 14);
  if (k == 0) {
    boxes.placeBoxes(spectrum, *peaks.list);
    takeMessages();
  }
  for (std::size_t j = 0; j < places.size(); ++j) {
    if (!isLost[j]) measurePeak(k, j, spectrum);
  }
  if (k == 0) {
    findTops(spectrum);
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
                        settings.getSpectrumFile(k) + ": " +
                        withPeakNumber(textOf(end), "peak #" + std::to_string(peak) + " ",
                                       "peak #" + std::to_string(peaks.positions[j]) + " "));
  }
  const bool hadNoPoints = takeMessages().find("No data points") != std::string::npos;
  const bool hasWidth = peaks.list->getBoundsWidth(peak, 0) > 0 && peaks.list->getBoundsWidth(peak, 1) > 0;
  if (k == 0 && hadNoPoints && hasWidth) {
    findings.warning(Findings::Peaks, peaks.file, peaks.lines[j],
                     peaks.nameOf(j) + ": no data point in its search area, so that the nearest two are searched");
  }
  places[j] = {std::llround(boxes.getExtent1(peak).centre), std::llround(boxes.getExtent2(peak).centre)};
  if (k == 0) checkHeight(j, spectrum);
  Place higher;
  if (!isNoise(j) && isOnFlank(spectrum, places[j], k == 0 || movesAlong1, k == 0 || movesAlong2, higher)) {
    flankSpectra[j].push_back(k + 1);
  }
}

void MeasurementCheck::checkHeight(std::size_t j, const Spectrum& spectrum) {
  const double height = spectrum.getData()[places[j].a][places[j].b];
  if (isNoise(j)) {
    if (noise > 0 && std::fabs(height) >= kSignalHeight * noise) {
      warning(j, "its height " + realToText(height) + " is above 10 times the noise, " + realToText(noise) +
                     ": no place for a noise peak");
    }
  } else if (!isSure(height)) {
    ++lowPeaks;
    warning(j,
            "height " + realToText(height) + " is below 5 times the noise of the first spectrum, " + realToText(noise));
  }
}

/// Whether a neighbouring point is higher by more than the noise; `higher` is then the highest one. Points that are
/// themselves in the noise are on no flank.
bool MeasurementCheck::isOnFlank(const Spectrum& spectrum, const Place& place, bool along1, bool along2,
                                 Place& higher) const {
  const DataPlane& data = spectrum.getData();
  const double value = data[place.a][place.b];
  if (!isSure(value)) return false;
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

MeasurementCheck::Place MeasurementCheck::climb(const Spectrum& spectrum, Place place) const {
  constexpr int kMostSteps = 10;
  Place higher;
  for (int step = 0; step < kMostSteps && isOnFlank(spectrum, place, true, true, higher); ++step) place = higher;
  return place;
}

/// A top between the points, from the parabolas through it and its neighbours.
std::array<double, 2> interpolateTop(const Spectrum& spectrum, std::int64_t a, std::int64_t b) {
  const auto offset = [](double before, double top, double after) {
    const double curvature = before - 2 * top + after;
    return std::clamp(curvature == 0 ? 0.0 : 0.5 * (before - after) / curvature, -0.5, 0.5);
  };
  const DataPlane& data = spectrum.getData();
  std::array<double, 2> top{static_cast<double>(a), static_cast<double>(b)};
  if (a > 0 && a + 1 < spectrum.getSize(0)) top[0] += offset(data[a - 1][b], data[a][b], data[a + 1][b]);
  if (b > 0 && b + 1 < spectrum.getSize(1)) top[1] += offset(data[a][b - 1], data[a][b], data[a][b + 1]);
  return top;
}

/// The tops of the first spectrum; if those of most peaks are not where they were found, the list is displaced.
void MeasurementCheck::findTops(const Spectrum& spectrum) {
  std::vector<double> moved[2];
  for (std::size_t j = 0; j < places.size(); ++j) {
    const double value = spectrum.getData()[places[j].a][places[j].b];
    if (isLost[j] || isNoise(j) || !isSure(value)) continue;
    const Place top = climb(spectrum, places[j]);
    tops[j] = {.isSure = true,
               .sign = value < 0 ? -1.0 : 1.0,
               .place = top,
               .exact = interpolateTop(spectrum, top.a, top.b),
               .height = std::fabs(spectrum.getData()[top.a][top.b])};
    moved[0].push_back(static_cast<double>(top.a - places[j].a));
    moved[1].push_back(static_cast<double>(top.b - places[j].b));
  }
  for (const int dim : {0, 1}) {
    tellMovement(peaks.file, moved[dim], dim, "most peaks of the list are off their tops in the first spectrum");
  }
}

/// From the tops of the first spectrum uphill to those of this one, however narrow the tolerance is.
void MeasurementCheck::checkMovement(int k, const Spectrum& spectrum) {
  std::vector<double> moved[2];
  std::vector<std::size_t> missing;
  std::vector<std::size_t> opposite;
  for (std::size_t j = 0; j < tops.size(); ++j) {
    if (!tops[j].isSure) continue;
    const Place top = climb(spectrum, tops[j].place);
    const double value = spectrum.getData()[top.a][top.b];
    if (!isSure(value)) {
      missing.push_back(j);
      continue;
    }
    if (value * tops[j].sign > 0) {
      tops[j].lastSeen = k;
      tops[j].lastHeight = std::fabs(value);
    } else {
      opposite.push_back(j);
    }
    const std::array<double, 2> exact = interpolateTop(spectrum, top.a, top.b);
    for (const std::size_t d : {0U, 1U}) moved[d].push_back(exact[d] - tops[j].exact[d]);
  }
  if (missing.size() > moved[0].size() / 2) {
    Gap& gap = gaps[k];
    gap.missing = missing;
    gap.noise = noise;
    return checkDisplacement(k, spectrum);
  }
  if (opposite.size() * 10 >= moved[0].size() * 8) turned[k] = opposite;
  for (const int dim : {0, 1}) {
    tellMovement(settings.getSpectrumFile(k), moved[dim], dim, "all peaks have moved against the first spectrum");
  }
}

/// Where most peaks are not seen any more, they may be seen elsewhere: tries all displacements up to 64 points.
void MeasurementCheck::checkDisplacement(int k, const Spectrum& spectrum) {
  constexpr std::int64_t kReach = 64;
  constexpr std::size_t kEnoughPeaks = 40;
  std::vector<const Top*> sure;
  for (const Top& top : tops) {
    if (top.isSure && sure.size() < kEnoughPeaks) sure.push_back(&top);
  }
  double bestSum = 0;
  std::size_t bestSeen = 0;
  Place best;
  for (std::int64_t a = -kReach; a <= kReach; ++a) {
    for (std::int64_t b = -kReach; b <= kReach; ++b) {
      double sum = 0;
      std::size_t seen = 0;
      for (const Top* top : sure) {
        const Place place{top->place.a + a, top->place.b + b};
        if (place.a < 0 || place.a >= spectrum.getSize(0) || place.b < 0 || place.b >= spectrum.getSize(1)) continue;
        const double value = top->sign * spectrum.getData()[place.a][place.b];
        if (!(value > 0) || !isSure(value)) continue;
        sum += std::min(value / top->height, 1.0);
        ++seen;
      }
      if (sum <= bestSum) continue;
      bestSum = sum;
      bestSeen = seen;
      best = {a, b};
    }
  }
  if (bestSeen < kFewestPeaks || bestSeen * 10 < sure.size() * 6) return;
  if (std::abs(best.a) < 1 && std::abs(best.b) < 1) return;
  gaps.erase(k);
  std::vector<double> moved[2] = {std::vector<double>(bestSeen, static_cast<double>(best.a)),
                                  std::vector<double>(bestSeen, static_cast<double>(best.b))};
  for (const int dim : {0, 1}) {
    tellMovement(settings.getSpectrumFile(k), moved[dim], dim, "all peaks have moved against the first spectrum");
  }
}

/// Tells of a movement that most peaks share.
void MeasurementCheck::tellMovement(const std::string& file, std::vector<double>& moved, int dim,
                                    const std::string& text) {
  if (moved.size() < kFewestPeaks) return;
  const double median = takeMedian(moved);
  if (std::fabs(median) < kMovedPoints) return;
  const auto followers = static_cast<std::size_t>(std::count_if(
      moved.begin(), moved.end(), [=](double points) { return std::fabs(points - median) < 0.5 * std::fabs(median); }));
  if (followers * 10 < moved.size() * 8) return;
  findings.warning(Findings::Measurement, file, 0,
                   text + ", by about " + realToText(std::round(10 * median) / 10) + " points in dimension " +
                       std::to_string(dim + 1));
}

/// Peaks that a spectrum does not show, or with the other sign, although the first one and a later one do.
void MeasurementCheck::tellVanished() {
  const auto sure =
      static_cast<std::size_t>(std::count_if(tops.begin(), tops.end(), [](const Top& top) { return top.isSure; }));
  for (const auto& [k, gap] : gaps) {
    const double wanted = 2 * kSureHeight * gap.noise;
    const auto isExpected = [&, number = k](std::size_t j) {
      return tops[j].lastSeen > number && std::min(tops[j].height, tops[j].lastHeight) >= wanted;
    };
    const auto count = static_cast<std::size_t>(std::count_if(gap.missing.begin(), gap.missing.end(), isExpected));
    if (count < kFewestPeaks || 2 * count <= sure) continue;
    findings.warning(Findings::Measurement, settings.getSpectrumFile(k), 0,
                     std::to_string(count) + " of " + std::to_string(sure) +
                         " peaks that the first and a later spectrum show are not seen here: another sample, a wrong "
                         "plane or one that was not processed?");
  }
  for (const auto& [k, opposite] : turned) {
    const auto count = static_cast<std::size_t>(std::count_if(
        opposite.begin(), opposite.end(), [&, number = k](std::size_t j) { return tops[j].lastSeen > number; }));
    if (count < kFewestPeaks || count * 10 < opposite.size() * 8) continue;
    findings.warning(Findings::Measurement, settings.getSpectrumFile(k), 0,
                     "the peaks have the other sign than in the first and in a later spectrum: was it phased alike?");
  }
  if (lowPeaks >= kFewestPeaks && 2 * lowPeaks > places.size()) {
    findings.warning(
        Findings::Measurement, peaks.file, 0,
        std::to_string(lowPeaks) + " of " + std::to_string(places.size()) +
            " peaks are in the noise of the first spectrum: a list of another sample, or another reference?");
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
  std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
    return std::tie(places[i].a, places[i].b, i) < std::tie(places[j].a, places[j].b, j);
  });
  for (std::size_t i = 0; i < order.size(); ++i) {
    std::size_t partners = 0;
    for (std::size_t n = i + 1; n < order.size() && partners < kMostPartners; ++n) {
      const Place& place1 = places[order[i]];
      const Place& place2 = places[order[n]];
      const std::int64_t distance1 = place2.a - place1.a;
      const std::int64_t distance2 = std::abs(place2.b - place1.b);
      if (distance1 > reach1) break;
      const bool isSame = distance1 == 0 && distance2 == 0;  // these come first
      if (distance2 > reach2 || (!isSame && (isNoise(order[i]) || isNoise(order[n])))) continue;
      ++partners;
      const auto entries = std::minmax(order[i], order[n]);
      if (pairs.size() >= kMostPairs && !isSame && !pairs.contains(entries)) continue;
      Pair& pair = pairs[entries];
      (isSame ? pair.sameSpectra : pair.sharedSpectra).push_back(k + 1);
      pair.mostShared = std::max(pair.mostShared, (reach1 + 1 - distance1) * (reach2 + 1 - distance2));
    }
  }
}

void MeasurementCheck::finish() {
  tellVanished();
  for (const auto& [entries, pair] : pairs) {
    const auto [first, second] = entries;
    const std::string other = peaks.nameOf(first) + " (line " + std::to_string(peaks.lines[first]) + ")";
    if (!pair.sameSpectra.empty()) {
      error(second, "measured at the same point as " + other + " in " + describeSpectra(pair.sameSpectra));
    } else {
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
  bool hasAxes(int k);
  bool checkHeader(int k);
  void checkComplex(int k);
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
  bool isFirstInOrder = false;
  SpectrumFormat firstFormat = SpectrumFormat::None;
  std::array<std::array<double, 2>, 2> firstEnds{};  // ppm of the first and the last point of either dimension
  std::array<double, 2> firstMHz{};
  std::unordered_map<std::uint64_t, int> spectrumOfContents;
};

bool SpectraCheck::readFirstHeader() {
  if (settings.getSpectrumCount() == 0) return false;
  const std::string path = settings.getSpectrumFile(0);
  if (!describeUnusual(path).empty()) return false;
  try {
    spectrum.readHeader(path.c_str(), false);
    takeMessages();
    firstFormat = spectrum.getFormat();
    hasFirstHeader = hasAxes(0);
    isFirstInOrder = spectrum.describeOrder().empty();
    for (const int dim : {0, 1}) {
      firstMHz[static_cast<std::size_t>(dim)] = spectrum.getObserveMHz(dim);
      firstEnds[static_cast<std::size_t>(dim)] = {spectrum.pointToPpm(0, dim),
                                                  spectrum.pointToPpm(spectrum.getSize(dim) - 1, dim)};
    }
    return hasFirstHeader && isFirstInOrder;
  } catch (const RunEnd& end) {
    takeMessages();
    error(0, textOf(end) + explain(path));
    return false;
  }
}

/// Whether points and ppm can be turned into each other.
bool SpectraCheck::hasAxes(int k) {
  bool isGood = true;
  for (const int dim : {0, 1}) {
    const double perPoint = spectrum.pointToPpm(0, dim) - spectrum.pointToPpm(1, dim);
    const std::string name = "dimension " + std::to_string(dim + 1);
    if (spectrum.getSize(dim) == 0) {
      error(k, name + " has no data points");
    } else if (!std::isfinite(perPoint) || perPoint == 0) {
      error(k, "the sweep width or the frequency of " + name + " is 0 or no number");
    } else {
      continue;
    }
    isGood = false;
  }
  return isGood;
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
  const std::string unusual = describeUnusual(path);
  if (fs::is_fifo(path)) warning(k, unusual);
  if (!unusual.empty() && !fs::is_fifo(path)) error(k, unusual);
  if (!unusual.empty()) return false;
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

/// How much is missing of a file of so many bytes; a damaged header can ask for more than can be counted.
std::string describeMissing(std::uintmax_t bytes, const Spectrum& ofFile) {
  const std::uint64_t words = ofFile.countDataWords();
  if (words > std::numeric_limits<std::uint64_t>::max() / 8) return "nearly all is missing";
  return std::to_string(FileHeader::kSize + 4 * words - bytes) + " bytes are missing";
}

/// What else can be said of a file that is refused.
std::string SpectraCheck::explain(const std::string& path) const {
  std::error_code ignored;
  if (fs::is_symlink(path, ignored) && !fs::exists(path, ignored)) return " (this is a link that leads nowhere)";
  if (!fs::exists(path, ignored)) return " (there is no such file)";
  if (access(path.c_str(), R_OK) != 0) return " (no permission to read it)";
  const std::string foreign = describeForeignFile(path);
  if (!foreign.empty()) return " (" + foreign + ")";
  Spectrum alone;
  try {
    alone.readHeader(path.c_str(), false);
    takeMessages();
    if (hasFirstHeader && alone.getFormat() != firstFormat) {
      return " (it does not have the format of the first spectrum)";
    }
    const std::string order = alone.describeOrder();
    if (!order.empty()) return " (" + order + ")";
    const std::uintmax_t bytes = fs::file_size(path, ignored);
    if (bytes < FileHeader::kSize || (bytes - FileHeader::kSize) / 4 < alone.countDataWords()) {
      return " (truncated: " + describeMissing(bytes, alone) + ")";
    }
  } catch (const RunEnd& end) {
    takeMessages();
    const bool isOther = end.message.find("not two dimentional") != std::string::npos;
    if (isOther && alone.getFormat() == SpectrumFormat::NMRPipe) return " (peakbox-planes writes the planes of a cube)";
  }
  return "";
}

bool SpectraCheck::checkHeader(int k) {
  if (!hasAxes(k)) return false;
  const std::string order = spectrum.describeOrder();
  if (!order.empty()) error(k, order);
  const bool isWhole = checkLength(k);
  if (k > 0 && order.empty() && isFirstInOrder) checkAxes(k);
  checkComplex(k);
  return order.empty() && isWhole;
}

void SpectraCheck::checkComplex(int k) {
  if (spectrum.getFormat() != SpectrumFormat::NMRPipe) return;
  std::ifstream stream(settings.getSpectrumFile(k), std::ios::binary);
  const FileHeader header(stream);
  for (const int dim : {0, 1}) {
    const pipe::AxisWords words = pipe::getAxisWords(dim == 0 ? pipe::kDirect : pipe::kIndirect);
    if (header.getTruncated(words.quadFlag, spectrum.isByteSwapped()) != 0) continue;
    warning(k, "complex data in dimension " + std::to_string(dim + 1) + ", of which the real values are measured");
  }
}

bool SpectraCheck::checkLength(int k) {
  std::error_code failed;
  const std::uintmax_t bytes = fs::file_size(settings.getSpectrumFile(k), failed);
  const std::uintmax_t wanted = FileHeader::kSize + 4 * spectrum.countDataWords();
  if (failed || bytes == wanted) return true;
  if (bytes > wanted) {
    warning(k, "more data than one plane holds (" + std::to_string(bytes - wanted) +
                   " bytes more): of a cube only the first plane is measured; peakbox-planes writes all of them");
    return true;
  }
  error(k, "truncated: " + std::to_string(wanted - bytes) + " bytes are missing at its end");
  return false;
}

void SpectraCheck::checkAxes(int k) {
  for (const int dim : {0, 1}) {
    const auto d = static_cast<std::size_t>(dim);
    const int last = spectrum.getSize(dim) - 1;
    const std::array<double, 2> ends{spectrum.pointToPpm(0, dim), spectrum.pointToPpm(last, dim)};
    const double mhz = spectrum.getObserveMHz(dim);
    if (std::fabs(mhz - firstMHz[d]) > kSameMHz * std::fabs(firstMHz[d])) {
      warning(k, "dimension " + std::to_string(dim + 1) + " was recorded at " + realToText(mhz) +
                     " MHz, that of the first spectrum at " + realToText(firstMHz[d]) + " MHz");
    }
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
  if (contents.isConstant) {
    const double value = spectrum.getData()[0][0];
    warning(k, value == 0 ? "nothing but zeros" : "all values are " + realToText(value));
    return false;
  }
  if (contents.zeroRows * 8 > spectrum.getSize(1)) {
    warning(k, "the last " + std::to_string(contents.zeroRows) + " of " + std::to_string(spectrum.getSize(1)) +
                   " rows are nothing but zeros: did its processing end early?");
  }
  const auto [earlier, isNew] = spectrumOfContents.emplace(contents.fingerprint, k);
  if (isNew) return true;
  error(k, "the same data as spectrum " + std::to_string(earlier->second + 1) + ", " +
               settings.getSpectrumFile(earlier->second));
  return true;
}

/// Checks the run of this parameter file, and if `report` is one the report that it is to have.
void checkRun(const char* parameterFile, const char* report, Findings& findings) {
  RunSettings settings;
  ParameterCheck parameters(parameterFile, settings, findings);
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
}

[[noreturn]] void usage() {
  std::cerr << "usage: peakbox-check [-o REPORT] PARAMETER-FILE\n";
  std::exit(2);
}

}  // namespace

int peakboxCheck(int argc, char** argv);

int peakboxCheck(int argc, char** argv) {
  const char* report = nullptr;
  for (int option = 0; (option = getopt(argc, argv, "o:")) != -1;) {
    if (option != 'o') usage();
    report = optarg;
  }
  if (optind + 1 != argc) usage();

  Findings findings;
  const char* parameterFile = argv[optind];
  try {
    checkRun(parameterFile, report, findings);
  } catch (const RunEnd& end) {  // a file that was replaced meanwhile
    findings.error(Findings::Measurement, parameterFile, 0, textOf(end));
  } catch (const std::bad_alloc&) {
    findings.error(Findings::Measurement, parameterFile, 0, "not enough memory for the rest of the check");
  }
  if (!findings.print()) {
    std::cerr << "peakbox-check: the findings cannot be written\n";
    return 1;
  }
  return findings.anyErrors() ? 1 : 0;
}
