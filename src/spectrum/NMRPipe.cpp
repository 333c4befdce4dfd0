#include <cmath>
#include <optional>
#include <string>

#include "base/Messages.h"
#include "spectrum/PipeWords.h"
#include "spectrum/Spectrum.h"

namespace peakbox {

namespace {

constexpr pipe::AxisWords kWords1 = pipe::getAxisWords(pipe::kDirect);
constexpr pipe::AxisWords kWords2 = pipe::getAxisWords(pipe::kIndirect);

/// Whether size and frequency of dimension 1 make sense in the given byte order. A frequency that is NaN is neither too
/// low nor too high, and so counts as sensible.
bool isPlausible(const FileHeader& header, bool byteSwapped) {
  const std::int32_t size = header.getTruncated(pipe::kSize[0], byteSwapped);
  const float frequency = std::fabs(header.getReal(kWords1.observeMHz, byteSwapped));
  return size >= 1 && size <= 100000 && !(frequency < 1.0f) && !(frequency > 5000.0f);
}

}  // namespace

std::optional<bool> pipe::findByteOrder(const FileHeader& header) {
  if (!isPlausible(header, false)) return true;
  if (!isPlausible(header, true)) return false;
  return std::nullopt;
}

std::string Spectrum::describeOrder() const {
  if (formatCode != SpectrumFormat::NMRPipe) return "";
  const bool isDirectFirst = axisNumbers[0] == 0 || axisNumbers[0] == pipe::kDirect;
  if (isTransposed == isDirectFirst) {
    return "its header contradicts itself on whether it is transposed, so that nobody can tell which axis is the "
           "direct "
           "dimension; process it again";
  }
  if (isTransposed) {
    return "transposed: the rows are not the direct dimension, so that all peaks would be looked for in wrong places; "
           "peakbox-planes turns it over";
  }
  if (axisNumbers[1] == 0 || axisNumbers[1] == pipe::kIndirect) return "";
  return "the second axis is number " + std::to_string(axisNumbers[1]) +
         " of its experiment, and peakbox reads number " + std::to_string(pipe::kIndirect) +
         "; peakbox-planes makes it so";
}

void Spectrum::readPipeHeader(std::istream& stream) {
  formatCode = SpectrumFormat::NMRPipe;
  const FileHeader header(stream);
  detectPipeByteOrder(header);
  if (header.getTruncated(pipe::kDimensionCount, byteSwapped) != 2) fail("ERROR: Spectrum is not two dimentional.\n");
  parsePipeHeader(header);
  refuseNegativeSizes();
}

// A header that makes no sense either way is taken for a swapped one, and what is wrong with it shows in the checks
// that follow.
void Spectrum::detectPipeByteOrder(const FileHeader& header) {
  const std::optional<bool> isSwapped = pipe::findByteOrder(header);
  if (!isSwapped) fail("ERROR: Unkonwn file format.\n");
  byteSwapped = false;
  if (*isSwapped) setByteSwapped();
}

void Spectrum::parsePipeHeader(const FileHeader& header) {
  const auto real = [&](std::size_t offset) { return double{header.getReal(offset, byteSwapped)}; };
  const auto integer = [&](std::size_t offset) { return header.getTruncated(offset, byteSwapped); };

  isTransposed = integer(pipe::kTransposed) == 1;
  axisNumbers = {integer(pipe::kOrder[0]), integer(pipe::kOrder[1])};
  quadFlags = {integer(kWords1.quadFlag), integer(kWords2.quadFlag)};
  axes.sizes = {integer(pipe::kSize[0]), integer(pipe::kSize[1])};
  // With both dimensions complex, half of the rows are imaginary.
  if (quadFlags[0] == 0 && quadFlags[1] == 0) axes.sizes[1] /= 2;

  axes.observeMHz = {real(kWords1.observeMHz), real(kWords2.observeMHz)};
  axes.hzPerPoint = {real(kWords1.sweepWidthHz) / axes.sizes[0], real(kWords2.sweepWidthHz) / axes.sizes[1]};
  axes.originPpm = {(real(kWords1.sweepWidthHz) + real(kWords1.originHz)) / axes.observeMHz[0],
                    (real(kWords2.sweepWidthHz) + real(kWords2.originHz)) / axes.observeMHz[1]};
}

std::int64_t Spectrum::pointSkipBytes() const {
  const std::int64_t flagSum = std::int64_t{quadFlags[0]} + quadFlags[1];
  return flagSum == 0 ? 12 : flagSum == 1 ? 4 : 0;
}

std::int64_t Spectrum::getRowWords() const { return axes.sizes[0] * (1 + pointSkipBytes() / 4); }

void Spectrum::loadPipeData(std::istream& stream) {
  // A row with its unused values is a tile, at least as wide as the plane.
  const TileShape row{.width = getRowWords(), .height = 1};
  const std::uint64_t found = loadTiles(stream, row);
  if (found == countDataWords()) return;

  // The end is noticed one value after the first that is missing, or at the start of the next row when that value is
  // the last of its row or only unused values are missing.
  const auto rowWords = static_cast<std::uint64_t>(getRowWords());
  const auto size1 = static_cast<std::uint64_t>(axes.sizes[0]);
  std::uint64_t rowIndex = found / rowWords;
  std::uint64_t point = found % rowWords + 1;
  if (point >= size1) {
    point = 0;
    ++rowIndex;
  }
  if (rowIndex < static_cast<std::uint64_t>(axes.sizes[1])) {
    fail("Error reading file @ point (" + std::to_string(point) + "," + std::to_string(rowIndex) + "\n");
  }
  // After the last row nothing notices it: the plane's last value, if it is missing, counts as 0.
  if (found % rowWords < size1) data[axes.sizes[0] - 1][axes.sizes[1] - 1] = 0.0;
}

}  // namespace peakbox
