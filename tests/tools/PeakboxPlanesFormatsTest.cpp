#include <gtest/gtest.h>

#include <vector>

#include "demo/StackWriter.h"
#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Files = std::map<std::string, std::string>;

/// The example's plane, or three of it, in these tiles.
Stack stack(const std::vector<int>& tiles = {5, 7}) { return {.plane = examplePlane(), .tiles = tiles}; }
Stack cube(const std::vector<std::size_t>& roles, const std::vector<int>& tiles) {
  return {.plane = examplePlane(), .planeCount = 3, .roles = roles, .tiles = tiles};
}

TEST(PeakboxPlanes, AreTheSameFromOtherFormats) {
  struct Row {
    std::string name;
    Files files;
    std::string file;
    int count = 1;
    std::string message = "";
  };
  Stack slow = cube({1, 0, 2}, {5, 2, 7});
  Stack little = stack({12, 16});
  Stack doubles = stack();
  slow.delayMHz = 100;
  const std::string bySize =
      "peakbox-planes: u: no frequency tells the axis of the delays: the planes are those of the two longer ones\n";
  little.isBig = false;
  doubles.isDouble = true;
  const Row rows[] = {
      {"UCSF in padded tiles", {{"u", writeUcsf(stack())}}, "u"},
      {"UCSF in one tile", {{"u", writeUcsf(stack({12, 16}))}}, "u"},
      {"UCSF, delays slowest", {{"u", writeUcsf(cube({0, 1, 2}, {2, 5, 7}))}}, "u", 3, bySize},
      {"UCSF, delays in the middle", {{"u", writeUcsf(cube({1, 0, 2}, {5, 3, 16}))}}, "u", 3, bySize},
      {"UCSF, delays fastest", {{"u", writeUcsf(cube({1, 2, 0}, {1, 7, 2}))}}, "u", 3, bySize},
      {"UCSF, delays by their size", {{"u", writeUcsf(slow)}}, "u", 3, bySize},
      {"Bruker, the folder", writeBruker(stack({4, 8})), "."},
      {"Bruker, little-endian", writeBruker(little), "2rr"},
      {"Bruker, padded doubles", writeBruker(doubles), "2rr"},
      {"Bruker, delays slowest", writeBruker(cube({0, 1, 2}, {1, 4, 8})), "3rrr", 3},
      {"Bruker, delays in the middle", writeBruker(cube({1, 0, 2}, {4, 3, 16})), ".", 3},
  };
  for (const Row& row : rows) {
    Files files = row.files;
    Plane plane = examplePlane();
    std::string command = "peakbox-planes -o new " + row.file +
                          " >lines && grep -v SPECT run.par >new.par && "
                          "grep -v \"^#\" lines >>new.par && peakbox -i new.par -o report";
    std::string report = kExampleField;
    for (int k = 1; k <= row.count; ++k) {
      const std::string name = "00" + std::to_string(k) + ".ft2";
      plane.value = [k](int i, int j) { return static_cast<float>(k) * examplePlane().value(i, j); };
      files[name] = writePipe(plane);
      command += " && cmp -i 2048 new/" + name + " " + name;
      const std::string sums[] = {std::to_string(k * 58), std::to_string(k * -62)};
      report += exampleTable(std::to_string(k) + ": new/" + name + "\n",
                             "  1\tA1\t10\t5\t" + sums[0] + "\n  2\tnoise2\t5\t8\t" + sums[1] + "\n");
    }
    EXPECT_EQ(runExample(files, "sh -c '" + command + "'"), outcome(0, row.message, report)) << row.name;
  }
}

