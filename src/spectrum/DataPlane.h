#pragma once

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace peakbox {

/// A plane of doubles, size1 x size2 points, in one allocation in the order of a file: dimension 1 runs fastest.
/// `plane[i][j]` is point i of dimension 1 and point j of dimension 2, both from 0. Indices are not checked.
class DataPlane {
 public:
  /// The points at one place of dimension 1, from point 0 of dimension 2 on.
  template <typename Value>
  struct Line {
    Value* first;
    std::ptrdiff_t stride;
    Value& operator[](std::ptrdiff_t j) const { return first[j * stride]; }
  };

  /// Replaces the plane by one of 0.0 in every point; the sizes are at least 0. Memory becomes resident only as points
  /// are written. Returns false, leaving a plane of 0 x 0, when the system refuses the memory.
  bool resize(std::ptrdiff_t newSize1, std::ptrdiff_t newSize2);

  /// Asks the system for huge pages or for small ones, where it has both. With huge ones a large plane is written up to
  /// three times as fast; with small ones a point here and there takes no more memory than a small page.
  void advisePages(bool huge);

  std::ptrdiff_t getSize1() const { return size1; }
  std::ptrdiff_t getSize2() const { return size2; }

  Line<double> operator[](std::ptrdiff_t i) { return {values.get() + i, size1}; }
  Line<const double> operator[](std::ptrdiff_t i) const { return {values.get() + i, size1}; }

 private:
  struct Free {
    void operator()(double* allocation) const { std::free(allocation); }
  };

  std::unique_ptr<double[], Free> values;
  std::ptrdiff_t size1 = 0;
  std::ptrdiff_t size2 = 0;
};

}  // namespace peakbox
