#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

using Files = std::map<std::string, std::string>;

/// How three planes are stored: the numbers of the axes, the fastest first, in one file or in one for each plane.
struct Form {
  std::array<float, 3> order{2, 1, 3};
  float dimensionCount = 3;
  bool isCube = false;
  bool isBig = false;
};

std::string put(std::string bytes, const std::vector<std::pair<std::size_t, float>>& words, bool isBig = false) {
  for (const auto& [word, number] : words) putReal(bytes, 4 * word, number, isBig);
  return bytes;
}

/// `bytes` with the words of axis 1 for axis 3.
std::string putThirdAxis(std::string bytes, bool isBig = false) {
  return put(bytes.replace(80, 3, "15N"), {{11, 600}, {12, 100}, {10, 50}, {13, 1}, {51, 1}}, isBig);
}

/// The header of a file of that form, its planes of 16 x 12 points. Nothing is known of the axis of the delays.
std::string makeHeader(const Form& form) {
  Plane plane = examplePlane();
  plane.indirect.lastPpm = 2;
  plane.swapped = form.isBig;
  std::string bytes = writePipe(plane).substr(0, 2048);
  if (form.order[2] == 1) {
    bytes = putThirdAxis(bytes, form.isBig).replace(72, 3, "TAU");
    bytes = put(bytes, {{229, 0}, {249, 0}, {218, 0}, {222, 0}, {55, 0}}, form.isBig);
  }
  const bool isFlat = form.dimensionCount == 2;
  if (form.order[0] != 2) bytes = put(bytes, {{99, 12}, {219, 16}, {221, isFlat}}, form.isBig);
  bytes = put(bytes, {{24, form.order[0]}, {25, form.order[1]}, {26, form.order[2]}}, form.isBig);
  bytes = put(bytes, {{9, form.dimensionCount}, {15, isFlat ? 1 : 3}, {32, 1}, {250, 7.5f}}, form.isBig);
  return bytes.replace(1188, 6, "kept A");  // the title, and word 250 is read by nobody
}

/// A plane, its values in the order of that form.
std::string makeValues(int plane, const Form& form) {
  std::string bytes(4 * 16 * 12, '\0');
  for (std::size_t n = 0; n < 16 * 12; ++n) {
    const std::size_t point = form.order[0] == 2 ? n : n % 12 * 16 + n / 12;
    putReal(bytes, 4 * n, static_cast<float>(point) + static_cast<float>(plane) / 4, form.isBig);
  }
  return bytes;
}

/// The files "in1" and so on.
Files writeForm(const Form& form) {
  Files files;
  for (const int plane : {1, 2, 3}) {
    std::string& bytes = files["in" + std::to_string(form.isCube ? 1 : plane)];
    bytes += (bytes.empty() ? makeHeader(form) : "") + makeValues(plane, form);
  }
  return files;
}

/// A cube of the three planes whose axes stand in this order, the fastest first; number 3 is the delays.
std::string writeTurned(const std::array<std::size_t, 3>& order, bool isTransformed) {
  const std::array<std::size_t, 4> sizes{0, 12, 16, 3};
  std::string bytes = put(makeHeader({}), {{13, isTransformed}, {51, 1}, {11, 600}, {10, 50}});
  for (const auto& [place, word] : {std::pair{0U, 99U}, {1U, 219U}, {2U, 15U}}) {
    bytes = put(bytes, {{24 + place, order[place]}, {word, sizes[order[place]]}});
  }
  for (std::size_t n = 0; n < 3UL * 12 * 16; ++n) {
    std::array<std::size_t, 4> point{};
    for (std::size_t place = 0, rest = n; place < 3; rest /= sizes[order[place++]]) {
      point[order[place]] = rest % sizes[order[place]];
    }
    bytes.append(4, '\0');
    const auto inPlane = static_cast<float>(point[1] * 16 + point[2]);
    putReal(bytes, bytes.size() - 4, inPlane + static_cast<float>(point[3] + 1) / 4, false);
  }
  return bytes;
}

TEST(PeakboxPlanes, AreThoseOfACubeThatIsTurnedRound) {
  const std::tuple<std::array<std::size_t, 3>, bool> rows[] = {{{1, 3, 2}, false}, {{3, 1, 2}, false},
                                                               {{3, 2, 1}, false}, {{2, 3, 1}, false},
                                                               {{1, 3, 2}, true},  {{3, 1, 2}, true}};
  for (const auto& [order, isTransformed] : rows) {
    Files files{{"in", writeTurned(order, isTransformed)}};
    const std::string header =
        put(makeHeader({.dimensionCount = 2}), {{13, isTransformed}, {51, 1}, {11, 600}, {10, 50}});
    for (const int plane : {1, 2, 3}) files["wanted" + std::to_string(plane)] = header + makeValues(plane, {});
    EXPECT_EQ(
        runExample(files, "sh -c 'peakbox-planes -o to in >lines; for n in 1 2 3; do cmp to/00$n.ft2 wanted$n; done'"),
        outcome(0, ""))
        << order[0] << order[1] << order[2];
  }
}

