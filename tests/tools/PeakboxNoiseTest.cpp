#include <gtest/gtest.h>

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
/// along the direct dimension. So many peaks go with it.
Plane makePlane(bool alike, int peaks) {
  std::mt19937 generator(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same in every run
  std::normal_distribution<double> gaussian(0, 100);
  std::vector<double> values(256 * 128 + 1);
  for (double& value : values) value = gaussian(generator);
  return planeOf(256, 128, [=](int i, int j) {
    const auto n = static_cast<std::size_t>(256 * j + i);
    double value = 2000 + values[n] + (alike ? values[n + 1] : 0);
    for (int k = 0; k < peaks; ++k) {
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
  for (const auto& [alike, peaks] : {std::pair{false, 0}, {false, 6}, {true, 0}, {true, 6}}) {
    const std::string bytes = alike ? writeView(makePlane(alike, peaks)) : writePipe(makePlane(alike, peaks));
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 1}, {1, 5}, {5, 3}, {7, 5}}) {
      const std::string size = std::to_string(width) + "x" + std::to_string(height);
      const std::string end = run(bytes, std::to_string(width / 2) + " " + std::to_string(height / 2));
      const std::string start =
          outcome(0, "", "(no file)", "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n1\t");
      EXPECT_TRUE(end.ends_with("\t" + size + "\ta.ft2\n")) << end;
      std::vector<double> numbers(4);
      std::istringstream line(end.starts_with(start) ? end.substr(start.size()) : "");
      for (double& number : numbers) line >> number;
      // How often each value is in a sum: once, or 1, 2, ..., 2, 1 times along the row.
      const double known = 100 * std::sqrt((alike ? 4 * width - 2 : width) * height);
      EXPECT_NEAR(numbers[0] / known, 1, width < 9 ? 0.08 : 0.12) << end;
      EXPECT_TRUE(numbers[1] > 0.01 * known && numbers[1] < 0.08 * known) << end;
      EXPECT_NEAR(numbers[2], 1, peaks > 0 ? 0.15 : 0.06) << end;
      EXPECT_NEAR(numbers[3] / 100, alike ? std::sqrt(2) : 1, 0.05) << end;
    }
  }
}

TEST(PeakboxNoise, SaysWhatIsWrong) {
  const auto mixed = [](int i, int j) { return static_cast<float>((i * 7919 + j * 104729) % 2001 + 1); };
  const auto infinite = [](int i, int j) { return i == 59 && j == 39 ? std::numeric_limits<float>::infinity() : 1; };
  const auto empty = [&](int i, int j) { return i < 52 ? 0 : mixed(i, j); };
  const auto write = [](const std::function<float(int, int)>& value) { return writePipe(planeOf(60, 40, value)); };
  Plane swapped = planeOf(60, 40, mixed);
  swapped.swapped = true;
  const std::string notice = "Correcting data for apparent byte-swap.\n";
  const auto bad = [](const std::string& text) { return "err:\npeakbox-noise: a.ft2: " + text; };
  const std::string few = " points (0 of 100): the plane is small, the box large, or nearly all zero or constant\n";
  const std::string signal = "signal among the noise (tail ";
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"a large box", write(mixed), "20", bad("too few values for the noise of a box of 41 x 41" + few)},
      {"a huge box", write(mixed), "2147483647", bad("too few values")},
      {"nearly empty", write(empty), "1", bad("too few values")},
      {"infinite", write(infinite), "1", bad("not all values are finite\n")},
      {"all alike", write([](int, int) { return 3.5f; }), "1", bad("too few values")},
      {"no list", write(mixed), "1\nPEAKLIST none", "err:\nERROR: Unable to open 'none'\n"},
      {"a short line", write(mixed), "1\nPEAKLIST short.xpk", "err:\nColumn index (17) exceeds maximum (3)\n"},
      {"other bytes", writePipe(swapped), "1\nSPECTRUM none",
       "err:\n" + notice + notice + "Unable to open datafile none\n"},
      {"some signal", writePipe(makePlane(false, 20)), "4", bad(signal)},
      {"few boxes", write(mixed), "3", bad("its noise is known to ")},
      {"much signal", writePipe(makePlane(false, 60)), "2", bad(signal)},
  };
  for (const auto& [name, bytes, parameters, err] : rows) {
    const std::string end = run(bytes, parameters);
    const std::string start = (name.ends_with("signal") || name == "few boxes" ? "status 0\n" : "status 1\n") + err;
    EXPECT_TRUE(end.starts_with(start)) << name << '\n' << end;
    EXPECT_EQ(end.find("by more than a tenth") != std::string::npos, name == "some signal") << name << '\n' << end;
  }
  EXPECT_EQ(runExample({}, "peakbox-noise"), outcome(2, "usage: peakbox-noise PARAMETER-FILE\n"));
}

}  // namespace
}  // namespace peakbox::test