TEST(PeakboxPlanes, OfOtherFormatsAreRefusedWhereTheyAreNotSure) {
  struct Row {
    std::string message;
    Files files;
    std::string file = "u";
  };
  const auto ucsf = [](std::size_t offset, const std::string& text) {
    return Files{{"u", writeUcsf(stack()).replace(offset, text.size(), text)}};
  };
  const auto bruker = [](const std::string& place, const std::string& value) {
    return writeBruker(stack(), {{place, value}});
  };
  const std::string zero(4, '\0');
  const Stack three = cube({0, 1, 2}, {1, 4, 8});
  const std::string give = "; give the folder pdata/N";
  const Row rows[] = {
      {"u: is cut inside its header", {{"u", writeUcsf(stack()).substr(0, 179)}}},
      {"u: is cut inside its header", {{"u", writeUcsf(stack()).substr(0, 400)}}},
      {"u: has 1692 bytes, and by its parameters it has 1696: it is cut", {{"u", writeUcsf(stack()).substr(0, 1692)}}},
      {"u: has 1697 bytes, and by its parameters it has 1696", {{"u", writeUcsf(stack()) + "x"}}},
      {"u: has 1696 bytes, and by its parameters it has 179637007636: it is cut", ucsf(188, "\x7f\x77\x77\x77")},
      {"u: is not of version 2 of the format", ucsf(13, "\1")},
      {"u: is not real: it has several components", ucsf(11, "\2")},
      {"u: has 4 dimensions, and only two or three can be read", ucsf(10, "\4")},
      {"u: axis 1 has no points, or tiles without points", ucsf(188, zero)},
      {"u: axis 2 has no points, or tiles without points", ucsf(324, "\xff")},
      {"u: axis 2 has no sweep width or frequency above 0, or no reference", ucsf(328, zero)},
      {"u: axis 2 has no sweep width or frequency above 0, or no reference", ucsf(328, "\xc4")},
      {"u: axis 1 has no sweep width or frequency above 0, or no reference", ucsf(208, "\x7f\xc0")},
      {"u: its size or frequency is beyond those of planes of NMRPipe", ucsf(328, "\x3e")},
      {".: this is a folder without processed data, 2rr or 3rrr", {}, "."},
      {": has both 2rr and 3rrr; give the file", {{"2rr", ""}, {"3rrr", ""}}, ""},
      {": this is a whole experiment; give the folder pdata/N in it", {{"pdata", ""}}, ""},
      {"fid: has not been processed" + give + " or the 2rr in it", {{"fid", ""}}, "fid"},
      {"1r: has one dimension, and only two or three can be read", {{"1r", ""}}, "1r"},
      {"2ii: is an imaginary part; give the real one, 2rr or 3rrr", {{"2ii", ""}}, "2ii"},
      {"procs: there is no such file", {{"2rr", ""}, {"proc2s", ""}}, "2rr"},
      {"proc2s: this axis is not transformed (FT_mod is 0)", bruker("proc2s:FT_mod", "0"), "2rr"},
      {"procs: this axis is not transformed (FT_mod is 0)", writeBruker(three, {{"procs:FT_mod", "0"}}), "3rrr"},
      {"proc2s: this axis is not transformed (FT_mod is 0)", writeBruker(three, {{"proc2s:FT_mod", "0"}}), "3rrr"},
      {"procs: there is no number NC_proc", bruker("procs:NC_proc", ""), "2rr"},
      {"procs: NC_proc is beyond all measure", bruker("procs:NC_proc", "101"), "2rr"},
      {"procs: DTYPP is neither 0 nor 2", bruker("procs:DTYPP", "1"), "2rr"},
      {"procs: BYTORDP is no whole number", bruker("procs:BYTORDP", "0.5"), "2rr"},
      {"proc2s: there is no number SI", bruker("proc2s:SI", "<x>"), "2rr"},
      {"proc2s: SI or XDIM is no number of points", bruker("proc2s:SI", "0"), "2rr"},
      {"2rr: has 1260 bytes, and by its parameters it has 2940: it is cut", bruker("proc2s:SI", "35"), "2rr"},
      {"procs: this axis has no sweep width or frequency above 0, or no reference", bruker("procs:SF", "0"), "2rr"},
      {"proc2s: this axis has no sweep width or frequency above 0, or no reference", bruker("proc2s:SW_p", "-1800"),
       "2rr"},
      {"procs: there is no number OFFSET", bruker("procs:OFFSET", "nan"), "2rr"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(runExample(row.files,
                         "sh -c 'mkdir sub; cd sub; peakbox-planes -o new ../" + row.file + "; echo $?; ls new 2>&-'"),
              outcome(2, "peakbox-planes: ../" + row.message + "\n", "(no file)", "1\n"));
  }
}

TEST(PeakboxPlanes, SayThatDataAreMagnitudesOrHaveNoDelays) {
  const Stack three = cube({0, 1, 2}, {1, 4, 8});
  const std::pair<Files, std::string> rows[] = {
      {writeBruker(stack(), {{"proc2s:PH_mod", "2"}}),
       "proc2s: PH_mod is 2: these are magnitudes, whose noise is not around 0"},
      {writeBruker(three, {{"proc3s:FT_mod", "6"}}),
       "3rrr: all its axes are transformed: the planes are those of the two longer ones"},
  };
  for (const auto& [files, message] : rows) {
    EXPECT_EQ(runExample(files, "sh -c 'peakbox-planes -o new ./ >lines'"),
              outcome(0, "peakbox-planes: ./" + message + "\n"));
  }
  Stack many = cube({1, 0, 2}, {5, 2, 7});
  many.planeCount = 20;  // more than an axis of the planes has points
  many.plane.direct.observeMHz = 600;
  many.plane.indirect.observeMHz = 60.82F;
  EXPECT_EQ(runExample({{"u", writeUcsf(many)}}, "sh -c 'peakbox-planes -o new u | grep -c SPECTRUM'"),
            outcome(0, "", "(no file)", "20\n"));
}

}  // namespace
}  // namespace peakbox::test