TEST(PeakboxPlanes, AreAddedToThoseThatThereAre) {
  Files files = writeForm({});
  files["in2"] = put(files["in2"], {{249, 104.9F}});  // by less than a tenth of a point
  EXPECT_EQ(runExample(files,
                       "sh -c 'peakbox-planes -a -o to in1; mv to/001.ft2 to/009.ft2; : >to/1.ft2; "
                       "peakbox-planes -ak -o to in3 in2; cmp to/010.ft2 in3 | cut -d \" \" -f 1-2; ls to'"),
            outcome(0,
                    "peakbox-planes: in1: its header counts 3 planes, and there are 1\n"
                    "peakbox-planes: in3: its header counts 3 planes, and there are 2\n",
                    "(no file)",
                    "# to/001.ft2: in1\nSPECTRUM to/001.ft2\n# to/010.ft2: in3\nSPECTRUM to/010.ft2\n"
                    "# to/011.ft2: in2\nSPECTRUM to/011.ft2\nto/010.ft2 in3\n009.ft2\n010.ft2\n011.ft2\n1.ft2\n"));
  const std::string again = "peakbox-planes: in1: has the same data as to/001.ft2\n";
  const std::string count = "peakbox-planes: in1: its header counts 3 planes, and there are 1\n";
  EXPECT_EQ(
      runExample(files, "sh -c 'peakbox-planes -o to in1 >lines; mkfifo to/002.ft2; peakbox-planes -a -o to in1'"),
      outcome(0, count + count + again, "(no file)", "# to/003.ft2: in1\nSPECTRUM to/003.ft2\n"));
  files["in3"] = put(files["in3"], {{99, 8}, {219, 24}});
  EXPECT_EQ(runExample(files, "sh -c 'peakbox-planes -ko . in2 in1 >lines 2>&1; peakbox-planes -a -o . in3'"),
            outcome(1, "peakbox-planes: in3: its direct dimension has 8 points, and that of ./001.ft2 16\n"));
}

TEST(PeakboxPlanes, AreTheSameFromEveryLayout) {
  const std::pair<const char*, Form> forms[] = {
      {"planes of 3D", {}},
      {"planes of 2D", {.dimensionCount = 2}},
      {"big-endian", {.isBig = true}},
      {"cube", {.isCube = true}},
      {"cube, big-endian", {.isCube = true, .isBig = true}},
      {"other number", {.order = {2, 3, 1}}},
      {"other number in 2D", {.order = {2, 3, 1}, .dimensionCount = 2}},
      {"other number, cube", {.order = {2, 3, 1}, .isCube = true, .isBig = true}},
      {"transposed", {.order = {1, 2, 3}, .isBig = true}},
      {"transposed in 2D", {.order = {1, 2, 3}, .dimensionCount = 2}},
      {"transposed, cube", {.order = {1, 2, 3}, .isCube = true}},
      {"transposed, other number", {.order = {3, 2, 1}, .isCube = true, .isBig = true}},
  };
  const std::string lines = "SPECTRUM to/001.ft2 0.01\nSPECTRUM to/002.ft2 0.0005\nSPECTRUM to/003.ft2 2\n";
  for (const auto& [name, form] : forms) {
    std::string header = makeHeader({.dimensionCount = 2});
    if (form.order[2] == 1) header = putThirdAxis(header);  // which stays as it was
    Files files = writeForm(form);
    files["vdlist"] = "10m\r\n500u\n\n2s";
    for (const int plane : {1, 2, 3}) files["wanted" + std::to_string(plane)] = header + makeValues(plane, {});
    EXPECT_EQ(runExample(files,
                         "sh -c 'peakbox-planes -l vdlist -o to/ in? | grep -v \"^#\"; "
                         "for n in 1 2 3; do cmp to/00$n.ft2 wanted$n; done'"),
              outcome(0, "", "(no file)", lines))
        << name;
  }
}

