// peakbox-list [-x] [-b WIDTH1,WIDTH2] [-c LABEL,PPM1,PPM2] -s SPECTRUM LIST: writes a peak list of another program as
// peakbox reads it, see peakbox-list(1).

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Messages.h"
#include "base/TextNumbers.h"
#include "peaks/LineSplitter.h"
#include "spectrum/Nuclei.h"
#include "spectrum/PipeWords.h"
#include "spectrum/Spectrum.h"

namespace {

using namespace peakbox;
namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& place, const std::string& reason) {
  fail(std::string("peakbox-list: ").append(place).append(": ").append(reason).append("\n"));
}

/// A line of a list, or of a table several where a quoted field holds line ends.
struct Row {
  std::int64_t line;
  std::vector<std::string> fields;
};

/// A list of any kind: rows of fields, and which field is what.
struct ForeignList {
  static constexpr std::size_t kNone = SIZE_MAX;

  std::vector<Row> rows = {};
  std::size_t number = kNone;
  std::size_t label = kNone;
  std::array<std::size_t, 2> ppm{kNone, kNone};
  std::array<std::size_t, 2> bounds{kNone, kNone};
  std::size_t deletion = kNone;
  std::array<std::string, 2> names{};         // of the two columns of positions
  std::array<std::string, 2> descriptions{};  // texts that may name their nuclei
  std::string noLabel = "?";
  std::optional<double> noValue = std::nullopt;
  bool hasBracedLabels = false;
};

/// A peak as it will be written, but that the two dimensions stand in the list's order.
struct Entry {
  std::int64_t line = 0;
  std::optional<std::int64_t> number = std::nullopt;
  std::string label;
  std::array<std::string, 2> ppm{};
  std::array<std::string, 2> bounds{};
};

std::string trim(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Reads the file with Unix line ends, the last one too, and without a byte-order mark.
std::string readText(const std::string& file) {
  std::error_code ignored;
  std::ifstream stream(file, std::ios::binary);
  if (!stream.is_open() || fs::is_directory(file, ignored)) refuse(file, "cannot be read");
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  std::string text = bytes.str();
  if (text.find('\0') != std::string::npos)
    refuse(file, "is no plain text; is it binary, or UTF-16 (\"Unicode text\")?");
  if (text.starts_with("\xef\xbb\xbf")) text.erase(0, 3);
  std::string mended;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      mended += text[i];
    } else if (i + 1 == text.size() || text[i + 1] != '\n') {
      mended += '\n';
    }
  }
  if (!mended.ends_with('\n')) mended += '\n';
  return mended;
}

/// As much of a text as a message has room for, on one line.
std::string cut(std::string text, std::size_t room) {
  if (text.size() > room) text.replace(room, std::string::npos, "...");
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
  return text;
}

/// The fields of each line that is not empty: between tabs where there are several, which lets labels have blanks, else
/// between blanks.
std::vector<Row> splitWords(const std::string& text) {
  std::vector<Row> rows;
  std::istringstream stream(text);
  std::string line;
  for (std::int64_t number = 1; std::getline(stream, line); ++number) {
    Row row{.line = number, .fields = {}};
    const bool hasTabs = std::count(line.begin(), line.end(), '\t') > 1;
    std::istringstream words(line);
    for (std::string word;
         hasTabs ? static_cast<bool>(std::getline(words, word, '\t')) : static_cast<bool>(words >> word);) {
      row.fields.push_back(trim(word));
    }
    if (!trim(line).empty()) rows.push_back(std::move(row));
  }
  return rows;
}

/// The fields of each line that is not empty, as peakbox cuts its own lists.
std::vector<Row> splitOwn(const std::string& text) {
  std::vector<Row> rows;
  std::istringstream stream(text);
  LineSplitter splitter;
  for (std::int64_t line = 1; splitter.readLine(stream); ++line) {
    Row row{.line = line, .fields = {}};
    for (std::int32_t i = 0; i < splitter.getFieldCount(); ++i) row.fields.emplace_back(splitter.getField(i));
    if (!row.fields.empty()) rows.push_back(std::move(row));
  }
  return rows;
}

