#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "spectrum/DataPlane.h"
#include "spectrum/FileHeader.h"

namespace peakbox {

class WordReader;

enum class SpectrumFormat { None = 0, NMRPipe = 1, NMRView = 2 };

/// One two-dimensional spectrum: its axes and its data plane. Per-dimension values stand in the order direct dimension
/// (`dim` 0), indirect dimension (`dim` 1); messages number them 1 and 2. Points count from 0 and may be fractional;
/// for a positive sweep width the ppm axis falls as the point rises:
///     ppm = originPpm - (point + 1) * hzPerPoint / observeMHz.
/// A header with a zero frequency or sweep width makes conversions infinite or NaN. Every fault of a file ends the run
/// with status 1.
class Spectrum {
 public:
  /// Recognises the format of the run's first spectrum, reads its header and sizes the data plane, which stays all 0.
  /// When verbose, reports the format on standard output and the dimension table on standard error.
  void readHeader(const char* path, bool verbose);

  /// Reads one spectrum of the run, header and data, by the format of the first. Its sizes must be the first one's.
  void loadData(const char* path, bool verbose);

  /// Read the header at the stream's position, leaving the stream at the data section. A file in the other byte order
  /// gives a notice on standard error.
  void readPipeHeader(std::istream& stream);
  void readViewHeader(std::istream& stream);

  /// Sizes the data plane by the header read last; every value becomes 0.0.
  void allocateData();

  std::ostream& printDimensions(std::ostream& stream) const;

  int getSize(int dim) const { return sizes[index(dim)]; }
  const DataPlane& getData() const { return data; }

  /// Widths, in points; the sign is kept.
  double hzToPoints(double hz, int dim) const { return hz / hzPerPoint[index(dim)]; }
  double ppmWidthToPoints(double ppm, int dim) const { return ppm * observeMHz[index(dim)] / hzPerPoint[index(dim)]; }

  /// Positions.
  double pointToPpm(double point, int dim) const {
    return originPpm[index(dim)] - (1 + point) * hzPerPoint[index(dim)] / observeMHz[index(dim)];
  }
  double ppmToPoint(double ppm, int dim) const {
    return (originPpm[index(dim)] - ppm) * observeMHz[index(dim)] / hzPerPoint[index(dim)] - 1;
  }

 private:
  static std::size_t index(int dim) { return static_cast<std::size_t>(dim); }

  /// A rectangle of the plane as a file stores it: `rowCount` rows of `rowWords` words along dimension 1. The first
  /// `width` words of the first `height` rows belong to the plane, from point (i0, j0) on; the rest is passed over.
  struct FileBlock {
    std::int64_t rowWords, rowCount;
    std::int64_t i0, width;
    std::int64_t j0, height;
  };

  /// The first word of an NMRView file in the machine's byte order.
  static constexpr std::uint32_t kViewMagic = 0x3418abcd;

  void detectPipeByteOrder(const FileHeader& header);
  void parsePipeHeader(const FileHeader& header);
  void parseViewHeader(const FileHeader& header);
  void noteByteSwap();
  void checkSizes() const;
  void checkSameSizes(const std::string& path) const;

  // End the run when a data section of so many bytes is too short for the header read last.
  void checkDataLength(std::uint64_t bytes) const;
  void checkPipeLength(std::uint64_t bytes) const;
  void checkViewLength(std::uint64_t bytes) const;

  std::int64_t getPointSkipBytes() const;
  std::int64_t getTileCount(int dim) const;
  void loadPipeData(WordReader& words);
  void loadViewData(WordReader& words);
  void loadBlock(WordReader& words, const FileBlock& block);

  SpectrumFormat formatCode = SpectrumFormat::None;
  bool byteSwapped = false;
  std::vector<std::int32_t> sizes{0, 0};
  std::vector<double> observeMHz{0.0, 0.0};
  std::vector<double> hzPerPoint{0.0, 0.0};
  std::vector<double> originPpm{0.0, 0.0};
  std::vector<std::string> labels;
  std::vector<std::int32_t> blockSizes;
  std::vector<std::int32_t> quadFlags;
  DataPlane data;
};

}  // namespace peakbox
