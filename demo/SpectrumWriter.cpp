#include "demo/SpectrumWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace peakbox::demo {

namespace {

void appendValue(std::string& bytes, const Plane& plane, int i, int j) {
  const bool isInside = i < plane.direct.size && j < plane.indirect.size;
  bytes.append(4, '\0');
  putReal(bytes, bytes.size() - 4, isInside ? plane.value(i, j) : plane.unused, plane.swapped);
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
  const float flagSum = direct.quadFlag + indirect.quadFlag;
  const int valuesPerPoint = flagSum == 0 ? 4 : flagSum == 1 ? 2 : 1;
  const int rowsPerPoint = direct.quadFlag == 0 && indirect.quadFlag == 0 ? 2 : 1;
  const std::pair<std::size_t, float> words[] = {{2, 2.345f},
                                                 {9, 2.0f},
                                                 {24, 2.0f},
                                                 {25, 1.0f},
                                                 {26, 3.0f},
                                                 {27, 4.0f},
                                                 {55, indirect.quadFlag},
                                                 {56, direct.quadFlag},
                                                 {99, static_cast<float>(direct.size)},
                                                 {100, direct.sweepWidthHz},
                                                 {101, direct.lastPpm * direct.observeMHz},
                                                 {119, direct.observeMHz},
                                                 {218, indirect.observeMHz},
                                                 {219, static_cast<float>(indirect.size * rowsPerPoint)},
                                                 {220, 1.0f},
                                                 {222, 1.0f},
                                                 {229, indirect.sweepWidthHz},
                                                 {249, indirect.lastPpm * indirect.observeMHz}};
  std::string bytes(2048, '\0');
  for (const auto& [word, number] : words) putReal(bytes, 4 * word, number, plane.swapped);
  bytes.replace(64, direct.name.size(), direct.name);
  bytes.replace(72, indirect.name.size(), indirect.name);
  for (int j = 0; j < indirect.size; ++j) {
    for (int i = 0; i < direct.size * valuesPerPoint; ++i) appendValue(bytes, plane, i, j);
  }
  return bytes;
}

std::string writeView(const Plane& plane) {
  const Axis& direct = plane.direct;
  const Axis& indirect = plane.indirect;
  std::string bytes(2048, '\0');
  putWord(bytes, 0, 0x3418abcd, plane.swapped);
  putWord(bytes, 24, 2, plane.swapped);
  for (const Axis* axis : {&direct, &indirect}) {
    const std::size_t block = axis == &direct ? 1024 : 1152;
    putWord(bytes, block, static_cast<std::uint32_t>(axis->size), plane.swapped);
    putWord(bytes, block + 4, static_cast<std::uint32_t>(axis->tile), plane.swapped);
    putReal(bytes, block + 24, axis->observeMHz, plane.swapped);
    putReal(bytes, block + 28, axis->sweepWidthHz, plane.swapped);
    putReal(bytes, block + 32, static_cast<float>(axis->size - 1), plane.swapped);
    putReal(bytes, block + 36, axis->lastPpm, plane.swapped);
    putWord(bytes, block + 40, 3, plane.swapped);
    bytes.replace(block + 52, axis->name.size(), axis->name);
  }
  const int tileSize = direct.tile * indirect.tile;
  for (int j = 0; j < indirect.size; j += indirect.tile) {
    for (int i = 0; i < direct.size; i += direct.tile) {
      for (int k = 0; k < tileSize; ++k) appendValue(bytes, plane, i + k % direct.tile, j + k / direct.tile);
    }
  }
  return bytes;
}

}  // namespace peakbox::demo