/// Fields between separators. One that begins with a quote reaches to the next quote that is not doubled, and may hold
/// separators and line ends.
std::vector<Row> splitTable(const std::string& text, char separator, const std::string& file) {
  std::vector<Row> rows;
  Row row{.line = 1, .fields = {}};
  std::string field;
  bool isQuoted = false;
  std::int64_t line = 1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    line += c == '\n';
    if (c == '"' && isQuoted) {
      isQuoted = i + 1 < text.size() && text[i + 1] == '"';
      if (isQuoted) field += text[i++];
    } else if (c == '"' && field.empty()) {
      isQuoted = true;
    } else if (isQuoted || (c != separator && c != '\n')) {
      field += c;
    } else {
      row.fields.push_back(trim(std::exchange(field, "")));
      if (c != '\n') continue;
      const bool isEmpty = std::all_of(row.fields.begin(), row.fields.end(), [](const auto& f) { return f.empty(); });
      if (!isEmpty) rows.push_back(std::move(row));
      row = {.line = line, .fields = {}};
    }
  }
  if (isQuoted) refuse(file + ":" + std::to_string(row.line), "a quote that does not end");
  return rows;
}

/// Recognises the kind of a list and reads it.
class ListReader {
 public:
  /// `columns` names label, first and second position of a table; there are none for lists of other kinds.
  ListReader(std::string path, std::vector<std::string> columns) : file(std::move(path)), wanted(std::move(columns)) {}

  ForeignList read();

 private:
  ForeignList readTable(const std::string& text) const;
  ForeignList readSparky(std::vector<Row> rows) const;
  ForeignList readPipeTable(std::vector<Row> rows) const;
  ForeignList readOwn(std::vector<Row> rows, std::size_t header) const;
  std::size_t findColumn(const Row& header, const std::string& name) const;

  const std::string file;
  const std::vector<std::string> wanted;
};

bool endsWithPosition(const std::string& field) { return field.size() > 2 && field.ends_with(".P"); }

ForeignList ListReader::read() {
  const std::string text = readText(file);
  if (!wanted.empty()) return readTable(text);
  std::vector<Row> rows = splitWords(text);
  if (rows.empty()) refuse(file, "is empty");
  const std::vector<std::string>& first = rows[0].fields;
  if (first.size() > 1 && first[0] == "Assignment" && first[1] == "w1") return readSparky(std::move(rows));
  const bool isPipe = std::any_of(rows.begin(), rows.end(), [](const Row& row) { return row.fields[0] == "VARS"; });
  if (isPipe) return readPipeTable(std::move(rows));
  rows = splitOwn(text);
  for (std::size_t n = 0; n < rows.size(); ++n) {
    const auto positions = std::count_if(rows[n].fields.begin(), rows[n].fields.end(), endsWithPosition);
    if (positions > 2) refuse(file, "a list of more than two dimensions");
    if (positions == 2) return readOwn(std::move(rows), n);
  }
  refuse(file,
         "no list of Sparky or POKY, NMRPipe or peakbox; the columns of a table with a header line are named by -c "
         "LABEL,PPM1,PPM2");
}

std::size_t ListReader::findColumn(const Row& header, const std::string& name) const {
  const auto& fields = header.fields;
  const auto place = std::find(fields.begin(), fields.end(), name);
  const std::string line = file + ":" + std::to_string(header.line);
  if (place == fields.end()) {
    std::string columns;
    for (const std::string& field : fields) columns += (columns.empty() ? "'" : ", '") + field + "'";
    refuse(line, "there is no column '" + name + "', there are " + cut(columns, 300));
  }
  if (std::find(place + 1, fields.end(), name) != fields.end()) refuse(line, "there are two columns '" + name + "'");
  return static_cast<std::size_t>(place - fields.begin());
}

