#include "results/Report.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <optional>
#include <utility>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "peaks/PeakList.h"

namespace peakbox {

namespace {

constexpr const char* kEndedEarly = " (did the run end early?)";

/// What follows `start` in the line, if that is how it begins.
bool takeBehind(std::string_view line, std::string_view start, std::string_view& rest) {
  if (!line.starts_with(start)) return false;
  rest = line.substr(start.size());
  return true;
}

bool isNumberField(std::string_view field) {
  if (!field.starts_with("  ")) return false;
  field.remove_prefix(field.substr(2).starts_with('-') ? 3 : 2);
  return !field.empty() && field.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

Report::Report(std::string contents, std::string nameOfFile) : text(std::move(contents)), name(std::move(nameOfFile)) {
  for (std::string_view rest = text; !rest.empty();) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    // A parameter file with lines of Windows leaves its carriage returns in the report.
    if (line.ends_with('\r')) line.remove_suffix(1);
    ++lineNumber;
    readLine(line);
  }
  if (place == Place::Start) refuse(name, std::string("no table found") + kEndedEarly);
  if (place != Place::Between) refuseIncomplete();
}

void Report::readLine(std::string_view line) {
  std::string_view rest;
  if (line.starts_with("# SPECTRUM ")) return beginTable(line);
  if (place == Place::Start && (line.starts_with("# FIELD(MHz): ") || line == "#")) return;
  if (place == Place::Header && takeBehind(line, "# PARAMETERS: ", rest)) {
    const std::vector<std::string_view> words = splitFields(rest, '\t');
    spectra.back().hasParameters = true;
    spectra.back().parameter1 = words[0];
    spectra.back().parameter2 = words.size() > 1 ? words[1] : "";
  } else if (place == Place::Header && line == "# Num\tLabel\tPos1\tPos2\tInt") {
    place = Place::Table;
  } else if (place == Place::Table && line.empty()) {
    endTable();
  } else if (place != Place::Table || !readRow(line)) {
    refuseLine("not a line of a peakbox report, or one cut short");
  }
}

void Report::beginTable(std::string_view line) {
  if (place != Place::Start && place != Place::Between) refuseIncomplete();
  const std::string number = std::to_string(spectra.size() + 1);
  Spectrum spectrum;
  if (!takeBehind(line, "# SPECTRUM " + number + ": ", spectrum.file)) {
    refuseLine("spectrum " + number + " expected (more than one report?)");
  }
  spectrum.rows.reserve(peaks.size());
  spectra.push_back(std::move(spectrum));
  place = Place::Header;
}

bool Report::readRow(std::string_view line) {
  // A label may hold tabs itself, so the fields behind it are counted from the end of the line.
  std::string_view fields[3];
  for (std::string_view& field : fields) {
    const std::size_t tab = line.rfind('\t');
    if (tab == std::string_view::npos) return false;
    field = line.substr(tab + 1);
    line = line.substr(0, tab);
  }
  const std::size_t tab = line.find('\t');
  if (tab == std::string_view::npos || !isNumberField(line.substr(0, tab))) return false;
  const auto start = text.begin() + (line.data() + tab + 1 - text.data());
  std::replace(start, start + static_cast<std::ptrdiff_t>(line.size() - tab - 1), '\t', ' ');
  const std::string_view number = line.substr(2, tab - 2);
  const std::string_view label = line.substr(tab + 1);

  const std::optional<double> value = textToDecimal(std::string(fields[0]));
  if (!value) refuseLine("the intensity \"" + std::string(fields[0]) + "\" is not a finite number");
  std::vector<Row>& rows = spectra.back().rows;
  if (spectra.size() == 1) {
    peaks.push_back({number, label, isNoiseLabel(std::string(label))});
  } else if (rows.size() >= peaks.size() || peaks[rows.size()].number != number || peaks[rows.size()].label != label) {
    refuseLine("spectrum " + std::to_string(spectra.size()) + " does not have the peaks of spectrum 1");
  }
  rows.push_back({fields[2], fields[1], fields[0], *value});
  return true;
}

void Report::endTable() {
  const std::size_t rows = spectra.back().rows.size();
  if (rows < peaks.size()) {
    refuse(name, "spectrum " + std::to_string(spectra.size()) + " has only " + std::to_string(rows) + " of the " +
                     std::to_string(peaks.size()) + " peaks of spectrum 1" + kEndedEarly);
  }
  place = Place::Between;
}

void Report::refuseLine(const std::string& reason) const {
  refuse(name, "line " + std::to_string(lineNumber) + ": " + reason);
}

void Report::refuseIncomplete() const {
  refuse(name, "the table of spectrum " + std::to_string(spectra.size()) + " is incomplete" + kEndedEarly);
}

std::string readReportText(const std::string& path) {
  if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
  std::optional<std::string> text = readFile(path);
  if (!text) refuse(path, "cannot be read");
  return *std::move(text);
}

Report readReport(const std::string& path) { return {readReportText(path), path == "-" ? "standard input" : path}; }

std::vector<double> readParameters(const Report& report, const std::string& reader) {
  std::vector<double> numbers;
  for (const Report::Spectrum& spectrum : report.getSpectra()) {
    const std::string which = "spectrum " + std::to_string(numbers.size() + 1);
    const std::string need = ", and " + reader + " needs one";
    if (!spectrum.hasParameters) refuse(report.getName(), which + " has no parameter" + need);
    const std::string text(spectrum.parameter1);
    const std::optional<double> number = textToDecimal(text);
    if (!number) refuse(report.getName(), "the parameter \"" + text + "\" of " + which + " is not a number" + need);
    numbers.push_back(*number);
  }
  return numbers;
}

}  // namespace peakbox
