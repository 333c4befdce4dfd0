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

using Place = std::array<std::uint64_t, 3>;

/// Goes through all places from `first` to before `end`, until `visit` returns false; returns what it did last.
template <typename Visit>
bool visitAll(const Place& first, const Place& end, const Visit& visit) {
  Place place = first;
  for (place[0] = first[0]; place[0] < end[0]; ++place[0]) {
    for (place[1] = first[1]; place[1] < end[1]; ++place[1]) {
      for (place[2] = first[2]; place[2] < end[2]; ++place[2]) {
        if (!visit(place)) return false;
      }
    }
  }
  return true;
}

}  // namespace

bool readPlane(const Layout& layout, std::uint64_t k, std::vector<std::uint32_t>& points) {
  const Place& sizes = layout.sizes;
  const Place& tiles = layout.tiles;
  const std::uint64_t width = sizes[layout.direct];
  points.resize(width * sizes[layout.indirect]);

  // What the plane has of each axis: all of it, or one point.
  Place first{};
  Place end = sizes;
  first[layout.stacked] = k;
  end[layout.stacked] = k + 1;
  Place firstTile{};
  Place endTile{};
  Place tileCount{};
  for (const std::size_t n : {0U, 1U, 2U}) {
    firstTile[n] = first[n] / tiles[n];
    endTile[n] = (end[n] + tiles[n] - 1) / tiles[n];
    tileCount[n] = (sizes[n] + tiles[n] - 1) / tiles[n];
  }

  LineReader reader(layout);
  const auto readTile = [&](const Place& tile) {
    const std::uint64_t number = (tile[0] * tileCount[1] + tile[1]) * tileCount[2] + tile[2];
    const std::uint64_t lineStart = tile[2] * tiles[2];
    const std::uint64_t lineSize = std::min(tiles[2], sizes[2] - lineStart);
    Place from{};
    Place to{};
    for (const std::size_t n : {0U, 1U, 2U}) {
      from[n] = std::max(first[n], tile[n] * tiles[n]);
      to[n] = std::min(end[n], (tile[n] + 1) * tiles[n]);
    }
    // By lines of the tile, of which all is read also where only one point is wanted: that is faster than seeking.
    return visitAll(from, {to[0], to[1], from[2] + 1}, [&](Place place) {
      const std::uint64_t line = (number * tiles[0] + place[0] % tiles[0]) * tiles[1] + place[1] % tiles[1];
      const char* const words = reader.read(line * tiles[2], lineSize);
      for (; words != nullptr && place[2] < to[2]; ++place[2]) {
        points[place[layout.indirect] * width + place[layout.direct]] =
            takeWord(words + (place[2] - lineStart) * reader.wordSize, layout);
      }
      return words != nullptr;
    });
  };
  return visitAll(firstTile, endTile, readTile);
}

}  // namespace peakbox::planes