TEST(PeakboxPlanes, TakeFilesWhoseNumbersRise) {
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"the order of the shell", "e1 e10 e2", "e2: comes behind e10"},
      {"digits that differ inside a number", "x1049 x105", "x105: comes behind x1049"},
      {"decimals", "T2_0.05s.ft2 T2_0.1s.ft2", ""},
      {"falling decimals", "T2_0.1s.ft2 T2_0.05s.ft2", "T2_0.05s.ft2: comes behind T2_0.1s.ft2"},
      {"decimals in one of them", "1.5.ft2 1.ft2", "1.ft2: comes behind 1.5.ft2"},
      {"decimals in the other", "1.ft2 1.5.ft2", ""},
      {"leading zeros", "exp009a exp10a", ""},
      {"equal numbers before", "01-2 1.0-1", "1.0-1: comes behind 01-2"},
      {"something else before", "a2 b1", ""},
      {"no numbers, or in one of them only", "b a a9 ab a1", ""},
  };
  for (const auto& [name, files, fault] : rows) {
    const std::string reason = ", though the number in its name is lower; -k keeps the order as given\n";
    EXPECT_EQ(
        runExample({{"in", writeForm({.dimensionCount = 2})["in1"]}},
                   "sh -c 'for n in " + files + "; do cp in $n; done; peakbox-planes -o new " + files + " >lines'"),
        fault.empty() ? outcome(0, "") : outcome(1, "peakbox-planes: " + fault + reason))
        << name;
  }
}

TEST(PeakboxPlanes, SayWhatEachOneWasAndThatSomeAreLeftOut) {
  EXPECT_EQ(runExample(writeForm({}),
                       "sh -c 'mkdir 10; mv in1 10/test.ft2; mv in2 \"$(printf \"2\\nb\\001c\")\"; "
                       "peakbox-planes -k -o to 10/test.ft2 2* | tee -a run.par && peakbox -i run.par -o /dev/null'"),
            outcome(0, "peakbox-planes: 10/test.ft2: its header counts 3 planes, and there are 2\n", "(no file)",
                    "# to/001.ft2: 10/test.ft2\nSPECTRUM to/001.ft2\n"
                    "# to/002.ft2: 2\\x0ab\\x01c\nSPECTRUM to/002.ft2\n"));
  EXPECT_EQ(
      runExample(writeForm({.dimensionCount = 2, .isCube = true}), "sh -c 'peakbox-planes -o to in1 | tail -n 2'"),
      outcome(0, "peakbox-planes: in1: has two dimensions by its header, and the data of 3 planes\n", "(no file)",
              "# to/003.ft2: in1, plane 3\nSPECTRUM to/003.ft2\n"));
}

