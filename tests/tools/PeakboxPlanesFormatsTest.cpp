#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Files = std::map<std::string, std::string>;
using Place = std::array<std::size_t, 3>;

/// How one plane of the example, or three of them, of which plane k has k times its values, are stored: `roles` says of
/// each axis, the slowest first, whether it is the planes (0), the indirect (1) or the direct dimension (2).
struct Form {
  std::vector<std::size_t> roles{1, 2};
  std::vector<std::size_t> tiles{5, 7};
  float delayMHz = 1;
  bool isBig = true;
  bool isDouble = false;
};

constexpr Place kSizes{3, 12, 16};

template <typename Number>
void appendNumber(std::string& bytes, Number number, bool isBig) {
  char text[sizeof number];
  std::memcpy(text, &number, sizeof number);
  if (isBig != (std::endian::native == std::endian::big)) std::reverse(text, text + sizeof number);
  bytes.append(text, sizeof number);
}

/// The data by their place among tiles, where padding is 1e6; `append` takes a value.
template <typename Append>
void writeTiles(const Form& form, const Append& append) {
  const Plane plane = examplePlane();
  Place sizes{1, 1, 1};
  Place tiles{1, 1, 1};
  Place roles{0, 0, 0};
  const std::size_t before = 3 - form.roles.size();
  for (std::size_t n = before; n < 3; ++n) {
    roles[n] = form.roles[n - before];
    sizes[n] = kSizes[roles[n]];
    tiles[n] = form.tiles[n - before];
  }
  const std::size_t tilePoints = tiles[0] * tiles[1] * tiles[2];
  const auto writeTile = [&](const Place& start) {
    for (std::size_t n = 0; n < tilePoints; ++n) {
      const Place inside{n / tiles[2] / tiles[1], n / tiles[2] % tiles[1], n % tiles[2]};
      std::array<int, 3> point{};
      bool isInside = true;
      for (std::size_t a = 0; a < 3; ++a) {
        isInside = isInside && start[a] + inside[a] < sizes[a];
        if (a >= before) point[roles[a]] = static_cast<int>(start[a] + inside[a]);
      }
      append(isInside ? plane.value(point[2], point[1]) * static_cast<float>(point[0] + 1) : 1e6F);
    }
  };
  for (std::size_t i = 0; i < sizes[0]; i += tiles[0]) {
    for (std::size_t j = 0; j < sizes[1]; j += tiles[1]) {
      for (std::size_t k = 0; k < sizes[2]; k += tiles[2]) writeTile({i, j, k});
    }
  }
}

std::string writeUcsf(const Form& form) {
  std::string bytes = std::string("UCSF NMR\0\0", 10) + static_cast<char>(form.roles.size());
  bytes.append({1, 0, 2}).resize(180);
  for (std::size_t n = 0; n < form.roles.size(); ++n) {
    const std::size_t role = form.roles[n];
    std::string axis = role == 0 ? "tau" : role == 1 ? "15N" : "1H";
    axis.resize(8);
    for (const std::size_t number : {kSizes[role], std::size_t{0}, form.tiles[n]}) {
      appendNumber(axis, static_cast<std::uint32_t>(number), true);
    }
    const std::array<float, 3> words[] = {{form.delayMHz, 1, 0}, {50, 600, 5}, {100, 1600, 7}};
    for (const float word : words[role]) appendNumber(axis, word, true);
    axis.resize(128);
    bytes += axis;
  }
  writeTiles(form, [&](float value) { appendNumber(bytes, value, true); });
  return bytes;
}

