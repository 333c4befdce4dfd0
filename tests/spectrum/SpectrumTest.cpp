#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "spectrum/Spectrum.h"
#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

/// Every value differs from every other, so that a misplaced one shows.
Plane numberedPlane(bool swapped) {
  const auto value = [](int i, int j) { return static_cast<float>(1000 * i + j); };
  return {{37, 600, 9000, -2, 8}, {21, 60, 2000, 105, 5}, value, swapped};
}

void expectNumbered(const std::string& bytes, const std::string& what) {
  const ScratchFolder folder;
  folder.write("file", bytes);
  const std::string path = folder.path() / "file";
  Spectrum spectrum;
  spectrum.readHeader(path.c_str(), false);
  spectrum.loadData(path.c_str(), false);
  ASSERT_EQ(spectrum.getSize(0), 37) << what;
  ASSERT_EQ(spectrum.getSize(1), 21) << what;
  EXPECT_NEAR(spectrum.pointToPpm(36, 0), -2.0, 1e-6) << what;
  EXPECT_NEAR(spectrum.pointToPpm(0, 0), -2.0 + 36 * 9000 / 37.0 / 600, 1e-5) << what;
  EXPECT_NEAR(spectrum.ppmToPoint(105.0, 1), 20.0, 1e-4) << what;
  for (int i = 0; i < 37; ++i) {
    for (int j = 0; j < 21; ++j) ASSERT_EQ(spectrum.getData()[i][j], 1000 * i + j) << what << " at " << i << "," << j;
  }
}

TEST(Spectrum, OnePlaneReadsTheSameFromEveryLayoutInEitherByteOrder) {
  for (const bool swapped : {false, true}) {
    Plane plane = numberedPlane(swapped);
    for (const auto& [flag1, flag2] : {std::pair{0, 0}, {0, 1}, {1, 0}, {1, 1}, {1, -1}, {2, 0}}) {
      plane.direct.quadFlag = static_cast<float>(flag1);
      plane.indirect.quadFlag = static_cast<float>(flag2);
      expectNumbered(writePipe(plane), "flags " + std::to_string(flag1) + " " + std::to_string(flag2));
    }
    for (const auto& [tile1, tile2] :
         {std::pair{8, 5}, {1, 1}, {37, 21}, {64, 64}, {1, 30}, {40, 1}, {36, 20}, {700, 700}}) {
      plane.direct.tile = tile1;
      plane.indirect.tile = tile2;
      expectNumbered(writeView(plane), "tiles " + std::to_string(tile1) + " x " + std::to_string(tile2));
    }
  }
}

TEST(Spectrum, RowsLongerThanTheReadBufferArePlacedToo) {
  const auto value = [](int i, int j) { return static_cast<float>(j == 0 ? i : -i); };
  const Plane plane{{600000, 600, 9000, 0, 550000}, {2, 60, 2000, 0, 2}, value, true};
  const ScratchFolder folder;
  folder.write("pipe", writePipe(plane));
  folder.write("view", writeView(plane));
  for (const char* name : {"pipe", "view"}) {
    const std::string path = folder.path() / name;
    Spectrum spectrum;
    spectrum.readHeader(path.c_str(), false);
    spectrum.loadData(path.c_str(), false);
    for (int i = 0; i < 600000; ++i) {
      ASSERT_EQ(spectrum.getData()[i][0], i) << name;
      ASSERT_EQ(spectrum.getData()[i][1], -i) << name;
    }
  }
}

TEST(Spectrum, ConversionsFollowTheWorkedExample) {
  const ScratchFolder folder;
  folder.write("a", writePipe({{1024, 600, 9000, -2}, {1, 60, 100, 0}, [](int, int) { return 0.0f; }}));
  Spectrum spectrum;
  spectrum.readHeader((folder.path() / "a").c_str(), false);
  EXPECT_EQ(spectrum.pointToPpm(-1, 0), 13.0);
  EXPECT_EQ(spectrum.ppmToPoint(13.0, 0), -1.0);
  EXPECT_EQ(spectrum.pointToPpm(1023, 0), -2.0);
  EXPECT_EQ(spectrum.pointToPpm(0, 0), 13.0 - 9000.0 / 1024 / 600);
  EXPECT_EQ(spectrum.hzToPoints(9000, 0), 1024.0);
  EXPECT_EQ(spectrum.ppmWidthToPoints(-15, 0), -1024.0);
}

TEST(Spectrum, VerboseRunsShowTheAxes) {
  const ScratchFolder folder;
  writeExample(folder);
  folder.write(
      "a.ft2",
      writeView({{1024, 600.13f, 9000, 0, 64}, {256, 150.9f, 2000, 0, 32}, [](int, int) { return 1.0f; }, true}));
  const Outcome outcome = folder.run("peakbox -v -i run.par -o report");
  const std::string nuls(14, '\0');
  EXPECT_EQ(outcome.out, "Box size = 3 x 3\n\nNMRView format\n2 peaks found\n\nSpectrum = a.ft2\n");
  const std::string notice = "Correcting data for apparent byte-swap.\n";
  EXPECT_EQ(outcome.err.substr(0, outcome.err.find("WARNING")),
            notice + "Dim\t\tNuc\t\tSize\t\tObs\t\t1pt\n1\t\t1H" + nuls +
                "\t\t1024pt\t\t600.13MHz\t8.78906Hz\n2\t\t15" + nuls + "\t\t256pt\t\t150.9MHz\t7.8125Hz\n\n" + notice);
}

