#include "spectrum/DataPlane.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace peakbox {

namespace {

/// Asks for huge pages: with small ones a large plane takes a page fault for every 512 points. Only advice, so a
/// refusal does not matter.
void adviseHugePages(const void* start, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(start) % page;
  madvise(static_cast<char*>(const_cast<void*>(start)) - offset, bytes + offset, MADV_HUGEPAGE);
#endif
}

}  // namespace

bool DataPlane::resize(std::ptrdiff_t newSize1, std::ptrdiff_t newSize2) {
  size1 = size2 = 0;
  // calloc refuses a size in bytes that overflows, and pages of a large block cost nothing until they are written.
  const auto count = static_cast<std::size_t>(newSize1 * newSize2);
  values.reset(static_cast<double*>(std::calloc(count, sizeof(double))));
  if (values == nullptr && count > 0) return false;
  adviseHugePages(values.get(), count * sizeof(double));
  size1 = newSize1;
  size2 = newSize2;
  return true;
}

}  // namespace peakbox
