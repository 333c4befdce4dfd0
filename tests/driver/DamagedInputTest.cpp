#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <cmath>
#include <sstream>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

/// Runs the programs on the example with one of its files damaged. Whatever the damage, they end by themselves, soon,
/// with status 0 or 1 and no complaint of a sanitizer.
void expectOrderlyEnds(const std::string& file, const std::string& contents) {
  const std::map<std::string, std::string> files{{"run.par", exampleParameters("SPECTRUM a.ft2 1\nSPECTRUM b 2\n")},
                                                 {"b", writePipe(examplePlane())}};
  for (const std::string command :
       {"peakbox -v -i run.par -o report", "peakbox-check -o report run.par", "peakbox-noise run.par"}) {
    std::map<std::string, std::string> damaged = files;
    damaged[file] = contents;
    const std::string end = runExample(damaged, command);
    EXPECT_TRUE(end.starts_with("status 0\n") || end.starts_with("status 1\n"))
        << command << " with " << testing::PrintToString(contents.substr(0, 3000)) << " in " << file << "\n"
        << end.substr(0, 1000);
  }
}

TEST(DamagedInput, OfAHeaderEndsTheRunInOrder) {
  const auto real = [](float value) { return std::bit_cast<std::uint32_t>(value); };
  const std::vector<std::uint32_t> integers{0, 1u << 30, 0x7fffffff, 1u << 31};
  const std::vector<std::uint32_t> truncated{0, real(-1), real(0x1p31f), real(-1e30f), real(NAN)};
  const std::vector<std::uint32_t> reals{0, real(-1), real(1e5f), real(-1e30f), real(NAN)};
  const std::string pipe = writePipe(examplePlane());
  const std::string view = writeView(examplePlane());
  struct Damage {
    const std::string& bytes;
    std::vector<std::size_t> places;
    const std::vector<std::uint32_t>& words;
  };
  for (const Damage& damage : {Damage{pipe, {220, 224, 396, 876}, truncated},
                               {pipe, {400, 404, 476, 872, 916, 996}, reals},
                               {view, {1024, 1028, 1152, 1156}, integers},
                               {view, {1048, 1052, 1056, 1060, 1176, 1180, 1184, 1188}, reals}}) {
    for (const std::size_t place : damage.places) {
      for (const std::uint32_t word : damage.words) {
        std::string damaged = damage.bytes;
        putWord(damaged, place, word, false);
        expectOrderlyEnds("a.ft2", damaged);
      }
    }
  }
}

TEST(DamagedInput, OfSizesAndTilesTogetherEndsTheRunInOrder) {
  for (const std::uint32_t tile : {1u, 5u, 1u << 30, 0x7fffffffu}) {
    std::string huge = writeView(examplePlane());
    for (const std::size_t place : {1024U, 1152U}) putWord(huge, place, 0x7fffffff, false);
    putWord(huge, 1028, tile, false);
    putWord(huge, 1156, 1 << 30, false);
    expectOrderlyEnds("a.ft2", huge);
  }
}

TEST(DamagedInput, OfATextEndsTheRunInOrder) {
  std::vector<std::string> tokens{"", "\n", "\r\n", {"\0", 1}, std::string(300000, '{'), std::string(300000, 'x')};
  std::istringstream words("nan -inf inf 1e308 -1e39 99999999999999999999 2147483647 -2147483648 0x { } \" -1 . #");
  for (std::string word; words >> word;) tokens.push_back(word);
  const std::pair<std::string, std::string> files[] = {
      {"run.par", exampleParameters("SPECTRUM a.ft2 1\nSPECTRUM . 2\n")},
      {"peaks.xpk", examplePeakHeader() + examplePeakLine({})}};
  for (const auto& [file, text] : files) {
    for (std::size_t start = 0; start < text.size(); ++start) {
      if (std::isspace(text[start]) || (start > 0 && !std::isspace(text[start - 1]))) continue;
      const std::size_t length = text.find_first_of(" \t\n", start) - start;
      expectOrderlyEnds(file, std::string(text).replace(start, length, tokens[start % tokens.size()]));
    }
  }
}

}  // namespace peakbox::test