ForeignList ListReader::readTable(const std::string& text) const {
  const bool hasTabs = text.substr(0, text.find('\n', text.find_first_not_of('\n'))).find('\t') != std::string::npos;
  ForeignList list{.rows = splitTable(text, hasTabs ? '\t' : ',', file)};
  if (list.rows.empty()) refuse(file, "is empty");
  const Row header = list.rows[0];
  list.rows.erase(list.rows.begin());
  list.label = findColumn(header, wanted[0]);
  for (const std::size_t n : {0U, 1U}) list.ppm[n] = findColumn(header, wanted[n + 1]);
  list.names = list.descriptions = {wanted[1], wanted[2]};
  for (const std::string name : {"#", "Number", "Index"}) {
    const auto place = std::find(header.fields.begin(), header.fields.end(), name);
    if (place == header.fields.end()) continue;
    list.number = static_cast<std::size_t>(place - header.fields.begin());
    break;
  }
  return list;
}

ForeignList ListReader::readSparky(std::vector<Row> rows) const {
  const Row header = rows[0];
  rows.erase(rows.begin());
  ForeignList list{.rows = std::move(rows), .label = 0, .ppm = {1, 2}, .names = {"w1", "w2"}};
  if (header.fields.size() < 3 || header.fields[2] != "w2") {
    refuse(file + ":" + std::to_string(header.line), "there is no column 'w2' behind w1");
  }
  if (header.fields.size() > 3 && header.fields[3] == "w3") refuse(file, "a list of more than two dimensions");
  for (const Row& row : list.rows) {
    // Labels have no blanks there, and always something.
    const bool isTooLong = header.fields.size() == 3 && row.fields.size() > 3;
    const bool isPosition = textToDecimal(row.fields[0]) && row.fields[0].find('.') != std::string::npos;
    if (!isTooLong && !isPosition) continue;
    refuse(file + ":" + std::to_string(row.line), isTooLong ? "more fields than columns" : "there is no label");
  }
  return list;
}

ForeignList ListReader::readPipeTable(std::vector<Row> rows) const {
  ForeignList list{.names = {"X_PPM", "Y_PPM"}, .noLabel = "*"};
  Row header;
  for (Row& row : rows) {
    const std::vector<std::string>& fields = row.fields;
    if (fields[0] == "VARS") {
      if (!header.fields.empty()) refuse(file + ":" + std::to_string(row.line), "a second table");
      header = {.line = row.line, .fields = {fields.begin() + 1, fields.end()}};
    } else if (fields[0] == "DATA" && fields.size() > 2) {
      if (fields[1] == "X_AXIS") list.descriptions[0] = fields[2];
      if (fields[1] == "Y_AXIS") list.descriptions[1] = fields[2];
    } else if (fields[0] == "NULLVALUE" && fields.size() > 1) {
      list.noValue = textToDecimal(fields[1]);
    } else if (fields[0] == "NULLSTRING" && fields.size() > 1) {
      list.noLabel = fields[1];
    } else if (fields[0] != "REMARK" && fields[0] != "FORMAT" && fields[0] != "DATA" && !fields[0].starts_with('#')) {
      if (header.fields.empty()) refuse(file + ":" + std::to_string(row.line), "a peak before the line of VARS");
      list.rows.push_back(std::move(row));
    }
  }
  list.label = findColumn(header, "ASS");
  list.ppm = {findColumn(header, "X_PPM"), findColumn(header, "Y_PPM")};
  const auto& columns = header.fields;
  if (std::find(columns.begin(), columns.end(), "Z_PPM") != columns.end()) {
    refuse(file, "a list of more than two dimensions");
  }
  if (std::find(columns.begin(), columns.end(), "INDEX") != columns.end()) list.number = findColumn(header, "INDEX");
  return list;
}

/// A list of peakbox itself, whose header line of columns is `header`.
ForeignList ListReader::readOwn(std::vector<Row> rows, std::size_t header) const {
  ForeignList list{.number = 0, .deletion = 17, .hasBracedLabels = true};
  const Row columns = rows[header];
  for (std::size_t n = 0; const std::string& field : columns.fields) {
    if (!endsWithPosition(field)) continue;
    const std::string name = field.substr(0, field.size() - 2);
    // A line begins with the peak's number, for which there is no name.
    list.ppm[n] = findColumn(columns, field) + 1;
    const auto bounds = std::find(columns.fields.begin(), columns.fields.end(), name + ".B");
    if (bounds != columns.fields.end()) list.bounds[n] = static_cast<std::size_t>(bounds - columns.fields.begin()) + 1;
    if (n == 0) list.label = findColumn(columns, name + ".L") + 1;
    list.names[n] = list.descriptions[n] = name;
    ++n;
  }
  // The mark of a deleted peak is in the 18th field, unless the list says otherwise.
  const auto stat = std::find(columns.fields.begin(), columns.fields.end(), "stat");
  if (stat != columns.fields.end()) list.deletion = static_cast<std::size_t>(stat - columns.fields.begin()) + 1;
  list.rows.assign(std::make_move_iterator(rows.begin() + static_cast<std::ptrdiff_t>(header) + 1),
                   std::make_move_iterator(rows.end()));
  return list;
}

