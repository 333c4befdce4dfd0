#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>

#include "planes/Layout.h"
#include "spectrum/FileHeader.h"

namespace peakbox::planes {

namespace {

constexpr bool kIsBigMachine = std::endian::native == std::endian::big;

/// A word of the file as a little-endian float; bits of one that is a float already are kept.
std::uint32_t takeWord(const char* bytes, const Layout& layout) {
  const bool isSwapped = layout.isBigEndian != kIsBigMachine;
  std::uint32_t word = 0;
  if (layout.word == Word::Double) {
    char ordered[8];
    std::memcpy(ordered, bytes, 8);
    if (isSwapped) std::reverse(ordered, ordered + 8);
    double value = 0;
    std::memcpy(&value, ordered, 8);
    word = std::bit_cast<std::uint32_t>(static_cast<float>(value));
  } else {
    std::memcpy(&word, bytes, 4);
    if (isSwapped) word = reverseBytes(word);
    if (layout.word == Word::Integer) {
      const double value = std::ldexp(std::bit_cast<std::int32_t>(word), layout.exponent);
      word = std::bit_cast<std::uint32_t>(static_cast<float>(value));
    }
  }
  return kIsBigMachine ? reverseBytes(word) : word;
}

/// Reads the lines of tiles that hold points of one plane, one after the other.
class LineReader {
  const Layout& layout;

 public:
  explicit LineReader(const Layout& read) : layout(read), stream(read.path, std::ios::binary) {}

  /// The words of a line of a tile; null where the file is cut.
  const char* read(std::uint64_t word, std::uint64_t count) {
    const std::uint64_t place = layout.start + word * wordSize;
    if (place != position) stream.seekg(static_cast<std::streamoff>(place));
    bytes.resize(count * wordSize);
    if (!stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return nullptr;
    position = place + bytes.size();
    return bytes.data();
  }

  const std::uint64_t wordSize = layout.word == Word::Double ? 8 : 4;

 private:
  std::ifstream stream;
  std::uint64_t position = 0;
  std::vector<char> bytes;
};

}  // namespace

bool readPlane(const Layout& layout, std::uint64_t k, std::vector<std::uint32_t>& points) {
  using Place = std::array<std::uint64_t, 3>;
  const Place& sizes = layout.sizes;
  const Place& tiles = layout.tiles;
  const std::uint64_t width = sizes[layout.direct];
  points.resize(width * sizes[layout.indirect]);
  LineReader reader(layout);

  // What the plane has of each axis: all of it, or one point.
  Place first{};
  Place end = sizes;
  first[layout.stacked] = k;
  end[layout.stacked] = k + 1;
  const auto countTiles = [&](std::size_t n) { return (sizes[n] + tiles[n] - 1) / tiles[n]; };
  const auto putLine = [&](const Place& tile, std::uint64_t i, std::uint64_t j) {
    const std::uint64_t start = tile[2] * tiles[2];
    const std::uint64_t tileNumber = (tile[0] * countTiles(1) + tile[1]) * countTiles(2) + tile[2];
    const std::uint64_t line = tileNumber * tiles[0] * tiles[1] + i % tiles[0] * tiles[1] + j % tiles[1];
    const char* const words = reader.read(line * tiles[2], std::min(tiles[2], sizes[2] - start));
    if (words == nullptr) return false;
    Place place{i, j, std::max(start, first[2])};
    for (; place[2] < std::min(start + tiles[2], end[2]); ++place[2]) {
      points[place[layout.indirect] * width + place[layout.direct]] =
          takeWord(words + (place[2] - start) * reader.wordSize, layout);
    }
    return true;
  };
  Place tile{};
  const auto lastOf = [&](std::size_t n) { return std::min(end[n], (tile[n] + 1) * tiles[n]); };
  const auto firstOf = [&](std::size_t n) { return std::max(first[n], tile[n] * tiles[n]); };
  for (tile[0] = first[0] / tiles[0]; tile[0] * tiles[0] < end[0]; ++tile[0]) {
    for (tile[1] = first[1] / tiles[1]; tile[1] * tiles[1] < end[1]; ++tile[1]) {
      for (tile[2] = first[2] / tiles[2]; tile[2] * tiles[2] < end[2]; ++tile[2]) {
        for (std::uint64_t i = firstOf(0); i < lastOf(0); ++i) {
          for (std::uint64_t j = firstOf(1); j < lastOf(1); ++j) {
            if (!putLine(tile, i, j)) return false;
          }
        }
      }
    }
  }
  return true;
}

}  // namespace peakbox::planes
