#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace peakbox::demo {

/// One axis of a file to be written. Its last point lies at `lastPpm`, the first one sweep width less a point above.
struct Axis {
  std::int32_t size;
  float observeMHz;
  float sweepWidthHz;
  float lastPpm = 0;
  std::int32_t tile = 1;
  float quadFlag = 1;
  std::string name = {};  // at most 8 bytes
};

/// A spectrum to be written; `value(i, j)` is point i of the direct and j of the indirect dimension, from 0.
struct Plane {
  Axis direct;
  Axis indirect;
  std::function<float(int i, int j)> value;
  bool swapped = false;
  float unused = 1e9f;  // stands in padding and for what complex data have besides the real values
};

/// The bytes of a whole NMRPipe file.
std::string writePipe(const Plane& plane);

/// The bytes of a whole NMRView file in the axes' tiles.
std::string writeView(const Plane& plane);

/// Replaces the 4-byte word at `offset`.
void putWord(std::string& bytes, std::size_t offset, std::uint32_t word, bool swapped);
void putReal(std::string& bytes, std::size_t offset, float value, bool swapped);

}  // namespace peakbox::demo
