// Stands in for mmap and munmap in the data plane. The address sanitizer knows nothing of pages that come straight from
// the kernel, so each plane gets a forbidden page on both sides. A plane that is too large for this machine's memory is
// granted too: on another machine it may not be too large.
#include <sanitizer/asan_interface.h>
#include <sys/mman.h>

#include <cstddef>

namespace {

constexpr std::size_t kGuard = 4096;

}  // namespace

extern "C" void* guardedMmap(void* /*address*/, std::size_t length, int protection, int flags, int descriptor,
                             off_t offset) {
  void* pages = mmap(nullptr, length + 2 * kGuard, protection, flags | MAP_NORESERVE, descriptor, offset);
  if (pages == MAP_FAILED) return MAP_FAILED;
  char* plane = static_cast<char*>(pages) + kGuard;
  ASAN_POISON_MEMORY_REGION(pages, kGuard);
  ASAN_POISON_MEMORY_REGION(plane + length, kGuard);
  return plane;
}

extern "C" int guardedMunmap(void* address, std::size_t length) {
  char* plane = static_cast<char*>(address);
  ASAN_UNPOISON_MEMORY_REGION(plane - kGuard, kGuard);
  ASAN_UNPOISON_MEMORY_REGION(plane + length, kGuard);
  return munmap(plane - kGuard, length + 2 * kGuard);
}
