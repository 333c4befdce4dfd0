#include <gtest/gtest.h>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

/// An NMRView file whose header claims so many points and tiles of such a size.
std::string claim(std::uint32_t size, std::uint32_t tile1, std::uint32_t tile2) {
  std::string bytes = writeView(examplePlane());
  for (const std::size_t axis : {1024U, 1152U}) putWord(bytes, axis, size, false);
  putWord(bytes, 1028, tile1, false);
  putWord(bytes, 1156, tile2, false);
  return bytes;
}

TEST(DamagedInput, EndsEveryProgramInOrder) {
  struct Row {
    std::string name;
    std::string file;
    std::string contents;
  };
  const Row rows[] = {
      {"points without end", "a.ft2", claim(0x7fffffff, 5, 7)},
      {"tiles of one column", "a.ft2", claim(0x7fffffff, 1, 1 << 30)},
      {"tiles without end", "a.ft2", claim(16, 0x7fffffff, 0x7fffffff)},
      {"a number beyond all", "peaks.xpk", examplePeakHeader() + examplePeakLine({.ppm1 = "1e308"})},
      {"a width beyond all", "peaks.xpk", examplePeakHeader() + examplePeakLine({.width2 = "-inf"})},
      {"a group without end", "peaks.xpk", examplePeakHeader() + std::string(300000, '{') + "\n"},
      {"tolerance beyond all", "run.par", exampleParameters("TOLERANCE inf 1e999\nSPECTRUM a.ft2\nSPECTRUM b\n")},
      {"a box beyond all", "run.par", exampleParameters("BOXSIZE 0x7fffffff\nSPECTRUM a.ft2 \"\n")},
  };
  for (const Row& row : rows) {
    for (const std::string command :
         {"peakbox -v -i run.par -o report", "peakbox-check -o report run.par", "peakbox-noise run.par"}) {
      const std::string end = runExample({{"b", writePipe(examplePlane())}, {row.file, row.contents}}, command);
      EXPECT_TRUE(end.starts_with("status 0\n") || end.starts_with("status 1\n")) << row.name << ", " << command << "\n"
                                                                                  << end.substr(0, 1000);
    }
  }
}

}  // namespace
}  // namespace peakbox::test
