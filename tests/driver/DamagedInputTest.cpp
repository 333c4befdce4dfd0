#include <gtest/gtest.h>

#include <bit>
#include <cctype>
#include <cmath>
#include <limits>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

/// Runs the example after one of its files was damaged. Whatever the damage, the run ends by itself, soon, and says
/// why.
class DamagedInput : public testing::Test {
 protected:
  void expectOrderlyEnd(const std::string& file, const std::string& bytes, const std::string& damage) {
    writeExample(folder);
    folder.write("run.par", exampleParameters("SPECTRUM a.ft2 1\nSPECTRUM b 2\n"));
    folder.write("b", writePipe(examplePlane()));
    folder.write(file, bytes);
    const Outcome outcome = folder.run("timeout 10 peakbox -v -i run.par -o report");
    const std::string head = outcome.err.substr(0, 1000);
    EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << outcome.status << " after " << damage << "\n" << head;
    EXPECT_EQ(head.find("Sanitizer"), std::string::npos) << damage << "\n" << head;
    EXPECT_EQ(head.find("runtime error"), std::string::npos) << damage << "\n" << head;
    ++runs;
  }

  void sweepWords(const std::string& bytes, bool swapped, const std::vector<std::size_t>& offsets,
                  const std::vector<std::uint32_t>& values) {
    for (const std::size_t offset : offsets) {
      for (const std::uint32_t value : values) {
        std::string damaged = bytes;
        putWord(damaged, offset, value, swapped);
        expectOrderlyEnd("a.ft2", damaged, "word " + std::to_string(offset) + " = " + std::to_string(value));
      }
    }
  }

  void sweepCuts(const std::string& bytes) {
    for (const std::size_t length : {0u, 3u, 4u, 1064u, 2047u, 2048u, 2051u, 2112u, 2500u}) {
      expectOrderlyEnd("a.ft2", bytes.substr(0, length), "cut at " + std::to_string(length));
    }
  }

  ScratchFolder folder;
  int runs = 0;
};

constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::uint32_t kLeast = kMost + 1;

TEST_F(DamagedInput, NMRPipeHeaderWordsAndCuts) {
  std::vector<std::uint32_t> values;
  for (const float value : {0.0f, -1.0f, 0.5f, 1.0f, 3.0f, 1e5f, 2147483648.0f, -2147483648.0f, 1e30f, -1e30f, 1e-40f,
                            INFINITY, -INFINITY, NAN}) {
    values.push_back(std::bit_cast<std::uint32_t>(value));
  }
  for (const bool swapped : {false, true}) {
    Plane plane = examplePlane();
    plane.swapped = swapped;
    plane.direct.quadFlag = plane.indirect.quadFlag = 0;
    const std::string bytes = writePipe(plane);
    sweepWords(bytes, swapped, {0, 36, 220, 224, 396, 400, 404, 476, 872, 876, 916, 996, 2048, 2500}, values);
    sweepCuts(bytes);
  }
  EXPECT_GT(runs, 400);
}

TEST_F(DamagedInput, NMRViewHeaderWordsAndCuts) {
  std::vector<std::uint32_t> values{0, 1, 2, 3, 16, kMost, kLeast, kMost - 1, 1u << 30, 1u << 16, 0xffffffff, 100000};
  for (const float value : {INFINITY, NAN, 1e30f}) values.push_back(std::bit_cast<std::uint32_t>(value));
  for (const bool swapped : {false, true}) {
    Plane plane = examplePlane();
    plane.swapped = swapped;
    const std::string bytes = writeView(plane);
    sweepWords(bytes, swapped, {0, 24, 1024, 1028, 1048, 1052, 1056, 1060, 1064, 1152, 1156, 1176, 1180, 1188, 1192},
               values);
    sweepCuts(bytes);
  }
  EXPECT_GT(runs, 400);
}

TEST_F(DamagedInput, HugeClaimsTogether) {
  for (const std::uint32_t size : {100000u, 2000000000u, kMost}) {
    for (const std::uint32_t tile : {1u, 1u << 30, kMost}) {
      std::string bytes = writeView(examplePlane()).substr(0, 2048);
      for (const std::size_t block : {1024u, 1152u}) {
        putWord(bytes, block, size, false);
        putWord(bytes, block + 4, tile, false);
      }
      expectOrderlyEnd("a.ft2", bytes, std::to_string(size) + " in tiles of " + std::to_string(tile));
    }
  }
}

TEST_F(DamagedInput, TokensOfTheTextFiles) {
  const std::string tokens[] = {"nan",
                                "-inf",
                                "inf",
                                "1e308",
                                "-1e39",
                                "99999999999999999999",
                                "2147483647",
                                "-2147483648",
                                "0x",
                                "{",
                                "}",
                                "\"",
                                std::string(1, '\0'),
                                std::string(3000000, '{'),
                                std::string(3000000, 'x'),
                                "\n",
                                "\r\n",
                                "-1",
                                "#",
                                ""};
  for (const auto& [file, text] : {std::pair{"run.par", exampleParameters("SPECTRUM a.ft2 1\nSPECTRUM a.ft2 2\n")},
                                   {"peaks.xpk", examplePeaks()}}) {
    for (std::size_t start = 0; start < text.size(); ++start) {
      const bool isStart = start == 0 || (std::isspace(text[start - 1]) && !std::isspace(text[start]));
      if (!isStart) continue;
      const std::size_t end = text.find_first_of(" \t\n", start);
      const std::string& token = tokens[start % std::size(tokens)];
      expectOrderlyEnd(file, text.substr(0, start) + token + text.substr(end),
                       "text " + token.substr(0, 20) + " at " + std::to_string(start));
      expectOrderlyEnd(file, text.substr(0, start), "text cut at " + std::to_string(start));
    }
  }
  EXPECT_GT(runs, 100);
}

TEST_F(DamagedInput, FilesThatAreNoFiles) {
  for (const char* file : {"run.par", "peaks.xpk", "a.ft2", "b"}) {
    expectOrderlyEnd(file, "", std::string(file) + " empty");
    folder.run("rm " + std::string(file) + "; mkdir " + file);
    const Outcome outcome = folder.run("timeout 10 peakbox -i run.par -o report");
    EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << file;
    EXPECT_NE(outcome.err, "") << file;
    folder.run("rmdir " + std::string(file));
  }
}

}  // namespace
}  // namespace peakbox::test