/// The peaks of a list, all of whose fields have been checked.
std::vector<Entry> takeEntries(const ForeignList& list, const std::string& file) {
  std::vector<Entry> entries;
  for (const Row& row : list.rows) {
    const std::string place = file + ":" + std::to_string(row.line);
    const auto field = [&](std::size_t column) -> const std::string& {
      if (column >= row.fields.size()) {
        refuse(place, "field " + std::to_string(column + 1) + " is missing");
      }
      return row.fields[column];
    };
    if (list.deletion < row.fields.size() && row.fields[list.deletion] == "-1") continue;
    Entry entry{.line = row.line, .label = field(list.label)};
    for (const std::size_t n : {0U, 1U}) {
      entry.ppm[n] = field(list.ppm[n]);
      const std::optional<double> value = textToDecimal(entry.ppm[n]);
      if (!value || value == list.noValue) refuse(place, "the position '" + cut(entry.ppm[n], 60) + "' is no number");
      if (list.bounds[n] < row.fields.size()) entry.bounds[n] = row.fields[list.bounds[n]];
    }
    const std::optional<double> number =
        list.number < row.fields.size() ? textToDecimal(row.fields[list.number]) : std::nullopt;
    if (number && *number == std::floor(*number) && std::fabs(*number) < 0x1p31) {
      entry.number = static_cast<std::int64_t>(*number);
    }
    entries.push_back(std::move(entry));
  }
  if (entries.empty()) refuse(file, "has no peaks");
  return entries;
}

/// The label as peakbox reads it; "?" where there is none.
std::string cleanLabel(std::string label, const ForeignList& list) {
  for (char& c : label) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
  }
  // CcpNmr writes an atom that is not assigned as {3}H.
  if (!list.hasBracedLabels && label.starts_with('{')) return "?";
  std::erase(label, '{');
  std::erase(label, '}');
  label = trim(label);
  const bool isUnknown = label.find_first_not_of("?-") == std::string::npos;
  return isUnknown || label == "None" || label == list.noLabel ? "?" : label;
}

/// Which dimension each of the list's two columns is.
class Directions {
 public:
  Directions(const ForeignList& foreign, const Spectrum& target) : list(foreign), spectrum(target) {}

  /// The column of the direct dimension, 0 or 1; nothing where that cannot be told.
  std::optional<std::size_t> findDirect(const std::vector<Entry>& entries) const;

  /// Where no way round fits all peaks, the first one that does not fit that which fits the most; else none.
  const Entry* findMisfit(const std::vector<Entry>& entries) const;

  /// How often a position must be folded to lie in the spectrum.
  double countFoldings(const Entry& entry, std::size_t column, int dim) const;

 private:
  static constexpr double kMostFoldings = 3.0;

  double countMostFoldings(const std::vector<Entry>& entries, std::size_t direct) const;
  std::optional<std::size_t> findByNames() const;

  const ForeignList& list;
  const Spectrum& spectrum;
};

double Directions::countFoldings(const Entry& entry, std::size_t column, int dim) const {
  const double point = spectrum.ppmToPoint(std::strtod(entry.ppm[column].c_str(), nullptr), dim);
  const int size = spectrum.getSize(dim);
  return std::max({0.0, std::ceil((point - size + 0.5) / size), std::ceil((-0.5 - point) / size)});
}

double Directions::countMostFoldings(const std::vector<Entry>& entries, std::size_t direct) const {
  double most = 0.0;
  for (const Entry& entry : entries) {
    most = std::max({most, countFoldings(entry, direct, 0), countFoldings(entry, 1 - direct, 1)});
  }
  return most;
}

