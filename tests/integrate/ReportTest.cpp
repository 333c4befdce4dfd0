#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

const std::string kField = "# FIELD(MHz): 600.13\n#\n";

TEST(Report, IsTheSameFromBothFormatsInEitherByteOrder) {
  const ScratchFolder folder;
  writeExample(folder);
  for (const bool swapped : {false, true}) {
    Plane plane = examplePlane();
    plane.swapped = swapped;
    for (const std::string& bytes : {writePipe(plane), writeView(plane)}) {
      folder.write("a.ft2", bytes);
      const Outcome outcome = folder.run("peakbox -i run.par -o report");
      EXPECT_EQ(outcome.status, 0);
      EXPECT_EQ(outcome.out, "");
      const std::string notice = "Correcting data for apparent byte-swap.\n";
      EXPECT_EQ(outcome.err, swapped ? notice + notice : "");
      EXPECT_EQ(folder.read("report"), kField + exampleTable());
    }
  }
}

TEST(Report, CarriesTheParametersOfEachSpectrum) {
  const ScratchFolder folder;
  writeExample(folder);
  folder.write("run.par", exampleParameters("SPECTRUM a.ft2 0.0 x\nSPECTRUM ./a.ft2 0.5 \"\n"));
  EXPECT_EQ(folder.run("peakbox -i run.par -o report").status, 0);
  EXPECT_EQ(folder.read("report"), kField + exampleTable("1: a.ft2\n# PARAMETERS: 0.0\tx\n") +
                                       exampleTable("2: ./a.ft2\n# PARAMETERS: 0.5\tx\n"));
}

TEST(Report, AbsoluteIntensitiesSpareNoise) {
  const ScratchFolder folder;
  writeExample(folder);
  std::string peaks = examplePeakHeader();
  for (const char* label : {"A12", "noise1", "bgnoise", "Noise"})
    peaks += examplePeakLine("5", label, "5", "2", "8", "2");
  folder.write("peaks.xpk", peaks);
  folder.run("peakbox -abs -i run.par -o report");
  EXPECT_EQ(folder.read("report"), kField +
                                       "# SPECTRUM 1: a.ft2\n# Num\tLabel\tPos1\tPos2\tInt\n  5\tA12\t5\t8\t62\n"
                                       "  5\tnoise1\t5\t8\t-62\n  5\tbgnoise\t5\t8\t-62\n  5\tNoise\t5\t8\t62\n\n");
}

TEST(Report, LaterSpectraAreSearchedAroundThePointsOfTheFirst) {
  const ScratchFolder folder;
  writeExample(folder);
  // The tolerance is one point; the extreme point moves by one, and then by another.
  folder.write("run.par", exampleParameters("SPECTRUM a\nSPECTRUM b\nSPECTRUM c\n"));
  folder.write("peaks.xpk", examplePeakHeader() + examplePeakLine("1", "x", "10", "2", "5", "2"));
  for (const auto& [name, at] : {std::pair{"a", 5}, {"b", 6}, {"c", 7}}) {
    Plane plane = examplePlane();
    plane.value = [at = at](int i, int j) { return i == at && j == 6 ? 10.0f : i == 4 && j == 5 ? 2.0f : 0.0f; };
    folder.write(name, writePipe(plane));
  }
  EXPECT_EQ(folder.run("peakbox -i run.par -o report").err, "");
  const std::string columns = "# Num\tLabel\tPos1\tPos2\tInt\n";
  EXPECT_EQ(folder.read("report"), kField + "# SPECTRUM 1: a\n" + columns + "  1\tx\t10\t5\t12\n\n# SPECTRUM 2: b\n" +
                                       columns + "  1\tx\t9\t5\t10\n\n# SPECTRUM 3: c\n" + columns +
                                       "  1\tx\t11\t6\t2\n\n");
}

TEST(Report, KeepsTheTablesBeforeAFault) {
  const struct {
    std::string second;
    std::string err;
  } rows[] = {
      {"", "Error reading file header\n"},
      {writePipe(examplePlane()).substr(0, 2100), "Error reading file @ point (14,0\n"},
      {writePipe({{16, 100, 1600, 0}, {13, 50, 600, 0}, [](int, int) { return 0.0f; }}),
       "ERROR: Spectrum b has 16 x 13 points, the first has 16 x 12.\n"},
      {writeView(examplePlane()), "Correcting data for apparent byte-swap.\nERROR: Spectrum is not two dimentional.\n"},
  };
  const ScratchFolder folder;
  writeExample(folder);
  folder.write("run.par", exampleParameters("SPECTRUM a.ft2\nSPECTRUM b\n"));
  for (const auto& row : rows) {
    folder.write("b", row.second);
    const Outcome outcome = folder.run("peakbox -i run.par -o report");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, row.err);
    EXPECT_EQ(folder.read("report"), kField + exampleTable());
  }
  EXPECT_EQ(folder.run("rm b; peakbox -i run.par -o report").err, "Unable to open datafile b\n");
}

TEST(Report, OneThatCannotBeWrittenIsNoError) {
  const ScratchFolder folder;
  writeExample(folder);
  for (const char* report : {"", "-o none/report", "-o /dev/full", "-o ."}) {
    const Outcome outcome = folder.run("peakbox -v -i run.par " + std::string(report));
    EXPECT_EQ(outcome.status, 0) << report;
    EXPECT_NE(outcome.out.find("Spectrum = a.ft2\n"), std::string::npos) << report;
  }
}

TEST(Report, ATolerancThatIsNoNumberIsRefusedAtTheSecondSpectrum) {
  const ScratchFolder folder;
  writeExample(folder);
  folder.write("run.par", exampleParameters("TOLERANCE 10 nan\nSPECTRUM a.ft2\nSPECTRUM a.ft2\n"));
  const Outcome outcome = folder.run("peakbox -i run.par -o report");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "ERROR: Search area of peak #0 is not a number in dimension 2.\n");
  EXPECT_EQ(folder.read("report"), kField + exampleTable());
}

}  // namespace
}  // namespace peakbox::test
