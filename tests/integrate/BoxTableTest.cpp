#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

#include "integrate/BoxTable.h"
#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

/// A run of one peak whose search area reaches from point `low` to `high` in both dimensions of `plane`.
class OnePeak {
 public:
  OnePeak(const Plane& plane, double low1, double high1, double low2, double high2,
          const std::string& settings = "BOXSIZE 1\n") {
    const auto ppm = [](const Axis& axis, double point) { return std::to_string(axis.size - 1 - point); };
    folder.write("run.par", settings + "PEAKLIST p\nSPECTRUM a\n");
    folder.write("p", examplePeakHeader() +
                          examplePeakLine("1", "x", ppm(plane.direct, (low1 + high1) / 2), std::to_string(high1 - low1),
                                          ppm(plane.indirect, (low2 + high2) / 2), std::to_string(high2 - low2)));
    folder.write("a", writePipe(plane));
    outcome = folder.run("peakbox -i run.par -o report");
    std::istringstream report(folder.read("report"));
    std::string word;
    while (report >> word) words.push_back(word);
  }

  /// Position of the box, in points from the far end, and intensity, as in the report.
  std::string result() const {
    return words.size() < 5 ? "none" : words[words.size() - 3] + " " + words[words.size() - 2] + " " + words.back();
  }

  Outcome outcome;

 private:
  ScratchFolder folder;
  std::vector<std::string> words;
};

/// 16 x 12 points of 0 with the given ones on them.
Plane planeOf(const std::vector<std::tuple<int, int, float>>& points) {
  Plane plane = examplePlane();
  plane.value = [points](int i, int j) {
    for (const auto& [a, b, value] : points) {
      if (a == i && b == j) return value;
    }
    return 0.0f;
  };
  return plane;
}

TEST(BoxIntegration, TakesTheFirstPointOfGreatestMagnitude) {
  const float nan = std::nanf("");
  const struct {
    std::vector<std::tuple<int, int, float>> points;
    std::string result;
  } rows[] = {
      {{{5, 5, 3}, {6, 6, -5}}, "9 5 -2"},
      {{{5, 5, -3}, {6, 6, 3}}, "9 5 0"},
      {{{6, 5, 4}, {5, 7, 4}, {5, 6, 4}}, "10 5 12"},
      {{{6, 5, -4}, {5, 7, -4}}, "10 4 -4"},
      {{{4, 4, nan}, {6, 6, 9}}, "11 7 nan"},
      {{{5, 5, nan}, {6, 7, 9}}, "9 4 9"},
      {{{6, 6, INFINITY}}, "9 5 inf"},
      {{{6, 6, INFINITY}, {4, 7, -INFINITY}}, "11 4 -inf"},
  };
  for (const auto& row : rows) EXPECT_EQ(OnePeak(planeOf(row.points), 4, 7, 4, 7).result(), row.result);
}

TEST(BoxIntegration, AnAreaBetweenTwoPointsIsWidenedToThem) {
  const OnePeak run(planeOf({{10, 6, 2}, {11, 6, 3}, {12, 6, 9}}), 10.2, 10.8, 5.2, 5.9);
  const std::string first =
      "WARNING: No data points are contained within the box for peak #0\nThe box was modified to contain the nearest "
      "two data points in the dimension ";
  EXPECT_EQ(run.outcome.err, first + "1.\n" + first + "2.\n");
  EXPECT_EQ(run.result(), "4 5 14");
}

TEST(BoxIntegration, ABoxThatReachesOutsideThePlaneEndsTheRunWithStatusZero) {
  const struct {
    int a, b;
    bool fits;
  } rows[] = {{2, 1, true}, {1, 1, false}, {13, 10, true}, {14, 10, false}, {2, 0, false}, {13, 11, false}};
  for (const auto& row : rows) {
    const OnePeak run(planeOf({{row.a, row.b, 8}}), row.a, row.a, row.b, row.b, "BOXSIZE 2 1\n");
    EXPECT_EQ(run.outcome.status, 0);
    const std::string place = "(" + std::to_string(row.a) + "," + std::to_string(row.b) + ")";
    EXPECT_EQ(run.outcome.err, row.fits ? ""
                                        : "ERROR: Box for peak #0 centered at " + place +
                                              " --\n\tBox extends outside bounds of data array!\n");
    EXPECT_EQ(run.result() == "none", !row.fits) << place;
  }
}

