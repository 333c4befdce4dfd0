#include "spectrum/DataPlane.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace peakbox {

bool DataPlane::resize(std::ptrdiff_t newSize1, std::ptrdiff_t newSize2) {
  size1 = size2 = 0;
  // calloc refuses a size in bytes that overflows, and pages of a large block cost nothing until they are written.
  const auto count = static_cast<std::size_t>(newSize1 * newSize2);
  values.reset(static_cast<double*>(std::calloc(count, sizeof(double))));
  if (values == nullptr && count > 0) return false;
  size1 = newSize1;
  size2 = newSize2;
  return true;
}

void DataPlane::advisePages([[maybe_unused]] bool huge) {
#ifdef MADV_HUGEPAGE
  // The advice is for whole pages, so it begins with the one that the plane begins in. A refusal does not matter.
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(values.get()) % page;
  const std::size_t bytes = static_cast<std::size_t>(size1 * size2) * sizeof(double);
  madvise(reinterpret_cast<char*>(values.get()) - offset, bytes + offset, huge ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
#endif
}

}  // namespace peakbox
