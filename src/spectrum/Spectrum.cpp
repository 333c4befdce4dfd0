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
  std::array<std::uint32_t, 1 << 14> buffer;
  std::span<const std::uint32_t> rest;
};

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
    return static_cast<std::uint64_t>(getRowWords()) * static_cast<std::uint64_t>(sizes[1]);
  }
  return getPaddedSize(0) * getPaddedSize(1);
}

std::uint64_t Spectrum::loadTiles(std::istream& stream, std::int64_t width, std::int64_t height) {
  if (sizes[0] == 0) return 0;  // However many rows there are, they take no time.

  WordSource source(stream);
  std::uint64_t found = 0;
  for (std::int64_t j0 = 0; j0 < sizes[1]; j0 += height) {
    for (std::int64_t i0 = 0; i0 < sizes[0]; i0 += width) {
      for (std::int64_t j = j0; j < j0 + height; ++j) {
        for (std::int64_t i = i0; i < i0 + width;) {
          const std::span<const std::uint32_t> words = source.take(i0 + width - i);
          if (words.empty()) return found;
          if (i < sizes[0] && j < sizes[1]) placeWords(words, i, j);
          found += words.size();
          i += static_cast<std::int64_t>(words.size());
        }
      }
    }
  }
  return found;
}

void Spectrum::placeWords(std::span<const std::uint32_t> words, std::int64_t i, std::int64_t j) {
  const auto count = std::min(static_cast<std::int64_t>(words.size()), sizes[0] - i);
  double* place = &data[i][j];
  for (std::int64_t k = 0; k < count; ++k) {
    const std::uint32_t word = words[static_cast<std::size_t>(k)];
    place[k] = std::bit_cast<float>(byteSwapped ? reverseBytes(word) : word);
  }
}

void Spectrum::allocateData() {
  if (!data.resize(sizes[0], sizes[1])) {
    fail("ERROR: Not enough memory for a data plane of " + std::to_string(sizes[0]) + " x " + std::to_string(sizes[1]) +
         " points.\n");
  }
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
  if (sizes[0] == data.getSize1() && sizes[1] == data.getSize2()) return;
  fail("ERROR: Spectrum " + path + " has " + std::to_string(sizes[0]) + " x " + std::to_string(sizes[1]) +
       " points, the first has " + std::to_string(data.getSize1()) + " x " + std::to_string(data.getSize2()) + ".\n");
}

std::ostream& Spectrum::printDimensions(std::ostream& stream) const {
  const bool labelled = formatCode == SpectrumFormat::NMRView;
  stream << (labelled ? "Dim\t\tNuc\t\tSize\t\tObs\t\t1pt\n" : "Dim\t\tSize\t\tObs\t\t1pt\n");
  for (std::size_t d = 0; d < 2; ++d) {
    stream << d + 1 << "\t\t";
    if (labelled) stream << labels[d] << "\t\t";
    stream << sizes[d] << "pt\t\t" << observeMHz[d] << "MHz\t" << hzPerPoint[d] << "Hz\n";
  }
  return stream << "\n";
}

}  // namespace peakbox
