#include "spectrum/FileHeader.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <istream>
#include <limits>

#include "base/Messages.h"

namespace peakbox {

FileHeader::FileHeader(std::istream& stream) {
  if (!stream.read(bytes.data(), kSize)) fail("Error reading file header\n");
}

std::uint32_t FileHeader::getWord(std::size_t offset, bool byteSwapped) const {
  std::uint32_t word;
  std::memcpy(&word, bytes.data() + offset, sizeof word);
  return byteSwapped ? reverseBytes(word) : word;
}

std::int32_t FileHeader::getInteger(std::size_t offset, bool byteSwapped) const {
  return std::bit_cast<std::int32_t>(getWord(offset, byteSwapped));
}

float FileHeader::getReal(std::size_t offset, bool byteSwapped) const {
  return std::bit_cast<float>(getWord(offset, byteSwapped));
}

std::int32_t FileHeader::getTruncated(std::size_t offset, bool byteSwapped) const {
  using Limits = std::numeric_limits<std::int32_t>;
  const double value = getReal(offset, byteSwapped);
  if (std::isnan(value)) return 0;
  if (value <= Limits::min()) return Limits::min();
  if (value >= Limits::max()) return Limits::max();
  return static_cast<std::int32_t>(value);
}

std::string FileHeader::getText(std::size_t offset, std::size_t length) const {
  return {bytes.data() + offset, length};
}

}  // namespace peakbox
