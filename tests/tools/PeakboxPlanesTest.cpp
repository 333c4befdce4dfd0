#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

using Files = std::map<std::string, std::string>;

constexpr int kPlanes = 3;
constexpr int kSize1 = 16;
constexpr int kSize2 = 12;

float valueAt(int plane, int i, int j) { return static_cast<float>((i * 7 + j * 13 + plane * 5) % 31 * (plane + 1)); }

Plane makePlane(int number) {
  Plane plane = examplePlane();
  plane.value = [number](int i, int j) { return valueAt(number, i, j); };
  return plane;
}

void putNumber(std::string& bytes, std::size_t word, float number, bool isBig) {
  putReal(bytes, 4 * word, number, isBig);
}

/// How the planes are stored: the numbers of the axes, the fastest first, in one file or in one for each plane.
struct Form {
  std::array<int, 3> order{2, 1, 3};
  int dimensionCount = 3;
  bool isCube = false;
  bool isBig = false;
};

/// The header of a file of that form. The stacked axis is one of delays, neither transformed nor real.
std::string makeHeader(const Form& form) {
  constexpr std::size_t kWords[3][7] = {
      {229, 249, 218, 222, 55, 18}, {100, 101, 119, 220, 56, 16}, {11, 12, 10, 13, 51, 20}};
  const bool isTransposed = form.order[0] != 2;
  std::string bytes(2048, '\0');
  for (const std::size_t place : {0u, 1u, 2u}) {
    const int number = form.order[place];
    const auto& words = kWords[number - 1];
    const bool isDirect = number == 2;
    const float values[] = {isDirect ? 1600.0f : 600.0f, 0.0f, isDirect ? 100.0f : 50.0f, 1.0f, 1.0f};
    for (std::size_t n = 0; n < 5; ++n) putNumber(bytes, words[n], place == 2 ? 0 : values[n], form.isBig);
    bytes.replace(4 * words[5], 3, place == 2 ? "TAU" : isDirect ? "1H " : "15N");
    putNumber(bytes, 24 + place, static_cast<float>(number), form.isBig);
  }
  putNumber(bytes, 9, static_cast<float>(form.dimensionCount), form.isBig);
  putNumber(bytes, 27, 4, form.isBig);
  putNumber(bytes, 99, static_cast<float>(isTransposed ? kSize2 : kSize1), form.isBig);
  putNumber(bytes, 219, static_cast<float>(isTransposed ? kSize1 : kSize2), form.isBig);
  putNumber(bytes, 15, form.dimensionCount == 3 ? kPlanes : 1, form.isBig);
  putNumber(bytes, 221, form.dimensionCount == 2 && isTransposed ? 1 : 0, form.isBig);
  putNumber(bytes, 2, 2.345f, form.isBig);
  bytes.replace(1188, 6, "kept A");  // the title
  return bytes;
}

/// The files "in1" and so on.
Files writeForm(const Form& form) {
  const bool isTransposed = form.order[0] != 2;
  Files files;
  for (int plane = 0; plane < kPlanes; ++plane) {
    std::string& bytes = files[form.isCube ? "in1" : "in" + std::to_string(plane + 1)];
    if (bytes.empty()) bytes = makeHeader(form);
    for (int n = 0; n < kSize1 * kSize2; ++n) {
      const int i = isTransposed ? n / kSize2 : n % kSize1;
      const int j = isTransposed ? n % kSize2 : n / kSize1;
      bytes.append(4, '\0');
      putReal(bytes, bytes.size() - 4, valueAt(plane, i, j), form.isBig);
    }
  }
  return files;
}

const std::string kHead = "PEAKLIST peaks.xpk\nBOXSIZE 1\nTOLERANCE 100 50\n";
const std::string kLines = "SPECTRUM planes/001.ft2 0.01\nSPECTRUM planes/002.ft2 0.0005\nSPECTRUM planes/003.ft2 2\n";