/// A run of the example with the spectrum `bytes`, which must end with status 1 and `message` on standard error.
void expectRefused(const std::string& bytes, const std::string& message) {
  const ScratchFolder folder;
  writeExample(folder);
  folder.write("a.ft2", bytes);
  const Outcome outcome = folder.run("peakbox -i run.par -o report");
  EXPECT_EQ(outcome.status, 1) << message;
  EXPECT_EQ(outcome.err, message);
}

TEST(SpectrumFile, EachBadHeaderHasItsMessage) {
  const std::string pipe = writePipe(examplePlane());
  const std::string view = writeView(examplePlane());
  const auto withReal = [&](std::size_t word, float value) {
    std::string bytes = pipe;
    putReal(bytes, 4 * word, value, false);
    return bytes;
  };
  const auto withWord = [&](std::size_t offset, int value) {
    std::string bytes = view;
    putWord(bytes, offset, static_cast<std::uint32_t>(value), false);
    return bytes;
  };
  const std::string notice = "Correcting data for apparent byte-swap.\n";
  const std::string notTwo = "ERROR: Spectrum is not two dimentional.\n";
  const std::string cutHeader = "Error reading file header\n";
  expectRefused("abc", "Unable to read a.ft2\n");
  expectRefused("\1abc", "unrecognized format\n");
  expectRefused(pipe.substr(0, 2047), cutHeader);
  expectRefused(view.substr(0, 4), cutHeader);
  expectRefused(withReal(9, 3), notTwo);
  expectRefused(withReal(99, 100001), notice + notTwo);
  expectRefused(withReal(119, 5000.5f), notice + notTwo);
  std::string ambiguous = pipe;
  putWord(ambiguous, 4 * 99, 0x3f800040, false);   // 1.00001, reversed 2.00783
  putWord(ambiguous, 4 * 119, 0x44458044, false);  // 790.004, reversed 1026.16
  expectRefused(ambiguous, "ERROR: Unkonwn file format.\n");
  expectRefused(withReal(219, 0), "ERROR: Dimension 2 has no data points (0).\n");
  expectRefused(withReal(219, -1e30f), "ERROR: Dimension 2 has no data points (-2147483648).\n");
  expectRefused(withReal(219, std::nanf("")), "ERROR: Dimension 2 has no data points (0).\n");
  expectRefused(withWord(24, 3), notTwo);
  expectRefused(withWord(1064, 2), "ERROR: Unknown unit.\n");
  expectRefused(withWord(1192, 0), "ERROR: Unknown unit.\n");
  expectRefused(withWord(1024, -5), "ERROR: Dimension 1 has no data points (-5).\n");
  expectRefused(withWord(1028, 0), "ERROR: Dimension 1 has an invalid tile size (0).\n");
  expectRefused(withWord(1156, -1), "ERROR: Dimension 2 has an invalid tile size (-1).\n");
}

TEST(SpectrumFile, ShortDataAreFoundOutAndTheirPlaceIsNamed) {
  Plane plane = examplePlane();
  const auto at = [](int point, int row) {
    return "Error reading file @ point (" + std::to_string(point) + "," + std::to_string(row) + "\n";
  };
  const auto cutAfter = [&](std::size_t bytes) { return writePipe(plane).substr(0, 2048 + bytes); };
  expectRefused(cutAfter(0), at(1, 0));
  expectRefused(cutAfter(4 * 3 + 2), at(4, 0));
  expectRefused(cutAfter(64 * 2 + 4 * 14), at(15, 2));
  expectRefused(cutAfter(64 * 2 + 4 * 15 + 3), at(0, 3));
  expectRefused(cutAfter(64 * 11), at(1, 11));
  expectRefused(cutAfter(64 * 11 + 4 * 14), at(15, 11));
  plane.direct.quadFlag = 0;  // One more value per point: a row has 64 bytes of values and 64 that are passed over.
  expectRefused(cutAfter(128 * 4 + 64), at(0, 5));
  expectRefused(cutAfter(128 * 4 + 127), at(0, 5));
  expectRefused(cutAfter(128 * 5), at(1, 5));
  const std::string view = writeView(examplePlane());
  expectRefused(view.substr(0, view.size() - 1), "Error reading file\n");
}

TEST(SpectrumFile, NothingTestsWhatFollowsTheLastRowsLastValue) {
  Plane plane = examplePlane();
  plane.value = [](int i, int j) { return i == 14 && j == 11 ? 3.0f : 7.0f; };
  plane.direct.quadFlag = 0;
  const std::string bytes = writePipe(plane);
  const ScratchFolder folder;
  const struct {
    std::size_t length;
    double last;
  } rows[] = {
      {2048 + 128 * 11 + 60, 0.0}, {2048 + 128 * 11 + 63, 0.0}, {2048 + 128 * 11 + 64, 7.0}, {bytes.size() - 1, 7.0}};
  for (const auto& row : rows) {
    folder.write("a", bytes.substr(0, row.length));
    const std::string path = folder.path() / "a";
    Spectrum spectrum;
    spectrum.readHeader(path.c_str(), false);
    spectrum.loadData(path.c_str(), false);
    EXPECT_EQ(spectrum.getData()[14][11], 3.0);
    EXPECT_EQ(spectrum.getData()[15][11], row.last) << row.length;
  }
}

}  // namespace
}  // namespace peakbox::test
