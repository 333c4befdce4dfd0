#include "spectrum/DataPlane.h"

#include <sys/mman.h>

#include <algorithm>
#include <limits>

#include "spectrum/Words.h"

namespace peakbox {

DataPlane::~DataPlane() { release(); }

void DataPlane::release() {
  if (values != nullptr) munmap(values, static_cast<std::size_t>(size1 * size2) * sizeof(double));
  values = nullptr;
  size1 = size2 = 0;
}

bool DataPlane::resize(std::ptrdiff_t newSize1, std::ptrdiff_t newSize2) {
  release();
  if (newSize1 == 0 || newSize2 == 0) {
    size1 = newSize1;
    size2 = newSize2;
    return true;
  }
  constexpr std::ptrdiff_t kMostPoints = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(double);
  if (newSize1 > kMostPoints / newSize2) return false;

  // Pages straight from the kernel are zero without being written, and a refusal comes as a value.
  const std::size_t bytes = static_cast<std::size_t>(newSize1 * newSize2) * sizeof(double);
  void* pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) return false;
  // Filling the plane strides across it: with small pages that costs a page fault and a TLB miss for every few points.
  // Only advice, so a refusal does not matter.
  madvise(pages, bytes, MADV_HUGEPAGE);

  values = static_cast<double*>(pages);
  size1 = newSize1;
  size2 = newSize2;
  return true;
}

namespace {

/// line[x * lineStride + y] = rows[y * rowStride + x] for every x below `width` and y below `height`.
template <bool byteSwapped>
inline void turnBlock(const std::uint32_t* rows, std::ptrdiff_t rowStride, std::ptrdiff_t width, std::ptrdiff_t height,
                      double* line, std::ptrdiff_t lineStride) {
  for (std::ptrdiff_t x = 0; x < width; ++x, line += lineStride) {
    // The plane's lines are asked for two blocks ahead: otherwise most of the time is spent waiting for them.
    __builtin_prefetch(line + 2 * height, 1);
    for (std::ptrdiff_t y = 0; y < height; ++y) line[y] = wordToReal<byteSwapped>(rows[y * rowStride + x]);
  }
}

}  // namespace

template <bool byteSwapped>
void DataPlane::turnRows(const FileRows& rows, std::ptrdiff_t i0, std::ptrdiff_t j0) {
  // Turned over in blocks of one cache line by one: the lines of the file's rows that are in hand at a time fit the
  // first-level cache even when all of them fall into one of its sets, as sizes that are powers of two make them do.
  constexpr std::ptrdiff_t kWordsPerLine = 16;
  constexpr std::ptrdiff_t kDoublesPerLine = 8;

  for (std::ptrdiff_t i = 0; i < rows.width; i += kWordsPerLine) {
    const std::ptrdiff_t width = std::min(kWordsPerLine, rows.width - i);
    for (std::ptrdiff_t j = 0; j < rows.height; j += kDoublesPerLine) {
      const std::ptrdiff_t height = std::min(kDoublesPerLine, rows.height - j);
      const std::uint32_t* words = rows.words + j * rows.stride + i;
      double* line = (*this)[i0 + i] + j0 + j;
      // Nearly all blocks are whole, and with bounds that it knows the compiler turns them much faster.
      if (width == kWordsPerLine && height == kDoublesPerLine) {
        turnBlock<byteSwapped>(words, rows.stride, kWordsPerLine, kDoublesPerLine, line, size2);
      } else {
        turnBlock<byteSwapped>(words, rows.stride, width, height, line, size2);
      }
    }
  }
}

void DataPlane::placeRows(const FileRows& rows, bool byteSwapped, std::ptrdiff_t i0, std::ptrdiff_t j0) {
  byteSwapped ? turnRows<true>(rows, i0, j0) : turnRows<false>(rows, i0, j0);
}

}  // namespace peakbox