std::optional<std::size_t> Directions::findDirect(const std::vector<Entry>& entries) const {
  const double most0 = countMostFoldings(entries, 0);
  const double most1 = countMostFoldings(entries, 1);
  if (std::min(most0, most1) > kMostFoldings) return std::nullopt;
  if (most0 != most1) return most0 < most1 ? 0 : 1;
  return findByNames();
}

const Entry* Directions::findMisfit(const std::vector<Entry>& entries) const {
  std::array<std::vector<const Entry*>, 2> misfits;
  for (const std::size_t direct : {0U, 1U}) {
    for (const Entry& entry : entries) {
      if (countMostFoldings({entry}, direct) > kMostFoldings) misfits[direct].push_back(&entry);
    }
    if (misfits[direct].empty()) return nullptr;
  }
  return misfits[misfits[0].size() <= misfits[1].size() ? 0 : 1].front();
}

std::optional<std::size_t> Directions::findByNames() const {
  const std::array<std::string, 2> dimensions = nameDimensions(spectrum);
  if (list.descriptions == dimensions) return 0;
  const std::array<std::string, 2> named{findNucleus(list.descriptions[0]), findNucleus(list.descriptions[1])};
  if (named == dimensions) return 0;
  if (named[0] == dimensions[1] && named[1] == dimensions[0]) return 1;
  return std::nullopt;
}

/// What the command line asks for.
struct Request {
  std::string spectrum;
  std::string file;
  std::vector<std::string> columns;
  std::optional<std::array<std::string, 2>> bounds;
  bool isExchanged = false;
};

/// The widths of the bounds where the list has none.
std::array<std::string, 2> chooseBounds(const Request& request, const std::array<std::string, 2>& dimensions) {
  if (request.bounds) return *request.bounds;
  if (dimensions[0] == "1H" && (dimensions[1] == "15N" || dimensions[1] == "13C")) return {"0.04", "0.4"};
  refuse(request.spectrum, "its nuclei are " + dimensions[0] + " and " + dimensions[1] +
                               ", for which the bounds must be given: -b WIDTH1,WIDTH2");
}

std::string writeHeader(const Spectrum& spectrum, const std::string& name,
                        const std::array<std::string, 2>& dimensions) {
  std::ostringstream text;
  text << "label dataset sw sf\n" << dimensions[0] << ' ' << dimensions[1] << '\n' << name << '\n';
  text << '{' << spectrum.getSize(0) / spectrum.hzToPoints(1, 0) << "} {"
       << spectrum.getSize(1) / spectrum.hzToPoints(1, 1) << "}\n{" << spectrum.getObserveMHz(0) << "} {"
       << spectrum.getObserveMHz(1) << "}\n";
  for (const std::string& dimension : dimensions) {
    for (const char* column : {".L ", ".P ", ".W ", ".B ", ".E ", ".J ", ".U "}) text << dimension << column;
  }
  text << "vol int stat comment flag0\n";
  return text.str();
}

bool hasOwnNumbers(const std::vector<Entry>& entries) {
  std::set<std::int64_t> numbers;
  for (const Entry& entry : entries) {
    if (entry.number) numbers.insert(*entry.number);
  }
  return numbers.size() == entries.size();
}

