#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <cmath>
#include <sstream>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

/// Cuts one of the example's files at `place`, or puts one of `pieces` there instead of `length` bytes. Whatever the
/// damage, the run ends by itself, soon, with status 0 or 1 and no complaint of a sanitizer.
void expectOrderlyEnds(const std::string& file, const std::string& bytes, std::size_t place, std::size_t length,
                       const std::vector<std::string>& pieces) {
  std::vector<std::string> damaged{bytes.substr(0, place)};
  for (const std::string& piece : pieces) damaged.push_back(std::string(bytes).replace(place, length, piece));
  const std::string parameters = exampleParameters("SPECTRUM a.ft2 1\nSPECTRUM b 2\n");
  for (const std::string& contents : damaged) {
    const std::string end = runExample({{file, contents}, {"run.par", parameters}, {"b", writePipe(examplePlane())}},
                                       "env ASAN_OPTIONS=exitcode=99 peakbox -v -i run.par -o report");
    EXPECT_TRUE(end.starts_with("status 0\n") || end.starts_with("status 1\n"))
        << testing::PrintToString(contents.substr(place, 20)) << " at " << place << " of " << file << "\n"
        << end.substr(0, 1000);
  }
}

TEST(DamagedInput, OfASpectrumEndsTheRunInOrder) {
  const auto real = [](float value) { return std::bit_cast<std::uint32_t>(value); };
  const std::uint32_t words[] = {0,       1,        100000,     1u << 30,      0x7fffffff,   1u << 31,
                                 real(1), real(-1), real(1e5f), real(0x1p31f), real(-1e30f), real(INFINITY)};
  for (const bool swapped : {false, true}) {
    std::vector<std::string> pieces;
    for (const std::uint32_t word : words) putWord(pieces.emplace_back(4, '\0'), 0, word, swapped);
    const Plane plane{{16, 100, 1600, 7, 5}, {12, 50, 600, 7, 7}, examplePlane().value, swapped};
    std::string huge = writeView(plane).substr(0, 2048);
    for (const std::size_t place : {1024, 1152}) putWord(huge, place, 0x7fffffff, swapped);
    putWord(huge, 1156, 1 << 30, swapped);
    for (const std::string& bytes : {writePipe(plane), writeView(plane), huge}) {
      // The header's words that are read are the first and those that are not 0.
      for (std::size_t place = 0; place <= 2048; place += 4) {
        if (place > 0 && bytes.substr(place, 4) == std::string(4, '\0')) continue;
        expectOrderlyEnds("a.ft2", bytes, place, 4, pieces);
      }
    }
  }
}

TEST(DamagedInput, OfATextEndsTheRunInOrder) {
  std::vector<std::string> tokens{"", "\n", "\r\n", {"\0", 1}, std::string(3000000, '{'), std::string(3000000, 'x')};
  std::istringstream words("nan -inf inf 1e308 -1e39 99999999999999999999 2147483647 -2147483648 0x { } \" -1 . #");
  for (std::string word; words >> word;) tokens.push_back(word);
  const std::pair<std::string, std::string> files[] = {
      {"run.par", exampleParameters("SPECTRUM a.ft2 1\nSPECTRUM . 2\n")}, {"peaks.xpk", examplePeaks()}};
  for (const auto& [file, text] : files) {
    for (std::size_t start = 0; start < text.size(); ++start) {
      if (std::isspace(text[start]) || (start > 0 && !std::isspace(text[start - 1]))) continue;
      const std::size_t length = text.find_first_of(" \t\n", start) - start;
      expectOrderlyEnds(file, text, start, length, {tokens[start % tokens.size()]});
    }
  }
}

}  // namespace peakbox::test
