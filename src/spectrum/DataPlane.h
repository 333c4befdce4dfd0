#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

namespace peakbox {

/// `height` rows of `width` 4-byte words as a spectrum file holds them; each row begins `stride` words after the last.
struct FileRows {
  const std::uint32_t* words;
  std::ptrdiff_t stride;
  std::ptrdiff_t width;
  std::ptrdiff_t height;
};

/// A plane of doubles, size1 x size2 points, in one allocation: `plane[i][j]` is point i of dimension 1 and point j of
/// dimension 2, both from 0. Indices are not checked.
class DataPlane {
 public:
  DataPlane() = default;
  ~DataPlane();
  DataPlane(const DataPlane&) = delete;
  DataPlane& operator=(const DataPlane&) = delete;

  /// Replaces the plane by one of 0.0 in every point; the sizes are at least 0. Memory becomes resident only as points
  /// are written. Returns false, leaving a plane of 0 x 0, when the system refuses the memory.
  bool resize(std::ptrdiff_t newSize1, std::ptrdiff_t newSize2);

  std::ptrdiff_t getSize1() const { return size1; }
  std::ptrdiff_t getSize2() const { return size2; }

  double* operator[](std::ptrdiff_t i) { return values + lineStart(i); }
  const double* operator[](std::ptrdiff_t i) const { return values + lineStart(i); }

  /// Places file rows, each of which runs along dimension 1, from point (i0, j0) on:
  /// plane[i0 + i][j0 + j] = words[j * stride + i], as a float whose bytes are reversed first with `byteSwapped`.
  void placeRows(const FileRows& rows, bool byteSwapped, std::ptrdiff_t i0, std::ptrdiff_t j0);

 private:
  std::ptrdiff_t lineStart(std::ptrdiff_t i) const {
    assert(i >= 0 && i < size1);
    return i * size2;
  }
  void release();
  template <bool byteSwapped>
  void turnRows(const FileRows& rows, std::ptrdiff_t i0, std::ptrdiff_t j0);

  double* values = nullptr;
  std::ptrdiff_t size1 = 0;
  std::ptrdiff_t size2 = 0;
};

}  // namespace peakbox
