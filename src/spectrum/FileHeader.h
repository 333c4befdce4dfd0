#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace peakbox {

/// `word` with its four bytes in the reverse order.
constexpr std::uint32_t reverseBytes(std::uint32_t word) {
  return (word >> 24) | ((word >> 8) & 0x0000ff00u) | ((word << 8) & 0x00ff0000u) | (word << 24);
}

/// The first 2048 bytes of a spectrum file. Words are 4 bytes long and addressed by their byte offset; with
/// `byteSwapped` a word's bytes are reversed before it is taken as a number.
class FileHeader {
 public:
  static constexpr std::size_t kSize = 2048;

  /// Reads the header from the stream's position; ends the run with status 1 when the file is shorter.
  explicit FileHeader(std::istream& stream);

  std::uint32_t getWord(std::size_t offset, bool byteSwapped) const;
  std::int32_t getInteger(std::size_t offset, bool byteSwapped) const;
  float getReal(std::size_t offset, bool byteSwapped) const;

  /// A whole number that is stored as a float, truncated toward zero. NaN is 0, a value beyond 32 bits the nearest
  /// 32-bit limit.
  std::int32_t getTruncated(std::size_t offset, bool byteSwapped) const;

  /// `length` bytes, NUL bytes included.
  std::string getText(std::size_t offset, std::size_t length) const;

 private:
  std::array<char, kSize> bytes;
};

}  // namespace peakbox
