// peakbox-planes [-l LIST] -o DIR FILE...: writes the planes of NMRPipe files as peakbox reads them, see
// peakbox-planes(1).

#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "base/Messages.h"
#include "base/TextNumbers.h"
#include "spectrum/FileHeader.h"
#include "spectrum/PipeWords.h"

namespace {

using namespace peakbox;
namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
  fail(std::string("peakbox-planes: ").append(file).append(": ").append(reason).append("\n"));
}

/// An axis of a plane, as its words say.
struct Axis {
  int number = 0;
  std::int64_t size = 0;
  float sweepWidthHz = 0;
  float originHz = 0;
  float observeMHz = 0;

  bool operator==(const Axis&) const = default;
};

/// What a file holds: planes of rows of the first axis, one row for each point of the second.
struct Layout {
  int dimensionCount = 0;
  std::array<Axis, 2> axes;
  std::int64_t planeCount = 1;
  bool isSwapped = false;

  bool isTransposed() const { return axes[0].number != pipe::kDirect; }
  const Axis& indirect() const { return axes[isTransposed() ? 0 : 1]; }
  bool isBigEndian() const { return isSwapped == (std::endian::native == std::endian::little); }
  std::uint64_t countPlaneBytes() const { return 4 * static_cast<std::uint64_t>(axes[0].size * axes[1].size); }
};

/// Reads and checks what one file says of itself.
class LayoutReader {
 public:
  explicit LayoutReader(const std::string& path) : file(path), stream(open(path)), header(stream) {}

  Layout read();

 private:
  static std::ifstream open(const std::string& path);
  std::vector<int> readOrder(int dimensionCount) const;
  Axis readAxis(int number, std::size_t place) const;
  std::int64_t readSize(std::size_t place) const;
  std::int64_t countPlanes(const Layout& layout) const;

  std::int32_t integer(std::size_t offset) const { return header.getTruncated(offset, isSwapped); }
  float real(std::size_t offset) const { return header.getReal(offset, isSwapped); }

  const std::string file;
  std::ifstream stream;
  const FileHeader header;
  bool isSwapped = false;
};

std::ifstream LayoutReader::open(const std::string& path) {
  std::error_code failed;
  if (!fs::exists(path, failed)) refuse(path, "there is no such file");
  if (!fs::is_regular_file(path, failed)) refuse(path, "this is no regular file");
  std::ifstream opened(path, std::ios::binary);
  if (!opened.is_open()) refuse(path, "cannot be read");
  if (fs::file_size(path, failed) < FileHeader::kSize) refuse(path, "too short for a file of NMRPipe");
  return opened;
}

Layout LayoutReader::read() {
  const std::optional<bool> order = pipe::findByteOrder(header);
  if (header.getWord(0, false) != 0 || !order) refuse(file, "this is no file of NMRPipe");
  isSwapped = *order;

  Layout layout;
  layout.isSwapped = isSwapped;
  layout.dimensionCount = integer(pipe::kDimensionCount);
  if (layout.dimensionCount < 1 || layout.dimensionCount > static_cast<int>(pipe::kMostAxes)) {
    refuse(file, "this is no file of NMRPipe, or its header is damaged");
  }
  if (layout.dimensionCount != 2 && layout.dimensionCount != 3) {
    refuse(file, "has " + std::to_string(layout.dimensionCount) + " dimensions, and only two or three can be read");
  }
  const std::vector<int> numbers = readOrder(layout.dimensionCount);
  layout.axes = {readAxis(numbers[0], 0), readAxis(numbers[1], 1)};
  // In three dimensions the word says nothing of the planes.
  if (layout.dimensionCount == 2 && (integer(pipe::kTransposed) == 1) != layout.isTransposed()) {
    refuse(file, "the order of its axes and its word on transposition contradict each other");
  }
  layout.planeCount = countPlanes(layout);
  return layout;
}