/// Writes the list and what became of it.
void convert(const Request& request) {
  Spectrum spectrum;
  spectrum.readHeader(request.spectrum.c_str(), false);
  const std::string misread = spectrum.describeOrder();
  if (!misread.empty()) refuse(request.spectrum, misread);
  for (const int dim : {0, 1}) {
    const double perPoint = spectrum.pointToPpm(0, dim) - spectrum.pointToPpm(1, dim);
    if (spectrum.getSize(dim) == 0 || !std::isfinite(perPoint) || perPoint == 0) {
      refuse(request.spectrum, "its dimension " + std::to_string(dim + 1) + " has no ppm axis");
    }
  }
  const std::array<std::string, 2> dimensions = nameDimensions(spectrum);

  const ForeignList list = ListReader(request.file, request.columns).read();
  const std::vector<Entry> entries = takeEntries(list, request.file);
  const Directions directions(list, spectrum);
  const std::optional<std::size_t> found = directions.findDirect(entries);
  const Entry* misfit = found ? nullptr : directions.findMisfit(entries);
  if (misfit != nullptr && !request.isExchanged) {
    refuse(request.file + ":" + std::to_string(misfit->line),
           "the positions " + misfit->ppm[0] + " and " + misfit->ppm[1] + " lie far outside " + request.spectrum);
  }
  if (!found && !request.isExchanged) {
    refuse(request.file, "from the positions it cannot be told whether " + list.names[0] + " or " + list.names[1] +
                             " is the direct dimension of " + request.spectrum + "; -x says " + list.names[1]);
  }
  const std::size_t direct = request.isExchanged ? 1 - found.value_or(0) : *found;

  std::string text = writeHeader(spectrum, cut(request.spectrum, 200), dimensions);
  std::size_t unassigned = 0;
  std::size_t outside = 0;
  const bool keepsNumbers = hasOwnNumbers(entries);
  for (std::size_t n = 0; n < entries.size(); ++n) {
    const Entry& entry = entries[n];
    const std::string label = cleanLabel(entry.label, list);
    unassigned += label == "?";
    outside += directions.countFoldings(entry, direct, 0) > 0 || directions.countFoldings(entry, 1 - direct, 1) > 0;
    text += std::to_string(keepsNumbers ? *entry.number : static_cast<std::int64_t>(n) + 1);
    for (const std::size_t d : {0U, 1U}) {
      const std::size_t column = d == 0 ? direct : 1 - direct;
      const bool hasBounds = !request.bounds && list.bounds[column] != ForeignList::kNone;
      const std::string width = hasBounds ? entry.bounds[column] : chooseBounds(request, dimensions)[d];
      if (!(textToDecimal(width).value_or(0.0) > 0.0)) {
        refuse(request.file + ":" + std::to_string(entry.line),
               "the bounds '" + cut(width, 60) + "' are no width; -b gives others");
      }
      text.append(" {").append(label).append("} ").append(entry.ppm[column]).append(" 0.0 ").append(width);
      text += " ++ {0.0} {}";
    }
    text += " 0.0 0.0 0 {} 0\n";
  }
  if (!(std::cout << text << std::flush)) refuse("standard output", "cannot be written");

  std::cerr << request.file << ": " << entries.size() << (entries.size() == 1 ? " peak, " : " peaks, ") << list.names[0]
            << " = " << dimensions[direct] << ", " << list.names[1] << " = " << dimensions[1 - direct];
  if (unassigned > 0) std::cerr << "; " << unassigned << " without assignment";
  if (outside > 0) std::cerr << "; " << outside << " outside the spectrum, to be folded";
  std::cerr << '\n';
}

[[noreturn]] void usage() {
  std::cerr << "usage: peakbox-list [-x] [-b WIDTH1,WIDTH2] [-c LABEL,PPM1,PPM2] -s SPECTRUM LIST\n";
  std::exit(2);
}

}  // namespace

int peakboxList(int argc, char** argv);

int peakboxList(int argc, char** argv) {
  std::set_new_handler([] { fail("peakbox-list: not enough memory\n"); });
  Request request;
  for (int option = 0; (option = getopt(argc, argv, "b:c:s:x")) != -1;) {
    if (option == 's') {
      request.spectrum = optarg;
    } else if (option == 'x') {
      request.isExchanged = true;
    } else if (option == 'c') {
      const std::vector<Row> names = splitTable(std::string(optarg) + "\n", ',', "-c");
      if (names.size() != 1 || names[0].fields.size() != 3) usage();
      request.columns = names[0].fields;
    } else if (option == 'b') {
      const std::string widths = optarg;
      const std::size_t comma = std::min(widths.find(','), widths.size() - 1);
      request.bounds = {widths.substr(0, comma), widths.substr(comma + 1)};
      for (const std::string& width : *request.bounds) {
        if (!(textToDecimal(width).value_or(0.0) > 0.0)) usage();
      }
    } else {
      usage();
    }
  }
  if (optind + 1 != argc || request.spectrum.empty()) usage();
  request.file = argv[optind];
  convert(request);
  return 0;
}