TEST(PeakboxPlanes, GiveTheReportOfThePlanesThemselves) {
  const std::string expected =
      runExample({{"p1", writePipe(makePlane(0))},
                  {"p2", writePipe(makePlane(1))},
                  {"p3", writePipe(makePlane(2))},
                  {"run.par", kHead + kLines}},
                 "sh -c 'mkdir planes; for n in 1 2 3; do mv p$n planes/00$n.ft2; done; peakbox -i run.par -o report'");
  ASSERT_NE(expected.find("# SPECTRUM 3: planes/003.ft2\n# PARAMETERS: 2\n"), std::string::npos) << expected;
  const Form forms[] = {{},
                        {.dimensionCount = 2},
                        {.isBig = true},
                        {.isCube = true},
                        {.order = {2, 3, 1}},
                        {.order = {2, 3, 1}, .dimensionCount = 2},
                        {.order = {2, 3, 1}, .isCube = true, .isBig = true},
                        {.order = {3, 2, 1}, .isCube = true},
                        {.order = {1, 2, 3}, .isBig = true},
                        {.order = {1, 2, 3}, .dimensionCount = 2}};
  for (const Form& form : forms) {
    Files files = writeForm(form);
    files["vdlist"] = "10m\r\n500u\n\n2";
    files["head"] = kHead;
    EXPECT_EQ(
        runExample(files,
                   "sh -c 'peakbox-planes -l vdlist -o planes/ in? >lines && cat head lines >run.par && "
                   "peakbox -i run.par -o report && peakbox-check run.par >findings; grep -c transposed findings; :'"),
        expected + "0\n")
        << form.order[0] << form.order[1] << form.dimensionCount << form.isCube << form.isBig;
  }
}

TEST(PeakboxPlanes, KeepTheOtherWords) {
  for (const bool isBig : {false, true}) {
    const Form form{.order = {3, 2, 1}, .isCube = true, .isBig = isBig};
    Files files = writeForm(form);
    putNumber(files["in1"], 300 - 50, 7.5f, isBig);  // some word that nothing reads
    std::string header = makeHeader({.order = {2, 1, 3}, .dimensionCount = 2});
    putNumber(header, 300 - 50, 7.5f, false);
    header.replace(80, 3, "15N");  // the axis that became number 1 stands at its old place, too
    constexpr std::pair<std::size_t, float> kOld[] = {{11, 600.0f}, {10, 50.0f}, {13, 1.0f}, {51, 1.0f}, {32, 1.0f}};
    for (const auto& [word, number] : kOld) putNumber(header, word, number, false);
    files["wanted"] = header;
    EXPECT_EQ(runExample(files, "sh -c 'peakbox-planes -o . in1 && head -c 2048 002.ft2 | cmp - wanted'"),
              outcome(0, "", "(no file)", "SPECTRUM ./001.ft2\nSPECTRUM ./002.ft2\nSPECTRUM ./003.ft2\n"));
  }
}