/// The numbers of the axes, the fastest first.
std::vector<int> LayoutReader::readOrder(int dimensionCount) const {
  std::vector<int> numbers;
  for (std::size_t place = 0; place < static_cast<std::size_t>(dimensionCount); ++place) {
    const int number = integer(pipe::kOrder[place]);
    const bool isKnown = number >= 1 && number <= static_cast<int>(pipe::kMostAxes);
    if (!isKnown || std::count(numbers.begin(), numbers.end(), number) > 0) {
      refuse(file, "does not say in which order its axes are");
    }
    numbers.push_back(number);
  }
  if (numbers[0] != pipe::kDirect && numbers[1] != pipe::kDirect) {
    refuse(file, "the direct dimension is not in its planes; transpose it, so that it is the first or second axis");
  }
  return numbers;
}

Axis LayoutReader::readAxis(int number, std::size_t place) const {
  const pipe::AxisWords words = pipe::getAxisWords(number);
  const std::string name = "axis number " + std::to_string(number) + " of its planes ";
  if (integer(words.isTransformed) != 1) refuse(file, name + "is not transformed (are these the delays?)");
  if (integer(words.quadFlag) != 1) refuse(file, name + "is complex; delete its imaginary part");
  const Axis axis{.number = number,
                  .size = readSize(place),
                  .sweepWidthHz = real(words.sweepWidthHz),
                  .originHz = real(words.originHz),
                  .observeMHz = real(words.observeMHz)};
  const bool hasPpm = std::isfinite(axis.sweepWidthHz) && std::isfinite(axis.originHz) &&
                      std::isfinite(axis.observeMHz) && axis.sweepWidthHz != 0 && axis.observeMHz != 0;
  if (!hasPpm) refuse(file, name + "has no sweep width or no frequency");
  return axis;
}

std::int64_t LayoutReader::readSize(std::size_t place) const {
  const std::int32_t size = integer(pipe::kSize[place]);
  if (size < 1) refuse(file, "axis " + std::to_string(place + 1) + " has " + std::to_string(size) + " points");
  return size;
}

/// By the length of the file: it is one plane, or a cube of all of them.
std::int64_t LayoutReader::countPlanes(const Layout& layout) const {
  std::error_code failed;
  const std::uintmax_t bytes = fs::file_size(file, failed) - FileHeader::kSize;
  const std::uint64_t planeBytes = layout.countPlaneBytes();  // below 2^64
  if (!failed && bytes == planeBytes) return 1;
  const std::int64_t claimed = layout.dimensionCount == 3 ? integer(pipe::kSize[2]) : 1;
  const bool isWhole = bytes % planeBytes == 0 && bytes / planeBytes == static_cast<std::uint64_t>(claimed);
  if (!failed && claimed > 0 && isWhole) return claimed;
  refuse(file, "has " + std::to_string(bytes) + " bytes of data, but a plane of " +
                   std::to_string(layout.axes[0].size) + " x " + std::to_string(layout.axes[1].size) + " points has " +
                   std::to_string(planeBytes) +
                   (claimed == 1 ? "" : " and a cube " + std::to_string(claimed) + " times as many"));
}

/// The parameters of a list: one a line, a number or one with the suffix n, u, m or s, which becomes seconds.
std::vector<std::string> readDelays(const std::string& file) {
  std::ifstream stream(file);
  std::error_code ignored;
  if (!stream.is_open() || fs::is_directory(file, ignored)) refuse(file, "cannot be read");
  std::vector<std::string> delays;
  std::int64_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    std::istringstream words(line);
    std::string text;
    std::string more;
    if (!(words >> text)) continue;
    const std::size_t digits = text.find_last_not_of("smun") + 1;
    const std::string suffix = text.substr(digits);
    const std::optional<double> value = textToDecimal(text.substr(0, digits));
    if (words >> more || !value || suffix.size() > 1) {
      refuse(file + ":" + std::to_string(number), "'" + line + "' is no delay, a number or one with n, u, m or s");
    }
    const std::size_t step = std::string("smun").find(suffix);
    std::ostringstream seconds;
    seconds.precision(15);
    seconds << *value / std::pow(1000.0, step);
    delays.push_back(suffix.empty() ? text : seconds.str());
  }
  return delays;
}

/// The planes that are written, none of which stays when not all of them can be.
class PlaneWriter {
 public:
  explicit PlaneWriter(std::string target) : folder(std::move(target)) {}

