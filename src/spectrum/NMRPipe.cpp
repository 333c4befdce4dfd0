#include <cmath>

#include "driver/Messages.h"
#include "spectrum/Spectrum.h"
#include "spectrum/WordReader.h"

namespace peakbox {

namespace {

constexpr std::size_t wordOffset(std::size_t word) { return 4 * word; }

/// Byte offsets of the header's words, all of them floats.
constexpr std::size_t kDimensionCount = wordOffset(9);
constexpr std::size_t kQuadFlag2 = wordOffset(55);
constexpr std::size_t kQuadFlag1 = wordOffset(56);
constexpr std::size_t kSize1 = wordOffset(99);
constexpr std::size_t kSweepWidthHz1 = wordOffset(100);
constexpr std::size_t kOriginHz1 = wordOffset(101);
constexpr std::size_t kObserveMHz1 = wordOffset(119);
constexpr std::size_t kObserveMHz2 = wordOffset(218);
constexpr std::size_t kRowCount = wordOffset(219);
constexpr std::size_t kSweepWidthHz2 = wordOffset(229);
constexpr std::size_t kOriginHz2 = wordOffset(249);

/// Whether size and frequency of dimension 1 make sense in the given byte order. A frequency that is NaN is neither too
/// low nor too high, and so counts as sensible.
bool isPlausible(const FileHeader& header, bool byteSwapped) {
  const std::int32_t size = header.getTruncated(kSize1, byteSwapped);
  const float frequency = std::fabs(header.getReal(kObserveMHz1, byteSwapped));
  return size >= 1 && size <= 100000 && !(frequency < 1.0f) && !(frequency > 5000.0f);
}

}  // namespace

void Spectrum::readPipeHeader(std::istream& stream) {
  formatCode = SpectrumFormat::NMRPipe;
  const FileHeader header(stream);
  detectPipeByteOrder(header);
  if (header.getTruncated(kDimensionCount, byteSwapped) != 2) fail("ERROR: Spectrum is not two dimentional.\n");
  parsePipeHeader(header);
  checkSizes();
}

// The format does not record its byte order. A header that makes no sense as it stands is taken for a swapped one, and
// what is wrong with it if it is not shows in the checks that follow.
void Spectrum::detectPipeByteOrder(const FileHeader& header) {
  if (!isPlausible(header, false)) {
    noteByteSwap();
  } else if (!isPlausible(header, true)) {
    byteSwapped = false;
  } else {
    fail("ERROR: Unkonwn file format.\n");
  }
}

void Spectrum::parsePipeHeader(const FileHeader& header) {
  const auto real = [&](std::size_t offset) { return double{header.getReal(offset, byteSwapped)}; };
  const auto integer = [&](std::size_t offset) { return header.getTruncated(offset, byteSwapped); };

  quadFlags = {integer(kQuadFlag1), integer(kQuadFlag2)};
  sizes = {integer(kSize1), integer(kRowCount)};
  // With both dimensions complex, half of the rows are imaginary.
  if (quadFlags[0] == 0 && quadFlags[1] == 0) sizes[1] /= 2;

  observeMHz = {real(kObserveMHz1), real(kObserveMHz2)};
  hzPerPoint = {real(kSweepWidthHz1) / sizes[0], real(kSweepWidthHz2) / sizes[1]};
  originPpm = {(real(kSweepWidthHz1) + real(kOriginHz1)) / observeMHz[0],
               (real(kSweepWidthHz2) + real(kOriginHz2)) / observeMHz[1]};
}

std::int64_t Spectrum::getPointSkipBytes() const {
  const std::int64_t flagSum = std::int64_t{quadFlags[0]} + quadFlags[1];
  return flagSum == 0 ? 12 : flagSum == 1 ? 4 : 0;
}

void Spectrum::checkPipeLength(std::uint64_t bytes) const {
  const std::int64_t valueBytes = std::int64_t{4} * sizes[0];
  const auto rowBytes = static_cast<std::uint64_t>(valueBytes + getPointSkipBytes() * sizes[0]);
  const std::uint64_t fullRows = bytes / rowBytes;
  if (fullRows >= static_cast<std::uint64_t>(sizes[1])) return;

  // The end is noticed one value after the first that is missing, or at the start of the next row when that value is
  // the last of its row or only skipped bytes are missing. After the last row nothing notices it.
  auto row = static_cast<std::int64_t>(fullRows);
  std::int64_t point = static_cast<std::int64_t>(bytes % rowBytes) / 4 + 1;
  if (point >= sizes[0]) {
    point = 0;
    ++row;
  }
  if (row == sizes[1]) return;
  fail("Error reading file @ point (" + std::to_string(point) + "," + std::to_string(row) + "\n");
}

void Spectrum::loadPipeData(WordReader& words) {
  const std::int64_t rowWords = sizes[0] * (1 + getPointSkipBytes() / 4);
  loadBlock(words, {rowWords, sizes[1], 0, sizes[0], 0, sizes[1]});
}

}  // namespace peakbox
