#include "base/Messages.h"
#include "spectrum/Spectrum.h"

namespace peakbox {

namespace {

/// The first word, in the machine's byte order.
constexpr std::uint32_t kMagicNumber = 0x3418abcd;
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

bool Spectrum::isViewMagic(std::uint32_t firstWord) {
  return firstWord == kMagicNumber || reverseBytes(firstWord) == kMagicNumber;
}

void Spectrum::readViewHeader(std::istream& stream) {
  formatCode = SpectrumFormat::NMRView;
  const FileHeader header(stream);
  byteSwapped = false;
  if (header.getWord(kMagic, true) == kMagicNumber) setByteSwapped();
  if (header.getInteger(kDimensionCount, byteSwapped) != 2) fail("ERROR: Spectrum is not two dimentional.\n");
  for (const std::size_t axis : kAxisBlocks) {
    if (header.getInteger(axis + kUnit, byteSwapped) != kPpmUnit) fail("ERROR: Unknown unit.\n");
  }
  parseViewHeader(header);
  refuseNegativeSizes();
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

    axes.sizes[d] = header.getInteger(axis + kSize, byteSwapped);
    axes.observeMHz[d] = real(kObserveMHz);
    blockSizes[d] = header.getInteger(axis + kBlockSize, byteSwapped);
    axes.hzPerPoint[d] = real(kSweepWidthHz) / axes.sizes[d];
    axes.originPpm[d] = real(kReferencePpm) + (real(kReferencePoint) + 1.0) * axes.hzPerPoint[d] / axes.observeMHz[d];
    labels[d] = header.getText(axis + kLabel, kLabelLength);
  }
}

std::uint64_t Spectrum::getPaddedSize(int dim) const {
  const std::int64_t tileSize = blockSizes[index(dim)];
  return static_cast<std::uint64_t>((axes.sizes[index(dim)] + tileSize - 1) / tileSize * tileSize);
}

void Spectrum::loadViewData(std::istream& stream) {
  if (loadTiles(stream, {.width = blockSizes[0], .height = blockSizes[1]}) < countDataWords())
    fail("Error reading file\n");
}

}  // namespace peakbox
