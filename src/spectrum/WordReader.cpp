#include "spectrum/WordReader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "spectrum/FileHeader.h"

namespace peakbox {

WordReader::WordReader(std::istream& source, bool sourceIsSwapped)
    : stream(source), byteSwapped(sourceIsSwapped), buffer(kCapacity) {}

const float* WordReader::take(std::size_t count) {
  if (end - next < count) refill();
  if (end - next < count) {
    shortOfWords = true;
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(end), buffer.end(), 0.0f);
    end = next + count;
  }
  const float* words = buffer.data() + next;
  next += count;
  return words;
}

void WordReader::refill() {
  std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(next), buffer.begin() + static_cast<std::ptrdiff_t>(end),
            buffer.begin());
  end -= next;
  next = 0;

  const std::size_t room = (kCapacity - end) * sizeof(float);
  stream.read(reinterpret_cast<char*>(buffer.data() + end), static_cast<std::streamsize>(room));
  const auto found = static_cast<std::size_t>(stream.gcount());
  bytesFound += found;

  const std::size_t words = found / sizeof(float);
  if (byteSwapped) {
    std::transform(&buffer[end], &buffer[end] + words, &buffer[end],
                   [](float word) { return std::bit_cast<float>(reverseBytes(std::bit_cast<std::uint32_t>(word))); });
  }
  end += words;
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