  /// The file of a plane, counted from 1.
  std::string nameFile(std::int64_t plane) const;

  void write(const std::string& file, const Layout& layout);
  [[noreturn]] void giveUp(const std::string& file, const std::string& reason);

 private:
  void makeFolder();
  static std::string makeHeader(std::string bytes, const Layout& layout);
  static void putWord(std::string& bytes, std::size_t offset, float value);

  const std::string folder;
  bool isNewFolder = false;
  std::vector<std::string> written;
};

std::string PlaneWriter::nameFile(std::int64_t plane) const {
  const std::string digits = std::to_string(plane);
  return folder + "/" + std::string(3 - std::min<std::size_t>(3, digits.size()), '0') + digits + ".ft2";
}

void PlaneWriter::makeFolder() {
  std::error_code failed;
  isNewFolder = fs::create_directory(folder, failed);
  if (failed || !fs::is_directory(folder, failed)) refuse(folder, "is no folder and cannot be made one");
}

void PlaneWriter::giveUp(const std::string& file, const std::string& reason) {
  std::error_code ignored;
  for (const std::string& path : written) fs::remove(path, ignored);
  if (isNewFolder) fs::remove(folder, ignored);
  refuse(file, reason);
}

void PlaneWriter::write(const std::string& file, const Layout& layout) {
  std::ifstream in(file, std::ios::binary);
  std::string header(FileHeader::kSize, '\0');
  in.read(header.data(), static_cast<std::streamsize>(header.size()));
  header = makeHeader(header, layout);

  const auto width = static_cast<std::size_t>(layout.axes[0].size);
  const auto height = static_cast<std::size_t>(layout.axes[1].size);
  std::vector<std::uint32_t> plane(width * height);
  std::vector<std::uint32_t> turned(layout.isTransposed() ? plane.size() : 0);
  const auto bytes = static_cast<std::streamsize>(layout.countPlaneBytes());
  for (std::int64_t k = 0; k < layout.planeCount; ++k) {
    if (!in.read(reinterpret_cast<char*>(plane.data()), bytes)) giveUp(file, "cannot be read to its end");
    if (layout.isBigEndian()) {
      for (std::uint32_t& word : plane) word = reverseBytes(word);
    }
    for (std::size_t n = 0; n < turned.size(); ++n) turned[n] = plane[n % height * width + n / height];

    if (written.empty()) makeFolder();
    const std::string path = nameFile(static_cast<std::int64_t>(written.size()) + 1);
    std::FILE* const out = std::fopen(path.c_str(), "wbx");  // not over the file of another run
    if (out == nullptr) giveUp(path, "cannot be created");
    written.push_back(path);
    const std::vector<std::uint32_t>& points = turned.empty() ? plane : turned;
    const bool isWhole = std::fwrite(header.data(), header.size(), 1, out) == 1 &&
                         std::fwrite(points.data(), 4, points.size(), out) == points.size();
    if (std::fclose(out) != 0 || !isWhole) giveUp(path, "cannot be written");
  }
}

