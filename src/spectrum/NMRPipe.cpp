#include <cmath>

#include "base/Messages.h"
#include "spectrum/Spectrum.h"

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
  refuseNegativeSizes();
}

// The format does not record its byte order. A header that makes no sense as it stands is taken for a swapped one, and
// what is wrong with it if it is not shows in the checks that follow; one that makes sense both ways ends the run.
void Spectrum::detectPipeByteOrder(const FileHeader& header) {
  if (!isPlausible(header, false)) {
    setByteSwapped();
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

std::int64_t Spectrum::pointSkipBytes() const {
  const std::int64_t flagSum = std::int64_t{quadFlags[0]} + quadFlags[1];
  return flagSum == 0 ? 12 : flagSum == 1 ? 4 : 0;
}

std::int64_t Spectrum::getRowWords() const { return sizes[0] * (1 + pointSkipBytes() / 4); }

void Spectrum::loadPipeData(std::istream& stream) {
  // A row with its unused values is a tile, at least as wide as the plane.
  const TileShape row{.width = getRowWords(), .height = 1};
  const std::uint64_t found = loadTiles(stream, row);
  if (found == countDataWords()) return;

  // The end is noticed one value after the first that is missing, or at the start of the next row when that value is
  // the last of its row or only unused values are missing.
  const auto rowWords = static_cast<std::uint64_t>(getRowWords());
  const auto size1 = static_cast<std::uint64_t>(sizes[0]);
  std::uint64_t rowIndex = found / rowWords;
  std::uint64_t point = found % rowWords + 1;
  if (point >= size1) {
    point = 0;
    ++rowIndex;
  }
  if (rowIndex < static_cast<std::uint64_t>(sizes[1])) {
    fail("Error reading file @ point (" + std::to_string(point) + "," + std::to_string(rowIndex) + "\n");
  }
  // After the last row nothing notices it: the plane's last value, if it is missing, counts as 0.
  if (found % rowWords < size1) data[sizes[0] - 1][sizes[1] - 1] = 0.0;
}

}  // namespace peakbox
