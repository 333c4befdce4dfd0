#include "planes/PipeFile.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include "base/Refusal.h"
#include "spectrum/PipeWords.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

namespace {

FileHeader readHeader(const std::string& path) {
  std::error_code failed;
  if (!fs::exists(path, failed)) refuse(path, "there is no such file");
  if (!fs::is_regular_file(path, failed)) refuse(path, "this is no regular file");
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open()) refuse(path, "cannot be read");
  if (fs::file_size(path, failed) < FileHeader::kSize) refuse(path, "too short for a file of NMRPipe");
  return FileHeader(stream);
}

std::string text(auto number) { return std::to_string(number); }

}  // namespace

PipeFile::PipeFile(const std::string& file) : path(file), header(readHeader(file)) {
  const std::optional<bool> order = pipe::findByteOrder(header);
  if (header.getWord(0, false) != 0 || !order) refuse(path, "this is no file of NMRPipe");
  isSwapped = *order;
  readOrder();
  for (const std::size_t place : {0U, 1U}) readAxis(place);
  // In three dimensions the word says nothing of the planes.
  if (dimensionCount == 2 && (integer(pipe::kTransposed) == 1) != isTransposed()) {
    refuse(path, "the order of its axes and its word on transposition contradict each other");
  }
  countPlanes();
}

bool PipeFile::isTransposed() const { return axes[0].number != pipe::kDirect; }

bool PipeFile::isBigEndian() const { return isSwapped == (std::endian::native == std::endian::little); }

void PipeFile::readOrder() {
  constexpr int kMost = pipe::kMostAxes;
  const int count = dimensionCount = integer(pipe::kDimensionCount);
  if (count < 1 || count > kMost) refuse(path, "this is no file of NMRPipe, or its header is damaged");
  if (count < 2 || count > 3) refuse(path, "has " + text(count) + " dimensions, and only two or three can be read");
  std::set<int> numbers;
  for (std::size_t place = 0; place < static_cast<std::size_t>(count); ++place) {
    const int number = integer(pipe::kOrder[place]);
    const bool isNew = numbers.insert(number).second;
    if (!isNew || number < 1 || number > kMost) refuse(path, "does not say in which order its axes are");
    if (place < 2) axes[place].number = number;
  }
  if (isTransposed() && axes[1].number != pipe::kDirect) {
    refuse(path, "the direct dimension is not in its planes; transpose it, so that it is the first or second axis");
  }
}

void PipeFile::readAxis(std::size_t place) {
  const int number = axes[place].number;
  const pipe::AxisWords words = pipe::getAxisWords(number);
  const std::string name = "axis number " + text(number) + " of its planes ";
  if (integer(words.isTransformed) != 1) refuse(path, name + "is not transformed (are these the delays?)");
  if (integer(words.quadFlag) != 1) refuse(path, name + "is complex; delete its imaginary part");
  const std::int32_t size = integer(pipe::kSize[place]);
  if (size < 1) refuse(path, "axis " + text(place + 1) + " has " + text(size) + " points");
  const auto real = [&](std::size_t offset) { return header.getReal(offset, isSwapped); };
  const float width = real(words.sweepWidthHz);
  const float origin = real(words.originHz);
  const float observe = real(words.observeMHz);
  const bool isFinite = std::isfinite(double{width} + origin + observe);
  if (!isFinite || width == 0 || observe == 0) refuse(path, name + "has no sweep width or no frequency");
  axes[place] = {number, static_cast<std::uint64_t>(size), width, origin, observe};
}

/// By the length of the file: it is one plane, or a cube of all of them.
void PipeFile::countPlanes() {
  std::error_code failed;
  const std::uintmax_t bytes = fs::file_size(path, failed) - FileHeader::kSize;
  const std::uint64_t planeBytes = 4 * axes[0].size * axes[1].size;  // below 2^64
  const std::int64_t claimed = claimedCount = dimensionCount == 3 ? integer(pipe::kSize[2]) : 1;
  planeCount = bytes / planeBytes;
  const bool isCube = claimed > 0 && planeCount == static_cast<std::uint64_t>(claimed);
  if (!failed && bytes % planeBytes == 0 && (planeCount == 1 || isCube)) return;
  refuse(path, "has " + text(bytes) + " bytes of data, but a plane of " + text(axes[0].size) + " x " +
                   text(axes[1].size) + " points has " + text(planeBytes) +
                   (claimed == 1 ? "" : " and a cube " + text(claimed) + " times as many"));
}

bool PipeFile::readPlane(std::uint64_t k, std::vector<std::uint32_t>& points) const {
  const std::uint64_t height = axes[1].size;
  points.resize(axes[0].size * height);
  std::ifstream stream(path, std::ios::binary);
  const auto bytes = static_cast<std::streamoff>(4 * points.size());
  stream.seekg(static_cast<std::streamoff>(FileHeader::kSize + k * 4 * points.size()));
  if (!stream.read(reinterpret_cast<char*>(points.data()), bytes)) return false;
  if (isBigEndian()) std::transform(points.begin(), points.end(), points.begin(), reverseBytes);
  if (!isTransposed()) return true;
  const std::vector<std::uint32_t> rows = points;
  for (std::size_t n = 0; n < rows.size(); ++n) points[n] = rows[n % height * axes[0].size + n / height];
  return true;
}

std::string PipeFile::makeHeader() const {
  std::string bytes = header.getText(0, FileHeader::kSize);
  for (std::size_t word = 0; isBigEndian() && word < bytes.size() / 4; ++word) {
    if (!pipe::isText(word)) std::reverse(&bytes[4 * word], &bytes[4 * word] + 4);
  }
  const auto put = [&](std::size_t offset, float value) {
    auto word = std::bit_cast<std::uint32_t>(value);
    if (std::endian::native == std::endian::big) word = reverseBytes(word);
    std::memcpy(&bytes[offset], &word, sizeof word);
  };
  const Axis& direct = axes[isTransposed() ? 1 : 0];
  const Axis& indirect = axes[isTransposed() ? 0 : 1];
  const float order[] = {pipe::kDirect, pipe::kIndirect, 3, 4};
  const float sizes[] = {static_cast<float>(direct.size), static_cast<float>(indirect.size), 1, 1};
  for (std::size_t place = 0; place < pipe::kMostAxes; ++place) {
    put(pipe::kOrder[place], order[place]);
    put(pipe::kSize[place], sizes[place]);
  }
  put(pipe::kDimensionCount, 2);
  put(pipe::kTransposed, 0);
  const pipe::AxisWords to = pipe::getAxisWords(pipe::kIndirect);
  put(to.sweepWidthHz, indirect.sweepWidthHz);
  put(to.originHz, indirect.originHz);
  put(to.observeMHz, indirect.observeMHz);
  put(to.isTransformed, 1);
  put(to.quadFlag, 1);
  bytes.replace(to.label, 8, bytes, pipe::getAxisWords(indirect.number).label, 8);
  return bytes;
}

}  // namespace peakbox::planes