/// The header of the planes of a file with the header `bytes`: the other axis of a plane becomes number 1.
std::string PlaneWriter::makeHeader(std::string bytes, const Layout& layout) {
  // Text has no byte order: four labels, then the names of source and user, title and comment, and the last operation.
  const auto isText = [](std::size_t word) {
    return (word >= 16 && word < 24) || (word >= 286 && word < 294) || (word >= 297 && word < 352) ||
           (word >= 464 && word < 472);
  };
  for (std::size_t word = 0; layout.isBigEndian() && word < bytes.size() / 4; ++word) {
    if (!isText(word)) std::reverse(&bytes[4 * word], &bytes[4 * word] + 4);
  }

  const pipe::AxisWords from = pipe::getAxisWords(layout.indirect().number);
  const pipe::AxisWords to = pipe::getAxisWords(pipe::kIndirect);
  bytes.replace(to.sweepWidthHz, 4, bytes, from.sweepWidthHz, 4);
  bytes.replace(to.originHz, 4, bytes, from.originHz, 4);
  bytes.replace(to.observeMHz, 4, bytes, from.observeMHz, 4);
  bytes.replace(to.label, 8, bytes, from.label, 8);

  const Axis& direct = layout.axes[layout.isTransposed() ? 1 : 0];
  const std::array<int, pipe::kMostAxes> order{pipe::kDirect, pipe::kIndirect, 3, 4};
  const std::array<std::int64_t, pipe::kMostAxes> sizes{direct.size, layout.indirect().size, 1, 1};
  for (std::size_t place = 0; place < pipe::kMostAxes; ++place) {
    putWord(bytes, pipe::kOrder[place], static_cast<float>(order[place]));
    putWord(bytes, pipe::kSize[place], static_cast<float>(sizes[place]));
  }
  putWord(bytes, pipe::kDimensionCount, 2);
  putWord(bytes, pipe::kTransposed, 0);
  putWord(bytes, to.isTransformed, 1);
  putWord(bytes, to.quadFlag, 1);
  return bytes;
}

void PlaneWriter::putWord(std::string& bytes, std::size_t offset, float value) {
  auto word = std::bit_cast<std::uint32_t>(value);
  if (std::endian::native == std::endian::big) word = reverseBytes(word);
  std::memcpy(&bytes[offset], &word, sizeof word);
}

/// What each file holds; all of them must hold the same.
std::vector<Layout> readLayouts(const std::vector<std::string>& files) {
  std::vector<Layout> layouts;
  std::set<fs::path> known;
  for (const std::string& file : files) {
    layouts.push_back(LayoutReader(file).read());
    if (!known.insert(fs::canonical(file)).second) refuse(file, "is given twice");
    if (layouts.back().planeCount > 1 && files.size() > 1) {
      refuse(file, "this is a whole cube, which can only be given alone");
    }
    if (layouts.back().dimensionCount != layouts[0].dimensionCount || layouts.back().axes != layouts[0].axes) {
      refuse(file, "its sizes or axes differ from those of " + files[0]);
    }
  }
  return layouts;
}

[[noreturn]] void usage() {
  std::cerr << "usage: peakbox-planes [-l LIST] -o DIR FILE...\n";
  std::exit(2);
}

}  // namespace

int peakboxPlanes(int argc, char** argv);

int peakboxPlanes(int argc, char** argv) {
  std::set_new_handler([] { fail("peakbox-planes: not enough memory\n"); });
  std::string list;
  std::string folder;
  for (int option = 0; (option = getopt(argc, argv, "l:o:")) != -1;) {
    if ((option != 'l' && option != 'o') || *optarg == '\0') usage();
    (option == 'l' ? list : folder) = optarg;
  }
  const std::vector<std::string> files(argv + optind, argv + argc);
  if (files.empty() || folder.empty()) usage();
  while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
  if (folder.find_first_of(" \t\r\n,") != std::string::npos) {
    refuse(folder, "a name in a parameter file has no blanks and no commas");
  }

  const std::vector<Layout> layouts = readLayouts(files);
  const std::int64_t planeCount = std::max(static_cast<std::int64_t>(files.size()), layouts[0].planeCount);
  const std::vector<std::string> delays = list.empty() ? std::vector<std::string>() : readDelays(list);
  if (!list.empty() && static_cast<std::int64_t>(delays.size()) != planeCount) {
    refuse(list,
           "has " + std::to_string(delays.size()) + " delays, and there are " + std::to_string(planeCount) + " planes");
  }

  PlaneWriter writer(folder);
  std::string lines;
  for (std::int64_t plane = 1; plane <= planeCount; ++plane) {
    const std::string path = writer.nameFile(plane);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(path, ignored))) refuse(path, "exists already");
    lines += "SPECTRUM " + path;
    if (!delays.empty()) lines += " " + delays[static_cast<std::size_t>(plane) - 1];
    lines += "\n";
  }
  for (std::size_t n = 0; n < files.size(); ++n) writer.write(files[n], layouts[n]);
  if (!(std::cout << lines << std::flush)) writer.giveUp("standard output", "cannot be written");
  return 0;
}