TEST(PeakboxPlanes, RefuseWhatTheyAreNotSureOf) {
  struct Row {
    Form form;
    std::vector<std::pair<std::size_t, float>> words;  // of the last file
    std::string message;
    std::string arguments = "-o new in?";
    Files files = {};
  };
  const Form cube{.isCube = true};
  const Row rows[] = {
      {{}, {{222, 0}}, "in3: axis number 1 of its planes is not transformed (are these the delays?)"},
      {cube, {{56, 0}}, "in1: axis number 2 of its planes is complex; delete its imaginary part"},
      {cube, {{24, 0}}, "in1: does not say in which order its axes are"},
      {cube, {{26, 2}}, "in1: does not say in which order its axes are"},
      {{.dimensionCount = 2},
       {{221, 1}},
       "in3: the order of its axes and its word on transposition contradict each other"},
      {cube,
       {{24, 1}, {25, 3}, {26, 2}},
       "in1: the direct dimension is not in its planes; transpose it, so that it is the first or second axis"},
      {cube, {{9, 4}}, "in1: has 4 dimensions, and only two or three can be read"},
      {cube, {{218, 0}}, "in1: axis number 1 of its planes has no sweep width or no frequency"},
      {cube, {{219, -12}}, "in1: axis 2 has -12 points"},
      {cube, {{99, 0}}, "in1: this is no file of NMRPipe, or its header is damaged"},
      {cube,
       {{15, 2}},
       "in1: has 2304 bytes of data, but a plane of 16 x 12 points has 768 and a cube 2 times as many"},
      {cube,
       {{99, 1e5f}, {219, 2e9f}, {15, 2e9f}},
       "in1: has 2304 bytes of data, but a plane of 100000 x 2000000000 points has 800000000000000 and a cube "
       "2000000000 times as many"},
      {{}, {{249, 1}}, "in3: its sizes or axes differ from those of in1"},
      {{},
       {},
       "in2: this is a whole cube, which can only be given alone",
       "-o new in?",
       {{"in2", writeForm(cube)["in1"]}}},
      {{},
       {},
       "in2: has 5 bytes of data, but a plane of 16 x 12 points has 768 and a cube 3 times as many",
       "-o new in?",
       {{"in2", makeHeader({}) + "12345"}}},
      {{}, {}, "in2: this is no file of NMRPipe", "-o new in?", {{"in2", writeView(makePlane(1))}}},
      {{}, {}, "in2: too short for a file of NMRPipe", "-o new in?", {{"in2", "x"}}},
      {{}, {}, "none: there is no such file", "-o new in1 none"},
      {{}, {}, ".: this is no regular file", "-o new ."},
      {{}, {}, "./in1: is given twice", "-o new in1 in2 ./in1"},
      {{}, {}, "list: has 2 delays, and there are 3 planes", "-o new -l list in?", {{"list", "1\n2\n"}}},
      {{},
       {},
       "list:2: '10 ms' is no delay, a number or one with n, u, m or s",
       "-o new -l list in?",
       {{"list", "1\n10 ms\n"}}},
      {{}, {}, "list:1: '0,5' is no delay, a number or one with n, u, m or s", "-o new -l list in?", {{"list", "0,5"}}},
      {{}, {}, "./002.ft2: exists already", "-o . in?", {{"002.ft2", ""}}},
      {{}, {}, "in1: is no folder and cannot be made one", "-o in1 in2"},
      {{}, {}, "a b: a name in a parameter file has no blanks and no commas", "-o \"a b\" in?"},
  };
  for (const Row& row : rows) {
    Files files = writeForm(row.form);
    for (const auto& [word, number] : row.words) putNumber(files.rbegin()->second, word, number, false);
    for (const auto& [name, bytes] : row.files) files[name] = bytes;
    EXPECT_EQ(runExample(files, "sh -c 'peakbox-planes " + row.arguments + "; echo $?; ls -d new 001.ft2 2>&-'"),
              outcome(2, "peakbox-planes: " + row.message + "\n", "(no file)", "1\n"));
  }
  EXPECT_EQ(runExample({}, "peakbox-planes a.ft2"), outcome(2, "usage: peakbox-planes [-l LIST] -o DIR FILE...\n"));
}

TEST(PeakboxPlanes, LeaveNothingBehindWhenTheDiskIsFull) {
  // A limit on the size of files stands in for a full disk: a block of 512 or 1024 bytes, by the shell.
  EXPECT_EQ(
      runExample(writeForm({.isCube = true}),
                 "sh -c 'trap \"\" XFSZ; (ulimit -f 1; peakbox-planes -o new in1); echo $?; ls new 2>&1 | wc -l'"),
      outcome(0, "peakbox-planes: new/001.ft2: cannot be written\n", "(no file)", "1\n1\n"));
}

}  // namespace peakbox::test