TEST(BoxIntegration, AnAreaAcrossTheEdgeIsSearchedInsideThePlane) {
  EXPECT_EQ(OnePeak(planeOf({{15, 11, 8}}), 14.5, 16, 10.5, 12, "BOXSIZE 0\n").result(), "0 0 8");
  EXPECT_EQ(OnePeak(planeOf({{3, 3, 8}}), -40, 60, -40, 60, "BOXSIZE 0\n").result(), "12 8 8");
}

TEST(Folding, PeaksOutsideTheWindowAreMovedByWholeSizes) {
  const std::string warning = "WARNING: Peak 0 folded ";
  const struct {
    double low1, low2;
    std::string err;
  } rows[] = {
      {0, 0, ""},
      {14, 10, ""},
      {-2.5, 0, warning + "1 times in the direct dimension.\n"},
      {-20, 22.5, warning + "2 times in the direct dimension.\n" + warning + "2 times in the indirect dimension.\n"},
      {16 * 99999 + 3, 3, warning + "99999 times in the direct dimension.\n"},
  };
  for (const auto& row : rows) {
    const OnePeak run(planeOf({}), row.low1, row.low1 + 2, row.low2, row.low2 + 2, "BOXSIZE 0\n");
    EXPECT_EQ(run.outcome.err, row.err);
    EXPECT_EQ(run.outcome.status, 0);
  }
}

TEST(Folding, FarOffPeaksEndWhereSingleStepsTakeThem) {
  std::mt19937 random(7);
  const auto draw = [&] { return static_cast<double>(random()) / 4294967296.0; };
  const ScratchFolder folder;
  testing::internal::CaptureStderr();
  for (int k = 0; k < 400; ++k) {
    // From 2^53 on, which only the largest sizes reach, the step itself rounds; elsewhere the edge that is left behind
    // does as it grows.
    const bool large = k % 20 == 0;
    const double size =
        large ? 2147483647 - std::floor(1000 * draw()) : 1 + std::floor(draw() * (k % 2 == 0 ? 700 : 1e7));
    const double centre = (2 * draw() - 1) * size * std::exp2(large ? 24 : std::floor(20 * draw()));
    const double width = draw() * size * std::exp2(std::floor(12 * draw()));

    std::string header = writeView({{1, 1, 0, 0}, {1, 1, 1, 0}, [](int, int) { return 0.0f; }});
    putWord(header, 1024, static_cast<std::uint32_t>(size), false);
    putReal(header, 1024 + 28, static_cast<float>(0.7 * size), false);
    std::istringstream file(header);
    Spectrum spectrum;
    spectrum.readViewHeader(file);
    folder.write("p", examplePeakHeader() + examplePeakLine("1", "x", std::to_string(-0.7 * centre),
                                                            std::to_string(0.7 * width), "0", "0"));
    PeakList peaks;
    peaks.read((folder.path() / "p").c_str(), spectrum, false);
    BoxTable boxes(1, 1, 1);
    boxes.placeBoxes(spectrum, peaks);

    double low = peaks.getPosition(0, 0) - 0.5 * peaks.getBoundsWidth(0, 0);
    double high = peaks.getPosition(0, 0) + 0.5 * peaks.getBoundsWidth(0, 0);
    while (low < 0) low += size, high += size;
    while (high > size) low -= size, high -= size;
    ASSERT_EQ(boxes.getExtent1(0).low, low) << size << " " << centre << " " << width;
    ASSERT_EQ(boxes.getExtent1(0).high, high) << size << " " << centre << " " << width;
  }
  testing::internal::GetCapturedStderr();
}

TEST(Folding, APositionThatIsNoPlaceIsRefused) {
  for (const char* ppm : {"nan", "inf", "-1e38", "3.5e10"}) {
    const ScratchFolder folder;
    writeExample(folder);
    folder.write("peaks.xpk", examplePeakHeader() + examplePeakLine("1", "x", "5", "2", ppm, "2"));
    const Outcome outcome = folder.run("peakbox -i run.par -o report");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "ERROR: Peak 0 has no valid position in dimension 2.\n") << ppm;
  }
}

}  // namespace
}  // namespace peakbox::test
