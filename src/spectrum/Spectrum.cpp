#include "spectrum/Spectrum.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <fstream>
#include <iostream>
#include <span>

#include "base/Messages.h"

namespace peakbox {

namespace {

/// The words of a data section as they stand in the file.
class WordSource {
 public:
  explicit WordSource(std::istream& source) : stream(source) {}

  /// The next words, as many as are in hand but at most `most`; none at the end of the section.
  std::span<const std::uint32_t> take(std::int64_t most) {
    if (rest.empty()) refill();
    const auto taken = rest.first(std::min(rest.size(), static_cast<std::size_t>(most)));
    rest = rest.subspan(taken.size());
    return taken;
  }

 private:
  void refill() {
    stream.read(reinterpret_cast<char*>(buffer.data()), sizeof buffer);
    rest = std::span(buffer).first(static_cast<std::size_t>(stream.gcount()) / sizeof(std::uint32_t));
  }

  std::istream& stream;
  std::array<std::uint32_t, 1 << 17> buffer;  // With half of it, an NMRView plane takes an eighth longer.
  std::span<const std::uint32_t> rest;
};

// With AVX2, which not every x86-64 processor has, a run on NMRPipe planes in the other byte order is a fifth shorter.
// Clang (19) leaves functions that only the clones call undefined.
#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GNUC__) && !defined(__clang__)
__attribute__((target_clones("avx2", "default")))
#endif
void widenWords(std::span<const std::uint32_t> words, bool byteSwapped, double* place) {
  for (const std::uint32_t word : words) *place++ = std::bit_cast<float>(byteSwapped ? reverseBytes(word) : word);
}

}  // namespace

void Spectrum::readHeader(const char* path, bool verbose) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open()) fail("ERROR: Unable to open '" + std::string(path) + "'\n");
  char firstBytes[4];
  if (!stream.read(firstBytes, sizeof firstBytes)) fail("Unable to read " + std::string(path) + "\n");
  stream.seekg(0);

  std::uint32_t firstWord;
  std::memcpy(&firstWord, firstBytes, sizeof firstWord);
  if (isViewMagic(firstWord)) {
    readViewHeader(stream);
    if (verbose) std::cout << "NMRView format\n";
  } else if (firstWord == 0) {
    readPipeHeader(stream);
    if (verbose) std::cout << "NMRPipe format\n";
  } else {
    fail("unrecognized format\n");
  }
  stream.close();

  allocateData();
  if (verbose) printDimensions(std::cerr);
}

void Spectrum::loadData(const char* path, bool verbose) {
  if (verbose) std::cout << "Spectrum = " << path << "\n";
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open()) fail("Unable to open datafile " + std::string(path) + "\n");

  const bool isPipe = formatCode == SpectrumFormat::NMRPipe;
  isPipe ? readPipeHeader(stream) : readViewHeader(stream);
  refuseOtherSizes(path);
  isPipe ? loadPipeData(stream) : loadViewData(stream);
}

std::uint64_t Spectrum::countDataWords() const {
  // Every factor is below 2^32, or one is below 2^33 and the other below 2^31: the products cannot overflow.
  if (formatCode == SpectrumFormat::NMRPipe) {
    return static_cast<std::uint64_t>(getRowWords()) * static_cast<std::uint64_t>(axes.sizes[1]);
  }
  return getPaddedSize(0) * getPaddedSize(1);
}

std::uint64_t Spectrum::loadTiles(std::istream& stream, const TileShape& tile) {
  if (axes.sizes[0] == 0) return 0;  // However many rows there are, they take no time.

  const std::int64_t tilesAcross = (axes.sizes[0] + tile.width - 1) / tile.width;
  const std::int64_t bandWords = tilesAcross * tile.width * tile.height;
  WordSource source(stream);
  std::uint64_t found = 0;
  for (std::int64_t j0 = 0; j0 < axes.sizes[1]; j0 += tile.height) {
    for (std::int64_t start = 0; start < bandWords;) {
      const std::span<const std::uint32_t> words = source.take(bandWords - start);
      if (words.empty()) return found;
      placeWords(words, start, tile, j0);
      start += static_cast<std::int64_t>(words.size());
      found += words.size();
    }
  }
  return found;
}

