#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>

namespace peakbox {

/// Reads the 4-byte words of a data section as they stand in the file, through one buffer of bounded size. A section
/// that ends early is not a fault here: what is missing, a word that was cut included, reads as 0.
class WordReader {
 public:
  /// The most words that one call of `take` can give.
  static constexpr std::size_t kCapacity = std::size_t{1} << 18;

  /// Reads from the stream's position on.
  explicit WordReader(std::istream& source)
      : stream(source), buffer(std::make_unique_for_overwrite<std::uint32_t[]>(kCapacity)) {}

  /// The next `count` words, at most `kCapacity`; they stay valid until the next call.
  const std::uint32_t* take(std::size_t count);

  /// True once `take` was asked for more than the section holds.
  bool endedEarly() const { return shortOfWords; }

  /// Bytes found in the section so far; once it has ended early, all that it holds.
  std::uint64_t getBytesFound() const { return bytesFound; }

 private:
  void refill();

  std::istream& stream;
  std::unique_ptr<std::uint32_t[]> buffer;
  std::size_t next = 0;
  std::size_t end = 0;
  std::uint64_t bytesFound = 0;
  bool shortOfWords = false;
};

/// Bytes from the stream's position to the end of its file, or the largest number where the file cannot tell (a pipe).
std::uint64_t countBytesAhead(std::istream& stream);

}  // namespace peakbox
