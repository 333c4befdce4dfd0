#include <algorithm>
#include <bit>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>

#include "base/Refusal.h"
#include "planes/Layout.h"
#include "spectrum/PipeWords.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

namespace {

std::string text(auto number) { return std::to_string(number); }

FileHeader readHeader(const std::string& path) {
  std::error_code failed;
  if (fs::file_size(path, failed) < FileHeader::kSize) refuse(path, "too short for a file of NMRPipe");
  std::ifstream stream(path, std::ios::binary);
  return FileHeader(stream);
}

/// A header, and the numbers and sizes of its axes by their place in the order, the fastest first.
struct PipeFile {
  explicit PipeFile(const std::string& file) : path(file), header(readHeader(file)) {
    const std::optional<bool> order = pipe::findByteOrder(header);
    if (header.getWord(0, false) != 0 || !order) refuse(path, "this is no file of NMRPipe, UCSF or Bruker");
    isSwapped = *order;
    readOrder();
    countPlanes();
  }

  void readOrder();
  void countPlanes();
  void chooseStacked();
  std::string describeFault(std::size_t place) const;
  Axis readAxis(std::size_t place) const;
  bool isWholeCube() const { return dimensionCount == 3 && sizes[2] > 1; }
  std::size_t other() const { return 3 - direct - stacked; }
  std::int32_t integer(std::size_t offset) const { return header.getTruncated(offset, isSwapped); }

  std::string path;
  FileHeader header;
  bool isSwapped = false;
  int dimensionCount = 0;
  std::array<int, 3> numbers{pipe::kDirect, pipe::kIndirect, 3};
  std::array<std::uint64_t, 3> sizes{1, 1, 1};
  std::int64_t claimedCount = 1;
  std::size_t direct = 2;
  std::size_t stacked = 2;
};

void PipeFile::readOrder() {
  constexpr int kMost = pipe::kMostAxes;
  dimensionCount = integer(pipe::kDimensionCount);
  if (dimensionCount < 1 || dimensionCount > kMost)
    refuse(path, "this is no file of NMRPipe, or its header is damaged");
  if (dimensionCount < 2 || dimensionCount > 3) {
    refuse(path, "has " + text(dimensionCount) + " dimensions, and only two or three can be read");
  }
  std::set<int> known;
  for (std::size_t place = 0; place < static_cast<std::size_t>(dimensionCount); ++place) {
    const int number = numbers[place] = integer(pipe::kOrder[place]);
    if (!known.insert(number).second || number < 1 || number > kMost) {
      refuse(path, "does not say in which order its axes are");
    }
    if (number == pipe::kDirect) direct = place;
    const std::int32_t size = integer(pipe::kSize[place]);
    if (place < 2 && size < 1) refuse(path, "axis " + text(place + 1) + " has " + text(size) + " points");
    if (place < 2) sizes[place] = static_cast<std::uint64_t>(size);
  }
  // In three dimensions the word says nothing of the planes.
  if (dimensionCount == 2 && (integer(pipe::kTransposed) == 1) != (direct != 0)) {
    refuse(path, "the order of its axes and its word on transposition contradict each other");
  }
}

/// By the length of the file: it is one plane, or all of them.
void PipeFile::countPlanes() {
  std::error_code failed;
  const std::uintmax_t bytes = fs::file_size(path, failed) - FileHeader::kSize;
  const std::uint64_t planeBytes = 4 * sizes[0] * sizes[1];  // below 2^64
  sizes[2] = bytes / planeBytes;
  claimedCount = dimensionCount == 3 ? integer(pipe::kSize[2]) : 1;
  const bool isClaimed = claimedCount > 0 && sizes[2] == static_cast<std::uint64_t>(claimedCount);
  const bool isFlatCube = dimensionCount == 2 && sizes[2] > 1;
  if (failed || bytes % planeBytes != 0 || !(sizes[2] == 1 || isClaimed || isFlatCube)) {
    refuse(path, "has " + text(bytes) + " bytes of data, but a plane of " + text(sizes[0]) + " x " + text(sizes[1]) +
                     " points has " + text(planeBytes) +
                     (claimedCount == 1 ? "" : " and a cube " + text(claimedCount) + " times as many"));
  }
  if (!isFlatCube) return;
  warn(path, "has two dimensions by its header, and the data of " + text(sizes[2]) + " planes");
  claimedCount = static_cast<std::int64_t>(sizes[2]);
}

/// The axis that stands last, in a whole cube also another one.
void PipeFile::chooseStacked() {
  if (isWholeCube() && direct == 2) {
    const bool isUsable0 = describeFault(0).empty();
    const bool isUsable1 = describeFault(1).empty();
    stacked = isUsable0 != isUsable1 ? isUsable0 : sizes[0] >= sizes[1];
  } else if (isWholeCube() && !describeFault(1 - direct).empty() && describeFault(2).empty()) {
    stacked = 1 - direct;
  }
  if (direct == stacked) {
    refuse(path, "the direct dimension is not in its planes; transpose it, so that it is the first or second axis");
  }
}

/// Why an axis cannot be one of planes; empty where it can.
std::string PipeFile::describeFault(std::size_t place) const {
  const pipe::AxisWords words = pipe::getAxisWords(numbers[place]);
  if (integer(words.isTransformed) != 1) return "is not transformed (are these the delays?)";
  if (integer(words.quadFlag) != 1) return "is complex; delete its imaginary part";
  const Axis axis = readAxis(place);
  const bool isFinite = std::isfinite(double{axis.sweepWidthHz} + axis.originHz + axis.observeMHz);
  return isFinite && axis.sweepWidthHz != 0 && axis.observeMHz != 0 ? "" : "has no sweep width or no frequency";
}

Axis PipeFile::readAxis(std::size_t place) const {
  const pipe::AxisWords words = pipe::getAxisWords(numbers[place]);
  return {.size = sizes[place],
          .sweepWidthHz = header.getReal(words.sweepWidthHz, isSwapped),
          .originHz = header.getReal(words.originHz, isSwapped),
          .observeMHz = header.getReal(words.observeMHz, isSwapped),
          .label = header.getText(words.label, 8)};
}

}  // namespace

Layout readPipe(const std::string& path) {
  PipeFile file(path);
  file.chooseStacked();
  for (const std::size_t place : {file.other(), file.direct}) {
    const std::string fault = file.describeFault(place);
    const std::string name = "axis number " + text(file.numbers[place]) + " of its planes ";
    if (!fault.empty()) refuse(path, name + fault);
  }
  const bool isBigEndian = file.isSwapped == (std::endian::native == std::endian::little);
  Layout layout{.path = path, .start = FileHeader::kSize, .isBigEndian = isBigEndian};
  layout.sizes = {file.sizes[2], file.sizes[1], file.sizes[0]};
  layout.tiles = {1, 1, file.sizes[0]};
  layout.stacked = 2 - file.stacked;
  layout.indirect = 2 - file.other();
  layout.direct = 2 - file.direct;
  layout.axes = {file.readAxis(file.direct), file.readAxis(file.other())};
  layout.claimedCount = file.stacked == 2 ? file.claimedCount : static_cast<std::int64_t>(file.sizes[file.stacked]);
  layout.pipeHeader = file.header.getText(0, FileHeader::kSize);
  for (std::size_t word = 0; isBigEndian && word < FileHeader::kSize / 4; ++word) {
    char* const bytes = &layout.pipeHeader[4 * word];
    if (!pipe::isText(word)) std::reverse(bytes, bytes + 4);
  }
  return layout;
}

}  // namespace peakbox::planes
