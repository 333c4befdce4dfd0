#include "support/SpectrumWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace peakbox::test {

namespace {

constexpr std::size_t kHeaderSize = 2048;
constexpr float kUnused = 1e9f;

void appendReal(std::string& bytes, float value, bool swapped) {
  bytes.append(4, '\0');
  putReal(bytes, bytes.size() - 4, value, swapped);
}

}  // namespace

void putWord(std::string& bytes, std::size_t offset, std::uint32_t word, bool swapped) {
  char* place = bytes.data() + offset;
  std::memcpy(place, &word, sizeof word);
  if (swapped) std::reverse(place, place + sizeof word);
}

void putReal(std::string& bytes, std::size_t offset, float value, bool swapped) {
  putWord(bytes, offset, std::bit_cast<std::uint32_t>(value), swapped);
}

std::string writePipe(const Plane& plane) {
  const Axis& direct = plane.direct;
  const Axis& indirect = plane.indirect;
  std::string bytes(kHeaderSize, '\0');
  const auto put = [&](std::size_t word, float number) { putReal(bytes, 4 * word, number, plane.swapped); };
  const float flagSum = direct.quadFlag + indirect.quadFlag;
  const bool halved = direct.quadFlag == 0 && indirect.quadFlag == 0;
  put(9, 2);
  put(55, indirect.quadFlag);
  put(56, direct.quadFlag);
  put(99, static_cast<float>(direct.size));
  put(100, direct.sweepWidthHz);
  put(101, direct.lastPpm * direct.observeMHz);
  put(119, direct.observeMHz);
  put(218, indirect.observeMHz);
  put(219, static_cast<float>(indirect.size * (halved ? 2 : 1)));
  put(229, indirect.sweepWidthHz);
  put(249, indirect.lastPpm * indirect.observeMHz);

  const int unusedPerPoint = flagSum == 0 ? 3 : flagSum == 1 ? 1 : 0;
  for (int j = 0; j < indirect.size; ++j) {
    for (int i = 0; i < direct.size; ++i) appendReal(bytes, plane.value(i, j), plane.swapped);
    for (int k = 0; k < unusedPerPoint * direct.size; ++k) appendReal(bytes, kUnused, plane.swapped);
  }
  return bytes;
}

std::string writeView(const Plane& plane) {
  const Axis& direct = plane.direct;
  const Axis& indirect = plane.indirect;
  std::string bytes(kHeaderSize, '\0');
  putWord(bytes, 0, 0x3418abcd, plane.swapped);
  putWord(bytes, 24, 2, plane.swapped);
  std::size_t block = 1024;
  for (const Axis& axis : {direct, indirect}) {
    putWord(bytes, block, static_cast<std::uint32_t>(axis.size), plane.swapped);
    putWord(bytes, block + 4, static_cast<std::uint32_t>(axis.tile), plane.swapped);
    putReal(bytes, block + 24, axis.observeMHz, plane.swapped);
    putReal(bytes, block + 28, axis.sweepWidthHz, plane.swapped);
    putReal(bytes, block + 32, static_cast<float>(axis.size - 1), plane.swapped);
    putReal(bytes, block + 36, axis.lastPpm, plane.swapped);
    putWord(bytes, block + 40, 3, plane.swapped);
    bytes.replace(block + 52, 2, block == 1024 ? "1H" : "15");
    block += 128;
  }

  for (int tileJ = 0; tileJ < indirect.size; tileJ += indirect.tile) {
    for (int tileI = 0; tileI < direct.size; tileI += direct.tile) {
      for (int j = tileJ; j < tileJ + indirect.tile; ++j) {
        for (int i = tileI; i < tileI + direct.tile; ++i) {
          const bool padding = i >= direct.size || j >= indirect.size;
          appendReal(bytes, padding ? kUnused : plane.value(i, j), plane.swapped);
        }
      }
    }
  }
  return bytes;
}

}  // namespace peakbox::test
