#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

constexpr int kSize1 = 256;
constexpr int kSize2 = 128;
constexpr std::array<double, 5> kKernel{1 / 16.0, 4 / 16.0, 6 / 16.0, 4 / 16.0, 1 / 16.0};

using Values = std::vector<double>;

Values convolve(const Values& values, int step) {
  Values result(values.size());
  for (std::size_t n = 0; n < values.size(); ++n) {
    for (std::size_t k = 0; k < kKernel.size(); ++k) {
      result[n] += kKernel[k] * values[(n + k * static_cast<std::size_t>(step)) % values.size()];
    }
  }
  return result;
}

/// The variance of the sum of so many neighbours: of each original value the square of how often it is in the sum.
double varianceOfSum(int length, bool smooth) {
  Values weights(static_cast<std::size_t>(length) + 2 * kKernel.size());
  std::fill_n(weights.begin(), length, 1.0);
  if (smooth) weights = convolve(weights, 1);
  double sum = 0;
  for (const double weight : weights) sum += weight * weight;
  return sum;
}

/// Noise of standard deviation 100 per point, before it is smoothed, on an offset, and twenty strong peaks.
Plane makePlane(bool smooth, bool hasPeaks) {
  std::mt19937 generator(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same in every run
  std::normal_distribution<double> gaussian(0, 100);
  Values values(static_cast<std::size_t>(kSize1 * kSize2));
  for (double& value : values) value = gaussian(generator);
  if (smooth) values = convolve(convolve(values, 1), kSize1);
  for (int n = 0; hasPeaks && n < 20; ++n) {
    const int i0 = 20 + n * 53 % 220;
    const int j0 = 10 + n * 31 % 110;
    for (int i = i0 - 12; i <= i0 + 12; ++i) {
      for (int j = j0 - 9; j <= j0 + 9; ++j) {
        const double distance = std::pow((i - i0) / 3.0, 2) + std::pow((j - j0) / 2.0, 2);
        values[static_cast<std::size_t>(j * kSize1 + i)] += (n % 3 == 0 ? -1e5 : 1e5) * std::exp(-distance / 2);
      }
    }
  }
  return {
      .direct = {.size = kSize1, .observeMHz = 100, .sweepWidthHz = 25600, .tile = 60},
      .indirect = {.size = kSize2, .observeMHz = 50, .sweepWidthHz = 6400, .tile = 50},
      .value = [values](int i, int j) { return static_cast<float>(values[static_cast<std::size_t>(j * kSize1 + i)]); }};
}

std::string parametersWith(const std::string& box) {
  return "PEAKLIST peaks.xpk\nBOXSIZE " + box + "\nSPECTRUM a.ft2\n";
}

TEST(PeakboxNoise, IsThatOfTheGenerator) {
  for (const bool smooth : {false, true}) {
    for (const bool hasPeaks : {false, true}) {
      const std::string bytes =
          smooth ? writeView(makePlane(smooth, hasPeaks)) : writePipe(makePlane(smooth, hasPeaks));
      for (const auto& [half1, half2] : {std::pair{0, 0}, {1, 0}, {0, 2}, {2, 1}, {2, 2}, {4, 4}}) {
        const std::string box = std::to_string(half1) + " " + std::to_string(half2);
        const std::string end =
            runExample({{"a.ft2", bytes}, {"run.par", parametersWith(box)}}, "peakbox-noise run.par");
        const std::string start = outcome(0, "", "(no file)", "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed\n");
        ASSERT_TRUE(end.starts_with(start)) << end;
        std::istringstream line(end.substr(start.size()));
        double number = 0;
        double boxNoise = 0;
        double pointNoise = 0;
        int boxes = 0;
        int used = 0;
        line >> number >> boxNoise >> pointNoise >> boxes >> used;
        const double known =
            100 * std::sqrt(varianceOfSum(2 * half1 + 1, smooth) * varianceOfSum(2 * half2 + 1, smooth));
        EXPECT_EQ(boxes, kSize1 / (2 * half1 + 1) * (kSize2 / (2 * half2 + 1)));
        EXPECT_NEAR(boxNoise / known, 1, boxes < 500 ? 0.15 : 0.08) << box << ' ' << smooth << hasPeaks;
        EXPECT_NEAR(pointNoise / (100 * varianceOfSum(1, smooth)), 1, 0.08);
        EXPECT_TRUE(hasPeaks ? used < 0.98 * boxes : used > 0.98 * boxes) << box << ' ' << used;
      }
    }
  }
}

/// Of 60 x 40 points, which give 260 boxes of 3 x 3.
std::string writeSmall(const std::function<float(int, int)>& change) {
  Plane plane = makePlane(false, false);
  plane.direct.size = 60;
  plane.indirect.size = 40;
  plane.value = [change, noise = plane.value](int i, int j) { return noise(i, j) + change(i, j); };
  return writePipe(plane);
}

TEST(PeakboxNoise, IsRefusedWhereItWouldBeWrong) {
  const auto nothing = [](int, int) { return 0.0f; };
  const auto oneInfinite = [](int i, int j) { return i == 59 && j == 39 ? std::numeric_limits<float>::infinity() : 0; };
  const auto bad = [](const std::string& text) { return "peakbox-noise: a.ft2: " + text + "\n"; };
  Plane constant = makePlane(false, false);
  constant.value = [](int, int) { return 3.5f; };
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {writeSmall(nothing), parametersWith("4"), bad("only 24 of 24 boxes are left, and the noise needs at least 100")},
      {writeSmall(nothing), parametersWith("99"), bad("only 0 of 0 boxes are left, and the noise needs at least 100")},
      {writeSmall(oneInfinite), parametersWith("1"), bad("not all values are finite")},
      {writePipe(constant), parametersWith("4"), bad("the values have a spread of zero")},
      {writeSmall(nothing), "PEAKLIST peaks.xpk\nSPECTRUM a.ft2\n", "ERROR: No BOXSIZE specified.\n"},
      {writeSmall(nothing), "PEAKLIST none\nBOXSIZE 1\nSPECTRUM a.ft2\n", "ERROR: Unable to open 'none'\n"},
      {writeSmall(nothing), parametersWith("1") + "SPECTRUM none\n", "Unable to open datafile none\n"},
  };
  for (const auto& [bytes, parameters, message] : rows) {
    EXPECT_EQ(runExample({{"a.ft2", bytes}, {"run.par", parameters}}, "peakbox-noise run.par"), outcome(1, message));
  }
  EXPECT_EQ(runExample({}, "peakbox-noise"), outcome(2, "usage: peakbox-noise PARAMETER-FILE\n"));
}

