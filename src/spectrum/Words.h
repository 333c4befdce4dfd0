#pragma once

#include <bit>
#include <cstdint>

namespace peakbox {

/// `word` with its four bytes in the reverse order.
constexpr std::uint32_t reverseBytes(std::uint32_t word) {
  return (word >> 24) | ((word >> 8) & 0x0000ff00u) | ((word << 8) & 0x00ff0000u) | (word << 24);
}

/// The float in a file's word, whose bytes are reversed first with `byteSwapped`.
template <bool byteSwapped>
float wordToReal(std::uint32_t word) {
  return std::bit_cast<float>(byteSwapped ? reverseBytes(word) : word);
}

}  // namespace peakbox
