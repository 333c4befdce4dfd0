#pragma once

#include <cassert>
#include <cstddef>

namespace peakbox {

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

  double* operator[](std::ptrdiff_t i) { return values + rowStart(i); }
  const double* operator[](std::ptrdiff_t i) const { return values + rowStart(i); }

  /// Sets points [i0, i0 + width) x [j0, j0 + height) from file rows, each of which runs along dimension 1:
  /// plane[i0 + i][j0 + j] = rows[j * stride + i].
  void placeRows(const float* rows, std::ptrdiff_t stride, std::ptrdiff_t i0, std::ptrdiff_t width, std::ptrdiff_t j0,
                 std::ptrdiff_t height);

 private:
  std::ptrdiff_t rowStart(std::ptrdiff_t i) const {
    assert(i >= 0 && i < size1);
    return i * size2;
  }
  void release();

  double* values = nullptr;
  std::ptrdiff_t size1 = 0;
  std::ptrdiff_t size2 = 0;
};

}  // namespace peakbox
