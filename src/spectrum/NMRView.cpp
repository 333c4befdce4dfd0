#include <algorithm>

#include "driver/Messages.h"
#include "spectrum/Spectrum.h"
#include "spectrum/WordReader.h"

namespace peakbox {

namespace {

constexpr std::int32_t kPpmUnit = 3;
constexpr std::size_t kLabelLength = 16;

/// Byte offsets in the file.
constexpr std::size_t kMagic = 0;
constexpr std::size_t kDimensionCount = 24;
constexpr std::size_t kAxisBlocks[] = {1024, 1152};

/// Byte offsets in an axis block.
constexpr std::size_t kSize = 0;
constexpr std::size_t kBlockSize = 4;
constexpr std::size_t kObserveMHz = 24;
constexpr std::size_t kSweepWidthHz = 28;
constexpr std::size_t kReferencePoint = 32;
constexpr std::size_t kReferencePpm = 36;
constexpr std::size_t kUnit = 40;
constexpr std::size_t kLabel = 52;

}  // namespace

void Spectrum::readViewHeader(std::istream& stream) {
  formatCode = SpectrumFormat::NMRView;
  const FileHeader header(stream);
  byteSwapped = false;
  if (header.getWord(kMagic, true) == kViewMagic) noteByteSwap();
  if (header.getInteger(kDimensionCount, byteSwapped) != 2) fail("ERROR: Spectrum is not two dimentional.\n");
  for (const std::size_t axis : kAxisBlocks) {
    if (header.getInteger(axis + kUnit, byteSwapped) != kPpmUnit) fail("ERROR: Unknown unit.\n");
  }
  parseViewHeader(header);
  checkSizes();
  for (std::size_t d = 0; d < 2; ++d) {
    if (blockSizes[d] < 1) {
      fail("ERROR: Dimension " + std::to_string(d + 1) + " has an invalid tile size (" + std::to_string(blockSizes[d]) +
           ").\n");
    }
  }
}

void Spectrum::parseViewHeader(const FileHeader& header) {
  labels.resize(2);
  blockSizes.resize(2);
  for (std::size_t d = 0; d < 2; ++d) {
    const std::size_t axis = kAxisBlocks[d];
    const auto real = [&](std::size_t offset) { return double{header.getReal(axis + offset, byteSwapped)}; };

    sizes[d] = header.getInteger(axis + kSize, byteSwapped);
    observeMHz[d] = real(kObserveMHz);
    blockSizes[d] = header.getInteger(axis + kBlockSize, byteSwapped);
    hzPerPoint[d] = real(kSweepWidthHz) / sizes[d];
    originPpm[d] = real(kReferencePpm) + (real(kReferencePoint) + 1.0) * hzPerPoint[d] / observeMHz[d];
    labels[d] = header.getText(axis + kLabel, kLabelLength);
  }
}

std::int64_t Spectrum::getTileCount(int dim) const {
  const std::int64_t tileSize = blockSizes[index(dim)];
  return (sizes[index(dim)] + tileSize - 1) / tileSize;
}

void Spectrum::checkViewLength(std::uint64_t bytes) const {
  // Each factor is below 2^32, so their product cannot overflow; the product in bytes could.
  const auto padded1 = static_cast<std::uint64_t>(getTileCount(0) * blockSizes[0]);
  const auto padded2 = static_cast<std::uint64_t>(getTileCount(1) * blockSizes[1]);
  if (bytes / 4 < padded1 * padded2) fail("Error reading file\n");
}

void Spectrum::loadViewData(WordReader& words) {
  // Tiles come with the tile number of dimension 1 running fastest, and so do the values inside a tile. The last tiles
  // are padded to their full size.
  const std::int64_t tile1 = blockSizes[0];
  const std::int64_t tile2 = blockSizes[1];
  for (std::int64_t j = 0; j < sizes[1]; j += tile2) {
    for (std::int64_t i = 0; i < sizes[0]; i += tile1) {
      loadBlock(words, {tile1, tile2, i, std::min(tile1, sizes[0] - i), j, std::min(tile2, sizes[1] - j)});
    }
  }
}

}  // namespace peakbox
