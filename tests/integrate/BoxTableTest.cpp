#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

/// A value of a plane that is 0 elsewhere.
struct Value {
  int i;
  int j;
  float value;
};

/// The area that a peak is searched in, in points.
struct Area {
  double low1;
  double high1;
  double low2;
  double high2;
};

/// Searches `area` of a plane of 64 x 48 points, one ppm each, and sums a box of 5 x 3 points: point i lies at 63 - i
/// ppm, and in the other dimension point j at 47 - j ppm.
std::string measure(const std::vector<Value>& values, const Area& area, const std::string& options = "",
                    const std::string& label = "x") {
  const auto value = [&](int i, int j) {
    for (const Value& known : values) {
      if (known.i == i && known.j == j) return known.value;
    }
    return 0.0f;
  };
  const Plane plane{.direct = {.size = 64, .observeMHz = 100, .sweepWidthHz = 6400},
                    .indirect = {.size = 48, .observeMHz = 50, .sweepWidthHz = 2400},
                    .value = value};
  const std::string peak = examplePeakLine({.label = label,
                                            .ppm1 = std::to_string(63 - (area.low1 + area.high1) / 2),
                                            .width1 = std::to_string(area.high1 - area.low1),
                                            .ppm2 = std::to_string(47 - (area.low2 + area.high2) / 2),
                                            .width2 = std::to_string(area.high2 - area.low2)});
  return runExample({{"run.par", "BOXSIZE 2 1\nPEAKLIST peaks.xpk\nSPECTRUM a.ft2\n"},
                     {"a.ft2", writePipe(plane)},
                     {"peaks.xpk", examplePeakHeader() + peak}},
                    "peakbox " + options + " -i run.par -o report");
}

/// What a run leaves that found its peak at point (i, j) and this sum.
std::string found(int i, int j, const std::string& sum, const std::string& err = "", const std::string& label = "x") {
  const std::string place = std::to_string(63 - i) + "\t" + std::to_string(47 - j);
  return outcome(0, err, exampleTable("1: a.ft2\n", "  1\t" + label + "\t" + place + "\t" + sum + "\n"));
}

struct Row {
  std::string rule;
  std::vector<Value> values;
  Area area;
  std::string end;
};

void expectRows(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(measure(row.values, row.area), row.end) << row.rule;
}

TEST(BoxTable, FindsThePointOfGreatestMagnitude) {
  const float inf = std::numeric_limits<float>::infinity();
  const std::tuple<std::string, std::vector<Value>, std::string> rows[] = {
      {"the greatest", {{11, 11, 3}, {12, 12, 5}}, found(12, 12, "8")},
      {"the most negative if it is greater", {{11, 11, 3}, {12, 12, -5}}, found(12, 12, "-2")},
      {"the positive one of two", {{11, 11, -3}, {12, 12, 3}}, found(12, 12, "0")},
      {"of equals the one with the least a", {{12, 11, 4}, {11, 13, 4}}, found(11, 13, "4")},
      {"and then with the least b", {{11, 13, 4}, {11, 11, 4}}, found(11, 11, "4")},
      {"of equal negative ones, too", {{12, 11, -4}, {11, 13, -4}}, found(11, 13, "-4")},
      {"of nothing the first point", {}, found(10, 10, "0")},
      {"NaN if it comes first", {{10, 10, NAN}, {12, 12, 9}}, found(10, 10, "nan")},
      {"NaN never else", {{11, 10, NAN}, {12, 12, 9}}, found(12, 12, "9")},
      {"of two infinities the negative one", {{11, 13, inf}, {12, 10, -inf}}, found(12, 10, "-inf")},
  };
  for (const auto& [rule, values, end] : rows) EXPECT_EQ(measure(values, {10, 13, 10, 13}), end) << rule;
}

TEST(BoxTable, SearchesTheWholePointsOfTheArea) {
  const std::string noPoints = "WARNING: No data points are contained within the box for peak #0\n";
  const std::string widened = "The box was modified to contain the nearest two data points in the dimension ";
  const std::string warning1 = noPoints + widened + "1.\n";
  const std::vector<Value> beyond{{9, 10, 9}, {14, 10, 9}, {10, 9, 9}, {10, 14, 9}, {12, 12, 1}};
  expectRows({
      {"edges belong to it", {{10, 10, 3}, {13, 13, 4}}, {10, 13, 10, 13}, found(13, 13, "4")},
      {"what lies beyond does not", beyond, {9.1, 13.9, 9.1, 13.9}, found(12, 12, "1")},
      {"between two points both are",
       {{40, 26, 3}, {41, 26, 2}, {42, 26, 9}},
       {40.2, 40.8, 26, 26},
       found(40, 26, "14", warning1)},
      {"in both dimensions",
       {{41, 26, 3}},
       {40.2, 40.8, 25.2, 25.9},
       found(41, 26, "3", warning1 + noPoints + widened + "2.\n")},
      {"edges in the wrong order are exchanged", {{41, 26, 3}}, {43, 39, 26, 26}, found(41, 26, "3", warning1)},
  });
}

