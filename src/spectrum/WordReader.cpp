#include "spectrum/WordReader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace peakbox {

namespace {

constexpr std::size_t kWordSize = sizeof(std::uint32_t);

}  // namespace

const std::uint32_t* WordReader::take(std::size_t count) {
  if (end - next < count) refill();
  if (end - next < count) {
    shortOfWords = true;
    std::fill(buffer.get() + end, buffer.get() + kCapacity, 0);
    end = next + count;
  }
  const std::uint32_t* words = buffer.get() + next;
  next += count;
  return words;
}

void WordReader::refill() {
  std::memmove(buffer.get(), buffer.get() + next, (end - next) * kWordSize);
  end -= next;
  next = 0;
  stream.read(reinterpret_cast<char*>(buffer.get() + end), static_cast<std::streamsize>((kCapacity - end) * kWordSize));
  const auto found = static_cast<std::size_t>(stream.gcount());
  bytesFound += found;
  end += found / kWordSize;
}

std::uint64_t countBytesAhead(std::istream& stream) {
  const std::streamoff here = stream.tellg();
  const std::streamoff end = stream.seekg(0, std::ios::end).tellg();
  stream.clear();
  stream.seekg(here);
  stream.clear();
  if (here < 0 || end < here) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(end - here);
}

}  // namespace peakbox