TEST(PeakboxNoise, SaysWhereSignalMayBeInIt) {
  // 100 of the 260 boxes have signals of many sizes.
  const auto signals = [](int i, int j) { return i < 30 ? static_cast<float>(i * 9973 + j * 7919 % 4001) : 0; };
  const auto zeros = [](int i, int j) { return i < 30 ? 0.0f : static_cast<float>((i * 7919 + j * 104729) % 2001); };
  Plane halfEmpty = makePlane(false, false);
  halfEmpty.direct.size = 60;
  halfEmpty.indirect.size = 40;
  halfEmpty.value = zeros;
  // An eighth of the points is 3 standard deviations up.
  Plane lopsided = makePlane(false, false);
  lopsided.value = [noise = lopsided.value](int i, int j) { return noise(i, j) + (i % 8 == 0 ? 300.0f : 0.0f); };
  const std::string warned =
      runExample({{"a.ft2", writePipe(lopsided)}, {"run.par", parametersWith("0")}}, "peakbox-noise run.par");
  EXPECT_NE(warned.find("times as far to one side as to the other, so signal may be in the estimate\n"),
            std::string::npos)
      << warned;
  for (const std::string& bytes : {writeSmall(signals), writePipe(halfEmpty)}) {
    const std::string end =
        runExample({{"a.ft2", bytes}, {"run.par", parametersWith("1")}}, "peakbox-noise run.par 3>&1 >/dev/null");
    EXPECT_EQ(end.find("status 0\nerr:\npeakbox-noise: a.ft2: only 1"), 0) << end;
    EXPECT_NE(end.find(" of 260 boxes are left, so signal may be in the estimate\n"), std::string::npos) << end;
  }
}

}  // namespace peakbox::test
