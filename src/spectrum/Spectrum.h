#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "spectrum/Axes.h"
#include "spectrum/DataPlane.h"
#include "spectrum/FileHeader.h"

namespace peakbox {

enum class SpectrumFormat { None = 0, NMRPipe = 1, NMRView = 2 };

/// One two-dimensional spectrum: its axes and its data plane. Per-dimension values stand in the order direct dimension
/// (`dim` 0), indirect dimension (`dim` 1); messages number them 1 and 2. Every fault of a file ends the run with
/// status 1.
class Spectrum {
 public:
  /// Recognises the format of the run's first spectrum, reads its header and sizes the data plane, which stays all 0.
  /// When verbose, reports the format on standard output and the dimension table on standard error.
  void readHeader(const char* path, bool verbose);

  /// Reads one spectrum of the run, header and data, after `readHeader` has read the first one's: by the format of
  /// that, which is not recognised again, and with its sizes.
  void loadData(const char* path, bool verbose);

  /// Read the header at the stream's position, leaving the stream at the data section. A file in the other byte order
  /// gives a notice on standard error.
  void readPipeHeader(std::istream& stream);
  void readViewHeader(std::istream& stream);

  /// Sizes the data plane by the header read last; every value becomes 0.0.
  void allocateData();

  std::ostream& printDimensions(std::ostream& stream) const;

  SpectrumFormat getFormat() const { return formatCode; }
  bool isByteSwapped() const { return byteSwapped; }

  /// The axes by the header read last.
  const Axes& getAxes() const { return axes; }
  int getSize(int dim) const { return axes.sizes[index(dim)]; }
  double getObserveMHz(int dim) const { return axes.observeMHz[index(dim)]; }
  double hzToPoints(double hz, int dim) const { return axes.hzToPoints(hz, dim); }
  double ppmWidthToPoints(double ppm, int dim) const { return axes.ppmWidthToPoints(ppm, dim); }
  double pointToPpm(double point, int dim) const { return axes.pointToPpm(point, dim); }
  double ppmToPoint(double ppm, int dim) const { return axes.ppmToPoint(ppm, dim); }

  /// What is wrong with the order of the axes in the file, by the header read last: rows are taken for the direct
  /// dimension, and the other axis for number 1. Empty where nothing is wrong, where the header does not say, and for
  /// formats that have one order only.
  std::string describeOrder() const;

  /// Whether every point of a dimension has an imaginary value beside the real one, which is the one that is read.
  bool isComplex(int dim) const { return formatCode == SpectrumFormat::NMRPipe && quadFlags[index(dim)] == 0; }

  /// 4-byte words that a whole data section has by the header read last.
  std::uint64_t countDataWords() const;

  const DataPlane& getData() const { return data; }

 private:
  static std::size_t index(int dim) { return static_cast<std::size_t>(dim); }

  /// Whether a file that begins with this word, as the machine reads it, is an NMRView file.
  static bool isViewMagic(std::uint32_t firstWord);

  void detectPipeByteOrder(const FileHeader& header);
  void parsePipeHeader(const FileHeader& header);
  void parseViewHeader(const FileHeader& header);

  /// Sets `byteSwapped` and gives the notice.
  void setByteSwapped();

  /// End the run unless the header read last fits.
  void refuseNegativeSizes() const;
  void refuseOtherSizes(const std::string& path) const;

  /// Fill the plane from the data section at the stream's position.
  void loadPipeData(std::istream& stream);
  void loadViewData(std::istream& stream);

  /// Words of a tile along dimension 1 and along dimension 2.
  struct TileShape {
    std::int64_t width;
    std::int64_t height;
  };

  /// Fills the plane from tiles, in which and from one to the next dimension 1 runs fastest; what they hold beyond the
  /// plane is passed over. Returns the number of words found, fewer than all tiles have when the section ends early.
  std::uint64_t loadTiles(std::istream& stream, const TileShape& tile);

  /// Places words that begin `start` words into the row of tiles from point `j0` of dimension 2 on.
  void placeWords(std::span<const std::uint32_t> words, std::int64_t start, const TileShape& tile, std::int64_t j0);

  /// Places words of a row of the plane from point (i, j) on.
  void placeRun(std::span<const std::uint32_t> words, std::int64_t i, std::int64_t j);

  /// NMRPipe: words of a row with the values that are not used.
  std::int64_t getRowWords() const;

  /// NMRPipe: bytes for each point of a row that follow the row's values and are not used.
  std::int64_t pointSkipBytes() const;

  /// NMRView: points of a dimension with the padding of its last tile.
  std::uint64_t getPaddedSize(int dim) const;

  SpectrumFormat formatCode = SpectrumFormat::None;
  bool byteSwapped = false;
  Axes axes;
  std::vector<std::string> labels;
  std::vector<std::int32_t> blockSizes;
  std::vector<std::int32_t> quadFlags;
  /// NMRPipe: whether the rows are said to be the indirect dimension, and the numbers of the first two axes.
  bool isTransposed = false;
  std::array<std::int32_t, 2> axisNumbers{};
  DataPlane data;
};

}  // namespace peakbox