/// The files of a Bruker folder; a parameter in `changes`, "procs:SI" for instance, replaces the right one.
Files writeBruker(const Form& form, const Files& changes = {}) {
  Files files;
  std::string& bytes = files[form.roles.size() == 2 ? "2rr" : "3rrr"];
  writeTiles(form, [&](float value) {
    form.isDouble ? appendNumber(bytes, double{value}, form.isBig)
                  : appendNumber(bytes, static_cast<std::int32_t>(4 * value), form.isBig);
  });
  const char* const names[] = {"procs", "proc2s", "proc3s"};
  for (std::size_t n = 0; n < form.roles.size(); ++n) {
    const std::size_t role = form.roles[n];
    const std::string name = names[form.roles.size() - 1 - n];
    Files values{{"SI", std::to_string(kSizes[role])},
                 {"XDIM", form.tiles[n] == kSizes[role] ? "0" : std::to_string(form.tiles[n])},
                 {"BYTORDP", form.isBig ? "1" : "0"},
                 {"DTYPP", form.isDouble ? "2" : "0"},
                 {"NC_proc", "-2"},
                 {"FT_mod", role == 0 ? "0" : "6"},
                 {"SF", role == 1 ? "50" : "100"},
                 {"SW_p", role == 1 ? "600" : "1600.0"},
                 {"OFFSET", role == 1 ? "11" : "15"},
                 {"AXNUC", role == 1 ? "<15N>" : "<1H>"}};
    for (const auto& [place, value] : changes) {
      if (place.starts_with(name + ":")) values[place.substr(name.size() + 1)] = value;
    }
    for (const auto& [key, value] : values) {
      if (!value.empty()) files[name] += "##$" + key + "= " + value + "\r\n";
    }
  }
  return files;
}

TEST(PeakboxPlanes, AreTheSameFromOtherFormats) {
  struct Row {
    std::string name;
    Files files;
    std::string file;
    int count = 1;
  };
  const Row rows[] = {
      {"UCSF in padded tiles", {{"u", writeUcsf({})}}, "u"},
      {"UCSF in one tile", {{"u", writeUcsf({.tiles = {12, 16}})}}, "u"},
      {"UCSF, delays slowest", {{"u", writeUcsf({.roles = {0, 1, 2}, .tiles = {2, 5, 7}})}}, "u", 3},
      {"UCSF, delays in the middle", {{"u", writeUcsf({.roles = {1, 0, 2}, .tiles = {5, 3, 16}})}}, "u", 3},
      {"UCSF, delays fastest", {{"u", writeUcsf({.roles = {1, 2, 0}, .tiles = {1, 7, 2}})}}, "u", 3},
      {"UCSF, delays by their size",
       {{"u", writeUcsf({.roles = {1, 0, 2}, .tiles = {5, 2, 7}, .delayMHz = 100})}},
       "u",
       3},
      {"Bruker, the folder", writeBruker({.tiles = {4, 8}}), "."},
      {"Bruker, little-endian", writeBruker({.tiles = {12, 16}, .isBig = false}), "2rr"},
      {"Bruker, padded doubles", writeBruker({.isDouble = true}), "2rr"},
      {"Bruker, delays slowest", writeBruker({.roles = {0, 1, 2}, .tiles = {1, 4, 8}}), "3rrr", 3},
      {"Bruker, delays in the middle", writeBruker({.roles = {1, 0, 2}, .tiles = {4, 3, 16}}), ".", 3},
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
    EXPECT_EQ(runExample(files, "sh -c '" + command + "'"), outcome(0, "", report)) << row.name;
  }
}

