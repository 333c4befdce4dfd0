#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>

#include "driver/Messages.h"
#include "spectrum/Spectrum.h"
#include "spectrum/WordReader.h"
#include "spectrum/Words.h"

namespace peakbox {

void Spectrum::readHeader(const char* path, bool verbose) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open()) fail("ERROR: Unable to open '" + std::string(path) + "'\n");
  char firstBytes[4];
  if (!stream.read(firstBytes, sizeof firstBytes)) fail("Unable to read " + std::string(path) + "\n");
  stream.seekg(0);

  std::uint32_t magic;
  std::memcpy(&magic, firstBytes, sizeof magic);
  if (magic == kViewMagic || reverseBytes(magic) == kViewMagic) {
    readViewHeader(stream);
    if (verbose) std::cout << "NMRView format\n";
  } else if (magic == 0) {
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
  checkSameSizes(path);
  // A file that is too short is found out before the plane is touched: filling even a part of the plane can take far
  // more memory than the file has bytes.
  checkDataLength(countBytesAhead(stream));

  WordReader words(stream);
  isPipe ? loadPipeData(words) : loadViewData(words);
}

void Spectrum::checkSameSizes(const std::string& path) const {
  if (sizes[0] == data.getSize1() && sizes[1] == data.getSize2()) return;
  fail("ERROR: Spectrum " + path + " has " + std::to_string(sizes[0]) + " x " + std::to_string(sizes[1]) +
       " points, the first has " + std::to_string(data.getSize1()) + " x " + std::to_string(data.getSize2()) + ".\n");
}

void Spectrum::checkDataLength(std::uint64_t bytes) const {
  formatCode == SpectrumFormat::NMRPipe ? checkPipeLength(bytes) : checkViewLength(bytes);
}

void Spectrum::loadBlock(WordReader& words, const FileBlock& block) {
  // Rows are taken as many at a time as the buffer holds; a row that is longer than the buffer comes in pieces.
  constexpr std::int64_t kCapacity = WordReader::kCapacity;
  const std::int64_t pieceWidth = std::min(block.rowWords, kCapacity);
  const std::int64_t pieceHeight = kCapacity / pieceWidth;

  for (std::int64_t y = 0; y < block.rowCount; y += pieceHeight) {
    const std::int64_t rows = std::min(pieceHeight, block.rowCount - y);
    for (std::int64_t x = 0; x < block.rowWords; x += pieceWidth) {
      const std::int64_t columns = std::min(pieceWidth, block.rowWords - x);
      const std::uint32_t* piece = words.take(static_cast<std::size_t>(rows * columns));
      if (words.endedEarly()) checkDataLength(words.getBytesFound());
      const std::int64_t width = std::clamp<std::int64_t>(block.width - x, 0, columns);
      const std::int64_t height = std::clamp<std::int64_t>(block.height - y, 0, rows);
      data.placeRows({piece, columns, width, height}, byteSwapped, block.i0 + x, block.j0 + y);
    }
  }
}

}  // namespace peakbox