TEST(BoxTable, SumsTheBoxAndNothingBesideIt) {
  std::vector<Value> values{{20, 20, 100}};
  float power = 1;
  for (const auto& [i, j] : {std::pair{18, 19}, {22, 19}, {18, 21}, {22, 21}}) {
    values.push_back({i, j, power});
    power *= 2;
  }
  for (const auto& [i, j] : {std::pair{17, 20}, {23, 20}, {20, 18}, {20, 22}}) values.push_back({i, j, 1000});
  EXPECT_EQ(measure(values, {20, 20, 20, 20}), found(20, 20, "115"));
}

TEST(BoxTable, FoldsAnAreaIntoTheSpectrum) {
  const auto warn = [](int times, const std::string& dimension) {
    return "WARNING: Peak 0 folded " + std::to_string(times) + " times in the " + dimension + " dimension.\n";
  };
  const std::string far = warn(10000, "direct") + warn(2, "indirect");
  expectRows({
      {"up", {{53, 20, 6}}, {-12, -10, 20, 20}, found(53, 20, "6", warn(1, "direct"))},
      {"down", {{20, 3, 6}}, {20, 20, 49, 52}, found(20, 3, "6", warn(1, "indirect"))},
      {"as often as it takes", {{5, 38, 6}}, {640004, 640006, -59, -57}, found(5, 38, "6", far)},
      {"not if it ends at the size", {{61, 46, 7}}, {60, 64, 44, 48}, found(61, 46, "7")},
      // In memory (0, 46) and (0, 47) lie where the points behind the last of rows 45 and 46 would.
      {"nor beyond", {{61, 45, 7}, {0, 46, 9}, {0, 47, 9}}, {60, 64, 44, 46}, found(61, 45, "7")},
      {"not if it begins at 0", {{2, 1, 8}}, {0, 4, 0, 3}, found(2, 1, "8")},
      {"back from across point 0", {{2, 20, 8}}, {-3, 4, 20, 20}, found(2, 20, "8")},
      {"to the other end", {{2, 20, 8}, {61, 20, 9}}, {61, 66, 20, 20}, found(2, 20, "8", warn(1, "direct"))},
      {"below 0 if it is too wide", {{2, 39, 5}}, {-10, 70, 38, 41}, found(2, 39, "5", warn(1, "direct"))},
  });
}

TEST(BoxTable, WritesIntensitiesWithoutSignIfAsked) {
  const Area area{10, 13, 10, 13};
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"", "A12", "-5"}, {"-abs", "A12", "5"}, {"-abs", "Noise", "5"}, {"-abs", "bgnoise", "-5"}};
  for (const auto& [options, label, sum] : rows) {
    EXPECT_EQ(measure({{12, 12, -5}}, area, options, label), found(12, 12, sum, "", label)) << options << " " << label;
  }
}

TEST(BoxTable, ABoxThatLeavesThePlaneEndsTheRunWithStatusZero) {
  for (const auto& [i, j] : {std::pair{1, 20}, {62, 20}, {20, 0}, {20, 47}}) {
    const std::string head = "ERROR: Box for peak #0 centered at (" + std::to_string(i) + "," + std::to_string(j);
    const Area area{double(i), double(i), double(j), double(j)};
    EXPECT_EQ(measure({}, area), outcome(0, head + ") --\n\tBox extends outside bounds of data array!\n", ""));
  }
}

TEST(BoxTable, APeakWithoutAPlaceEndsTheRun) {
  const std::string noPlace = "ERROR: Peak 0 has no valid position in dimension ";
  EXPECT_EQ(measure({}, {NAN, NAN, 20, 20}), outcome(1, noPlace + "1.\n"));
  EXPECT_EQ(measure({}, {20, 20, 1.1e11, 1.1e11}), outcome(1, noPlace + "2.\n"));
  EXPECT_EQ(measure({}, {-1.4e11, -1.4e11, 20, 20}), outcome(1, noPlace + "1.\n"));
}

}  // namespace
}  // namespace peakbox::test
