#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

Plane planeOf(int size1, int size2, const std::function<float(int, int)>& value) {
  return {.direct = {.size = size1, .observeMHz = 100, .sweepWidthHz = 25600, .tile = 60},
          .indirect = {.size = size2, .observeMHz = 50, .sweepWidthHz = 6400, .tile = 50},
          .value = value};
}

/// 256 x 128 points of noise of standard deviation 100, on an offset. With `alike` each one is added to the next one
/// along the direct dimension. Twenty peaks go with it or none.
Plane makePlane(bool alike, bool hasPeaks) {
  std::mt19937 generator(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same in every run
  std::normal_distribution<double> gaussian(0, 100);
  std::vector<double> values(256 * 128 + 1);
  for (double& value : values) value = gaussian(generator);
  return planeOf(256, 128, [=](int i, int j) {
    const auto n = static_cast<std::size_t>(256 * j + i);
    double value = 2000 + values[n] + (alike ? values[n + 1] : 0);
    for (int k = 0; hasPeaks && k < 20; ++k) {
      const double distance = std::pow((i - 20 - k * 53 % 220) / 3.0, 2) + std::pow((j - 10 - k * 31 % 110) / 2.0, 2);
      value += (k % 3 == 0 ? -1e5 : 1e5) * std::exp(-distance / 2);
    }
    return static_cast<float>(value);
  });
}

std::string run(const std::string& bytes, const std::string& box) {
  const std::string parameters = "PEAKLIST peaks.xpk\nSPECTRUM a.ft2\nBOXSIZE " + box + "\n";
  return runExample({{"a.ft2", bytes}, {"run.par", parameters}, {"short.xpk", examplePeakHeader() + "1 {x} 10\n"}},
                    "peakbox-noise run.par");
}

TEST(PeakboxNoise, IsThatOfTheGenerator) {
  for (const auto& [alike, hasPeaks] : {std::pair{false, false}, {false, true}, {true, false}, {true, true}}) {
    const std::string bytes = alike ? writeView(makePlane(alike, hasPeaks)) : writePipe(makePlane(alike, hasPeaks));
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 1}, {1, 5}, {5, 3}, {9, 9}}) {
      const std::string end = run(bytes, std::to_string(width / 2) + " " + std::to_string(height / 2));
      const std::string start = outcome(0, "", "(no file)", "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed\n1\t");
      std::vector<double> numbers(4);
      std::istringstream line(end.starts_with(start) ? end.substr(start.size()) : "");
      for (double& number : numbers) line >> number;
      // How often each value is in a sum: once, or 1, 2, ..., 2, 1 times along the row.
      const double known = 100 * std::sqrt((alike ? 4 * width - 2 : width) * height);
      const std::string name = end + std::to_string(width) + " x " + std::to_string(height);
      EXPECT_NEAR(numbers[0] / known, 1, width < 9 ? 0.08 : 0.15) << name;
      EXPECT_NEAR(numbers[1] / 100, alike ? std::sqrt(2) : 1, 0.1) << name;
      EXPECT_EQ(numbers[2], 256 / width * (128 / height)) << name;
      EXPECT_TRUE(hasPeaks ? numbers[3] < 0.98 * numbers[2] : numbers[3] > 0.98 * numbers[2]) << name;
    }
  }
}

TEST(PeakboxNoise, SaysWhatIsWrong) {
  const auto mixed = [](int i, int j) { return static_cast<float>((i * 7919 + j * 104729) % 2001 + 1); };
  const auto infinite = [](int i, int j) { return i == 59 && j == 39 ? std::numeric_limits<float>::infinity() : 1; };
  const auto halfEmpty = [&](int i, int j) { return i < 30 ? 0 : mixed(i, j); };
  // From their mean 7 these deviate by 3 to one side and by the root of 2.5 to the other.
  const auto oneSided = [](int i, int j) { return std::array{5.0f, 6.0f, 10.0f}[static_cast<std::size_t>(i + j) % 3]; };
  const auto write = [](const std::function<float(int, int)>& value) { return writePipe(planeOf(60, 40, value)); };
  Plane swapped = planeOf(60, 40, mixed);
  swapped.swapped = true;
  const std::string notice = "Correcting data for apparent byte-swap.\n";
  const std::string signal = ", so signal may be in the estimate\n";
  const auto bad = [](const std::string& text) { return "err:\npeakbox-noise: a.ft2: " + text; };
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"24 boxes", write(mixed), "4", bad("only 24 of 24 boxes are left, and the noise needs at least 100\n")},
      {"large boxes", write(mixed), "99", bad("only 0 of 0 boxes are left, and the noise needs at least 100\n")},
      {"infinite", write(infinite), "1", bad("not all values are finite\n")},
      {"all alike", write([](int, int) { return 3.5f; }), "1", bad("the values have a spread of zero\n")},
      {"no list", write(mixed), "1\nPEAKLIST none", "err:\nERROR: Unable to open 'none'\n"},
      {"a short line", write(mixed), "1\nPEAKLIST short.xpk", "err:\nColumn index (17) exceeds maximum (3)\n"},
      {"other bytes", writePipe(swapped), "1\nSPECTRUM none",
       "err:\n" + notice + notice + "Unable to open datafile none\n"},
      {"half of it zero", write(halfEmpty), "1", bad("only 130 of 260 boxes are left" + signal)},
      {"one side", write(oneSided), "0",
       bad("the boxes scatter 1.9 times as far to one side as to the other" + signal)},
  };
  for (const auto& [name, bytes, parameters, err] : rows) {
    const std::string end = run(bytes, parameters);
    const std::string status = err.ends_with(signal) ? "status 0\n" : "status 1\n";
    EXPECT_EQ(end.substr(0, end.find("report:")), status + err) << name;
  }
  EXPECT_EQ(runExample({}, "peakbox-noise"), outcome(2, "usage: peakbox-noise PARAMETER-FILE\n"));
}

}  // namespace
}  // namespace peakbox::test