TEST(PeakboxPlanes, OfOtherFormatsAreRefusedWhereTheyAreNotSure) {
  struct Row {
    std::string message;
    Files files;
    std::string file = "u";
  };
  const auto ucsf = [](std::size_t offset, const std::string& text) {
    return Files{{"u", writeUcsf({}).replace(offset, text.size(), text)}};
  };
  const auto bruker = [](const std::string& place, const std::string& value) {
    return writeBruker({}, {{place, value}});
  };
  const std::string zero(4, '\0');
  const Form cube{.roles = {0, 1, 2}, .tiles = {1, 4, 8}};
  const std::string give = "; give the folder pdata/N";
  const Row rows[] = {
      {"u: is cut inside its header", {{"u", writeUcsf({}).substr(0, 179)}}},
      {"u: is cut inside its header", {{"u", writeUcsf({}).substr(0, 400)}}},
      {"u: has 1692 bytes, and by its parameters it has 1696: it is cut", {{"u", writeUcsf({}).substr(0, 1692)}}},
      {"u: has 1697 bytes, and by its parameters it has 1696", {{"u", writeUcsf({}) + "x"}}},
      {"u: has 1696 bytes, and by its parameters it has 179637007636: it is cut", ucsf(188, "\x7f\x77\x77\x77")},
      {"u: is not of version 2 of the format", ucsf(13, "\1")},
      {"u: is not real: it has several components", ucsf(11, "\2")},
      {"u: has 4 dimensions, and only two or three can be read", ucsf(10, "\4")},
      {"u: axis 1 has no points, or tiles without points", ucsf(188, zero)},
      {"u: axis 2 has no points, or tiles without points", ucsf(324, "\xff")},
      {"u: axis 2 has no sweep width, no frequency or no reference", ucsf(328, zero)},
      {"u: axis 1 has no sweep width, no frequency or no reference", ucsf(208, "\x7f\xc0")},
      {"u: its size or frequency is beyond those of planes of NMRPipe", ucsf(328, "\x3e")},
      {".: this is a folder without processed data, 2rr or 3rrr", {}, "."},
      {": has both 2rr and 3rrr; give the file", {{"2rr", ""}, {"3rrr", ""}}, ""},
      {": this is a whole experiment; give the folder pdata/N in it", {{"pdata", ""}}, ""},
      {"fid: has not been processed" + give + " or the 2rr in it", {{"fid", ""}}, "fid"},
      {"1r: has one dimension, and only two or three can be read", {{"1r", ""}}, "1r"},
      {"2ii: is an imaginary part; give the real one, 2rr or 3rrr", {{"2ii", ""}}, "2ii"},
      {"procs: cannot be read", {{"2rr", ""}, {"proc2s", ""}}, "2rr"},
      {"proc2s: this axis is not transformed (FT_mod is 0)", bruker("proc2s:FT_mod", "0"), "2rr"},
      {"procs: this axis is not transformed (FT_mod is 0)", writeBruker(cube, {{"procs:FT_mod", "0"}}), "3rrr"},
      {"proc2s: this axis is not transformed (FT_mod is 0)", writeBruker(cube, {{"proc2s:FT_mod", "0"}}), "3rrr"},
      {"procs: there is no number NC_proc", bruker("procs:NC_proc", ""), "2rr"},
      {"procs: NC_proc is beyond all measure", bruker("procs:NC_proc", "101"), "2rr"},
      {"procs: DTYPP is neither 0 nor 2", bruker("procs:DTYPP", "1"), "2rr"},
      {"procs: BYTORDP is no whole number", bruker("procs:BYTORDP", "0.5"), "2rr"},
      {"proc2s: there is no number SI", bruker("proc2s:SI", "<x>"), "2rr"},
      {"proc2s: SI or XDIM is no number of points", bruker("proc2s:SI", "0"), "2rr"},
      {"2rr: has 1260 bytes, and by its parameters it has 2940: it is cut", bruker("proc2s:SI", "35"), "2rr"},
      {"procs: this axis has no sweep width, no frequency or no reference", bruker("procs:SF", "0"), "2rr"},
      {"procs: there is no number OFFSET", bruker("procs:OFFSET", "nan"), "2rr"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(runExample(row.files,
                         "sh -c 'mkdir sub; cd sub; peakbox-planes -o new ../" + row.file + "; echo $?; ls new 2>&-'"),
              outcome(2, "peakbox-planes: ../" + row.message + "\n", "(no file)", "1\n"));
  }
}

TEST(PeakboxPlanes, SayThatDataAreMagnitudesOrHaveNoDelays) {
  const Form cube{.roles = {0, 1, 2}, .tiles = {1, 4, 8}};
  const std::pair<Files, std::string> rows[] = {
      {writeBruker({}, {{"proc2s:PH_mod", "2"}}),
       "proc2s: PH_mod is 2: these are magnitudes, whose noise is not around 0"},
      {writeBruker(cube, {{"proc3s:FT_mod", "6"}}),
       "3rrr: all its axes are transformed: the planes are those of the two longer ones"},
  };
  for (const auto& [files, message] : rows) {
    EXPECT_EQ(runExample(files, "sh -c 'peakbox-planes -o new ./ >lines'"),
              outcome(0, "peakbox-planes: ./" + message + "\n"));
  }
}

}  // namespace
}  // namespace peakbox::test