void Spectrum::placeWords(std::span<const std::uint32_t> words, std::int64_t start, const TileShape& tile,
                          std::int64_t j0) {
  const std::int64_t end = start + static_cast<std::int64_t>(words.size());
  const std::int64_t tileWords = tile.width * tile.height;
  const std::int64_t firstTile = start / tileWords;
  const std::int64_t lastTile = (end - 1) / tileWords;
  const bool isOneTile = firstTile == lastTile;
  const std::int64_t firstRow = isOneTile ? start % tileWords / tile.width : 0;
  const std::int64_t lastRow = isOneTile ? (end - 1) % tileWords / tile.width : tile.height - 1;
  // Along the rows of the plane: written tile by tile, an NMRView plane takes a third longer.
  for (std::int64_t y = firstRow; y <= lastRow && j0 + y < axes.sizes[1]; ++y) {
    for (std::int64_t t = firstTile; t <= lastTile; ++t) {
      const std::int64_t rowStart = t * tileWords + y * tile.width;
      const std::int64_t from = std::max(start, rowStart);
      const std::int64_t i = t * tile.width + from - rowStart;
      const std::int64_t count = std::min(std::min(end, rowStart + tile.width) - from, axes.sizes[0] - i);
      if (count > 0)
        placeRun(words.subspan(static_cast<std::size_t>(from - start), static_cast<std::size_t>(count)), i, j0 + y);
    }
  }
}

void Spectrum::placeRun(std::span<const std::uint32_t> words, std::int64_t i, std::int64_t j) {
  widenWords(words, byteSwapped, &data[i][j]);  // dimension 1 runs fastest
}

void Spectrum::allocateData() {
  if (!data.resize(axes.sizes[0], axes.sizes[1])) {
    fail("ERROR: Not enough memory for a data plane of " + std::to_string(axes.sizes[0]) + " x " +
         std::to_string(axes.sizes[1]) + " points.\n");
  }
  // A row of tiles is filled here and there until it is whole: where it is very large, a short file could make far more
  // memory resident than it has bytes, and pages should be small.
  constexpr std::int64_t kMostPoints = 1 << 23;
  const std::int64_t tileHeight = formatCode == SpectrumFormat::NMRView ? blockSizes[1] : 1;
  data.advisePages(axes.sizes[0] * tileHeight <= kMostPoints);
}

void Spectrum::setByteSwapped() {
  byteSwapped = true;
  printMessage("Correcting data for apparent byte-swap.\n");
}

void Spectrum::refuseNegativeSizes() const {
  for (int dim = 0; dim < 2; ++dim) {
    if (getSize(dim) < 0) {
      fail("ERROR: Dimension " + std::to_string(dim + 1) + " has no data points (" + std::to_string(getSize(dim)) +
           ").\n");
    }
  }
}

void Spectrum::refuseOtherSizes(const std::string& path) const {
  if (axes.sizes[0] == data.getSize1() && axes.sizes[1] == data.getSize2()) return;
  fail("ERROR: Spectrum " + path + " has " + std::to_string(axes.sizes[0]) + " x " + std::to_string(axes.sizes[1]) +
       " points, the first has " + std::to_string(data.getSize1()) + " x " + std::to_string(data.getSize2()) + ".\n");
}

std::ostream& Spectrum::printDimensions(std::ostream& stream) const {
  const bool labelled = formatCode == SpectrumFormat::NMRView;
  stream << (labelled ? "Dim\t\tNuc\t\tSize\t\tObs\t\t1pt\n" : "Dim\t\tSize\t\tObs\t\t1pt\n");
  for (std::size_t d = 0; d < 2; ++d) {
    stream << d + 1 << "\t\t";
    if (labelled) stream << labels[d] << "\t\t";
    stream << axes.sizes[d] << "pt\t\t" << axes.observeMHz[d] << "MHz\t" << axes.hzPerPoint[d] << "Hz\n";
  }
  return stream << "\n";
}

}  // namespace peakbox