TEST(PeakboxPlanes, AreRefusedWhereTheyAreNotSure) {
  Files files = writeForm({});
  struct Row {
    std::string message;
    std::string bad = "";
    std::string arguments = "-o new in1 bad";
    std::string before = "";
  };
  const std::string cube = writeForm({.isCube = true})["in1"];
  const std::string flat = writeForm({.dimensionCount = 2})["in1"];
  const std::string plane = "bytes of data, but a plane of 16 x 12 points has 768";
  for (const Row& row : {
           Row{"bad: axis number 1 of its planes is not transformed (are these the delays?)",
               put(files["in1"], {{222, 0}})},
           {"bad: axis number 2 of its planes is complex; delete its imaginary part", put(cube, {{56, 0}})},
           {"bad: axis number 1 of its planes has no sweep width or no frequency", put(cube, {{218, 0}})},
           {"bad: axis 2 has -12 points", put(cube, {{219, -12}})},
           {"bad: does not say in which order its axes are", put(cube, {{24, 0}})},
           {"bad: does not say in which order its axes are", put(cube, {{26, 2}})},
           {"bad: the order of its axes and its word on transposition contradict each other", put(flat, {{221, 1}})},
           {"bad: the direct dimension is not in its planes; transpose it, so that it is the first or second axis",
            put(files["in1"], {{25, 3}, {24, 1}, {26, 2}})},
           {"bad: has 4 dimensions, and only two or three can be read", put(cube, {{9, 4}})},
           {"bad: this is no file of NMRPipe, or its header is damaged", put(cube, {{99, 0}})},
           {"bad: its indirect dimension differs from that of in1, by up to 0.102 points: last point by 5.1 Hz",
            put(files["in1"], {{249, 105.1F}})},
           {"bad: its direct dimension differs from that of in1, by up to 1.5 points: sweep width by -160 Hz",
            put(files["in1"], {{100, 1440}})},
           {"bad: its direct dimension differs from that of in1, by up to 0 points: sweep width by 32 Hz, frequency by "
            "2 MHz",
            put(files["in1"], {{119, 102}, {100, 1632}})},
           {"bad: its direct dimension has 8 points, and that of in1 16", put(files["in1"], {{99, 8}, {219, 24}})},
           {"bad: has 2304 " + plane + " and a cube 4 times as many", put(cube, {{15, 4}})},
           {"bad: has 2304 bytes of data, but a plane of 100000 x 2000000000 points has 800000000000000",
            put(cube, {{99, 1e5f}, {219, 2e9f}, {15, 1}})},
           {"bad: this is a whole cube, which can only be given alone", cube},
           {"bad: has 773 " + plane + " and a cube 3 times as many", files["in1"] + "12345"},
           {"bad: this is no file of NMRPipe, UCSF or Bruker", writeView(examplePlane())},
           {"bad: too short for a file of NMRPipe", "x"},
           {"bad: has 2 delays, and there are 3 planes", "1s\n2s\n", "-o new -l bad in?"},
           {"bad: has 4 delays, and there are 3 planes", "1s\n2s\n3s\n4s\n", "-o new -l bad in?"},
           {"bad:2: '10 min' is no delay, a number or one with n, u, m or s", "1\n10 min\n", "-o new -l bad in?"},
           {"bad:1: '1 2 m' is no delay, a number or one with n, u, m or s", "1 2 m", "-o new -l bad in?"},
           {"bad:1: '0,5' is no delay, a number or one with n, u, m or s", "0,5", "-o new -l bad in?"},
           {"bad:2: '1m' is no count, which -t asks for", "1\n1m\n", "-o new -l bad -t 2 in?"},
           {"bad:1: '1.5' is no count, which -t asks for", "1.5\n", "-o new -l bad -t 2 in?"},
           {"none: there is no such file", "", "-o new in1 none"},
           {"none: there is no such file", "", "-o new -l none in?"},
           {"./2rr: this is no regular file", "", "-o new .", "mkfifo 2rr; "},
           {"/dev/null: this is no regular file", "", "-o new /dev/null"},
           {"./001.ft2.part: exists already", "", "-o . in?", ": >001.ft2.part; "},
           {"./in1: is given twice", "", "-o new in1 in2 ./in1"},
           {"./002.ft2: exists already", "", "-o . in?", "cp in1 002.ft2; "},
           {"/proc/001.ft2: cannot be created", "", "-o /proc in?"},
           {"in1: is no folder and cannot be made one", "", "-o in1 in?"},
           // A limit on the size of files stands in for a full disk: a block of 512 or 1024 bytes, by the shell.
           {"new/001.ft2: cannot be written", cube, "-o new bad", "ulimit -f 1; "},
           {"a b: a name in a parameter file has no blanks and no commas", "", "-o \"a b\" in?"},
       }) {
    files["bad"] = row.bad;
    EXPECT_EQ(runExample(files, "sh -c '" + row.before + "peakbox-planes " + row.arguments +
                                    "; echo $?; ls -d new 001.ft2 2>&-'"),
              outcome(2, "peakbox-planes: " + row.message + "\n", "(no file)", "1\n"));
  }
  const std::string usage = "usage: peakbox-planes [-ak] [-l LIST [-t SECONDS]] -o DIR FILE...\n";
  for (const std::string arguments :
       {"a", "-o b", "-o b -l '' a", "-o b -t 1 a", "-o b -l c -t 0 a", "-o b -l c -t 1m a"}) {
    EXPECT_EQ(runExample({}, "peakbox-planes " + arguments), outcome(2, usage)) << arguments;
  }
}

TEST(PeakboxPlanes, TakeDelaysInAnyUnit) {
  const std::string bare = "peakbox-planes: list: has no units: its numbers are taken for seconds\n";
  const std::string unlike =
      "peakbox-planes: list:2: has no unit, as other lines have: the number is taken for seconds\n";
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"10 ms\n20us # x\n; y\n\n3 n", "", "0.01 2e-05 3e-09", ""},
      {"\xef\xbb\xbf"
       "0\r0.010\r+5e-1m\r",
       "", "0 0.010 0.0005", unlike},
      {"#T\r\n1\r\n2.50;z\r\n1e-3\r\n", "", "1 2.50 1e-3", bare},
      {"2\n0\n12", "-t 0.0408", "0.0816 0 0.4896", ""},
  };
  for (const auto& [list, options, delays, message] : rows) {
    Files files = writeForm({});
    files["list"] = list;
    EXPECT_EQ(runExample(files, "sh -c 'peakbox-planes -l list " + options +
                                    " -o to in? | sed -n \"s/SPECTRUM [^ ]* //p\" | xargs'"),
              outcome(0, message, "(no file)", delays + "\n"))
        << list;
  }
}

}  // namespace
}  // namespace peakbox::test
