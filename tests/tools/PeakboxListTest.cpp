#include <gtest/gtest.h>

#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {

using Files = std::map<std::string, std::string>;

/// 32 x 24 points: 1H from 10.84375 to 6 ppm, 0.15625 ppm each, and 15N from 133.75 to 105 ppm, 1.25 ppm each.
Plane makePlane() {
  return {.direct = {.size = 32, .observeMHz = 600, .sweepWidthHz = 3000, .lastPpm = 6},
          .indirect = {.size = 24, .observeMHz = 60.82f, .sweepWidthHz = 1824.6f, .lastPpm = 105},
          .value = [](int i, int j) { return static_cast<float>(i * 100 + j + 1); }};
}

Files withSeries(Files files) {
  files["run.par"] = "PEAKLIST new.xpk\nBOXSIZE 1\nTOLERANCE 0 0\nSPECTRUM a.ft2\nSPECTRUM a.ft2\n";
  files["a.ft2"] = writePipe(makePlane());
  return files;
}

/// At the points (10, 5), (20, 15) and, folded, (4, 2).
std::string knownPeaks(const std::string& numbers = "123") {
  const auto line = [](const char number, const std::string& label, const std::string& ppm1, const std::string& ppm2) {
    return examplePeakLine(
        {.number = {number}, .label = label, .ppm1 = ppm1, .width1 = "0.04", .ppm2 = ppm2, .width2 = "0.4"});
  };
  return examplePeakHeader() + line(numbers[0], "{A1 }", "9.28125", "127.5") +
         line(numbers[1], "{?}", "7.71875", "115") + line(numbers[2], "{C-3}", "10.21875", "101.25");
}

TEST(PeakboxList, IsMeasuredAtTheSamePoints) {
  const std::string measure = "peakbox -i run.par -o report'";
  const std::string cr = "\r\n";
  const std::string ccpn = R"(-c Assign,"Pos F1","Pos F2" -s a.ft2 list)";
  const std::string csv = R"(-c "\"P, k\",\"15N, ppm\",1H" -s a.ft2 list)";
  struct Row {
    std::string list;
    std::string arguments;
    std::string names;
    std::string numbers = "123";
  };
  const Row rows[] = {
      {"      Assignment   w1    w2   Data Height\n\n A1  127.5  9.28125  1\n ?-?\t115 7.71875 2\n\n"
       "C-3 101.25 10.21875 -3",
       "-s a.ft2 list", "w1 = 15N, w2 = 1H"},
      {"Assignment w1 w2\rA1 9.28125 127.5\r  None 7.71875 115.0\rC-3 +10.21875 1.0125e2\r",
       "-b 0.04,0.4 -s a.ft2 list", "w1 = 1H, w2 = 15N"},
      {"REMARK x\nDATA X_AXIS HN 1 2\n\nVARS INDEX X_AXIS Y_PPM X_PPM ASS\nFORMAT %d\nNULLVALUE -666\nNULLSTRING no\n\n"
       " 7 331.0 127.5 9.28125 A1\n 3 4 115 7.71875 no\n 5 9 101.25 10.21875 C-3\n",
       "-s a.ft2 list", "X_PPM = 1H, Y_PPM = 15N", "735"},
      {"\t#\tPos F1\tAssign\tPos F2\n0\t4\t9.28125\t A1\t127.5\n1\t4\t7.71875\t "
       "{3}H[6]\t115\n2\t1\t10.21875\tC-3\t101.25\n",
       ccpn, "Pos F1 = 1H, Pos F2 = 15N"},
      {"\xef\xbb\xbf\"P, k\",1H,\"15N, ppm\",Note" + cr + "\"A1\",9.28125,\"127.5\",\"a\nb\"" + cr +
           R"(,7.71875,115,"x, ""y""")" + cr + ",,," + cr + "C-3,10.21875,101.25,",
       csv, "15N, ppm = 15N, 1H = 1H"},
      {"\r\n" + knownPeaks("897") + "4 x 1 2 3 ++ {0.0} {} x 4 5 6 ++ {0.0} {} 0.0 0.0 -1 {} 0", "-s a.ft2 list",
       "H = 1H, N = 15N", "897"},
      {examplePeakHeader() + "1 {A1} 127.5 0 0.4 a {} {} {} 9.28125 0 0.04 a\n1 ? 115 0 0.4 a {} {} {} 7.71875 0 0.04\n"
                             "2 C-3 101.25 0 0.4 a {} {} {} 10.21875 0 0.04",
       "-s a.ft2 list", "H = 15N, N = 1H"},
  };
  for (const Row& row : rows) {
    std::string known = knownPeaks(row.numbers);
    known.replace(known.find("A1 "), 3, "A1");
    const std::string direct = runExample(withSeries({{"new.xpk", known}}), "sh -c '" + measure);
    ASSERT_NE(direct.find("\tA1\t9.28125\t127.5\t9054\n"), std::string::npos) << direct;
    const std::string summary =
        "list: 3 peaks, " + row.names + "; 1 without assignment; 1 outside the spectrum, to be folded\n";
    std::string expected = direct;
    expected.insert(expected.find("err:\n") + 5, summary);
    EXPECT_EQ(runExample(withSeries({{"list", row.list}}),
                         "sh -c 'peakbox-list " + row.arguments + " >new.xpk && " + measure),
              expected)
        << row.list;
  }
}

TEST(PeakboxList, RefusesWhatItIsNotSureOf) {
  const std::string sparky = "Assignment w1 w2\n";
  const std::string table = "L\tX\tY\tX\nA\t9\t120\t1\nB\t9\tx\t1\n";
  Plane homonuclear = makePlane();
  homonuclear.indirect = homonuclear.direct;
  Plane phosphorus = makePlane();
  phosphorus.indirect.observeMHz = 242.88f;
  phosphorus.indirect.lastPpm = 25;
  std::string transposed = writePipe(makePlane());
  putReal(transposed, 4 * 221, 1, false);
  const std::string same =
      "list: from the positions it cannot be told whether w1 or w2 is the direct dimension of a.ft2; -x says w2";
  struct Row {
    std::string list;
    std::string message;
    std::string arguments = "";
    std::string spectrum = writePipe(makePlane());
  };
  const Row rows[] = {
      {"", "list: is empty"},
      {"A\tB\n",
       "list: no list of Sparky or POKY, NMRPipe or peakbox; the columns of a table with a header line are named "
       "by -c LABEL,PPM1,PPM2"},
      {sparky, "list: has no peaks"},
      {sparky + "A 9 120\n\nB 9\n", "list:4: field 3 is missing"},
      {sparky + "A 8 120 9.5\n", "list:2: more fields than columns"},
      {"Assignment w1 w2 S/N\n 120.5 8.1 20\n", "list:2: there is no label"},
      {sparky + "A 9 1" + '\0' + "0\n", "list: is no plain text; is it binary, or UTF-16 (\"Unicode text\")?"},
      {sparky + "A 9 120\nB 9 120000\nC 8 119\n", "list:3: the positions 9 and 120000 lie far outside a.ft2"},
      {"VARS ASS X_PPM Y_PPM\nA 9 120\nVARS X_PPM\n", "list:3: a second table"},
      {"A 9 120\nVARS ASS X_PPM Y_PPM\n", "list:1: a peak before the line of VARS"},
      {examplePeakHeader() + examplePeakLine({.ppm1 = "9", .width1 = "0", .ppm2 = "120"}),
       "list:7: the bounds '0' are no width; -b gives others"},
      {sparky + "A 9 12O\n", "list:2: the position '12O' is no number"},
      {sparky + "A 9 0x78\n", "list:2: the position '0x78' is no number"},
      {sparky + "A nan 120\n", "list:2: the position 'nan' is no number"},
      {"Assignment w1 w2 w3\nA 9 120 9\n", "list: a list of more than two dimensions"},
      {"VARS X_PPM Y_PPM\n9 120\n", "list:1: there is no column 'ASS', there are 'X_PPM', 'Y_PPM'"},
      {"NULLVALUE -666\nVARS ASS X_PPM Y_PPM\nA -666.0 120\n", "list:3: the position '-666.0' is no number"},
      {"VARS ASS X_PPM Y_PPM Z_PPM\nA 9 120 9\n", "list: a list of more than two dimensions"},
      {"L\tY\tZ\nA\t120\t9\nB\tx\t9\n", "list:3: the position 'x' is no number", "-c L,Y,Z"},
      {table, "list:1: there is no column 'Z', there are 'L', 'X', 'Y', 'X'", "-c L,Y,Z"},
      {table, "list:1: there are two columns 'X'", "-c L,X,Y"},
      {"L,X,Y\nA,\"9,5\",120\n", "list:2: the position '9,5' is no number", "-c L,X,Y"},
      {"L,X,Y\nA,9,120\n\"B,9,120\n", "list:3: a quote that does not end", "-c L,X,Y"},
      {sparky + "A 9 120\nB 9 9\n", "list:3: the positions 9 and 9 lie far outside a.ft2"},
      {sparky + "A 9 9\n", same, "", writePipe(homonuclear)},
      {sparky + "A 9 9\n", "a.ft2: its nuclei are 1H and 1H_2, for which the bounds must be given: -b WIDTH1,WIDTH2",
       "-x", writePipe(homonuclear)},
      {sparky + "A 9 29\n", "a.ft2: its nuclei are 1H and 31P, for which the bounds must be given: -b WIDTH1,WIDTH2",
       "", writePipe(phosphorus)},
      {sparky + "A 9 120\n",
       "a.ft2: transposed: the rows are not the direct dimension, so that all peaks would be looked for in wrong "
       "places; "
       "peakbox-planes turns it over",
       "", transposed},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(
        runExample({{"list", row.list}, {"a.ft2", row.spectrum}}, "peakbox-list " + row.arguments + " -s a.ft2 list"),
        outcome(1, "peakbox-list: " + row.message + "\n"))
        << row.list;
  }
  for (const std::string arguments : {"list", "-s a.ft2", "-b 1 -s a.ft2 list", "-b 1,-1 -s a.ft2 list",
                                      "-c A,B -s a.ft2 list", "-c '' -s a.ft2 list"}) {
    EXPECT_EQ(runExample({}, "peakbox-list " + arguments),
              outcome(2, "usage: peakbox-list [-x] [-b WIDTH1,WIDTH2] [-c LABEL,PPM1,PPM2] -s SPECTRUM LIST\n"));
  }
}

TEST(PeakboxList, FollowsNamesOrTheUserWherePositionsFitBothWays) {
  // 1H and 13C of methyl groups, in windows of 4 ppm and of 24 ppm.
  Plane methyls = makePlane();
  methyls.direct = {.size = 32, .observeMHz = 600, .sweepWidthHz = 2400, .lastPpm = 0};
  methyls.indirect = {.size = 24, .observeMHz = 150.87f, .sweepWidthHz = 3620.88f, .lastPpm = 0};
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {"DATA X_AXIS 13C\nDATA Y_AXIS H1\nVARS ASS X_PPM Y_PPM\nA 3 2\n", "", "X_PPM = 13C, Y_PPM = 1H",
       "2 0.0 0.04 3 0.0 0.4"},
      {"Assignment w1 w2\nA 3 2\n", "-x", "w1 = 13C, w2 = 1H", "2 0.0 0.04 3 0.0 0.4"},
      {"Assignment w1 w2\nA 1 9\nB 1 3\n", "", "w1 = 1H, w2 = 13C", "1 0.0 0.04 9 0.0 0.4"},
      {"Assignment w1 w2\nA 1 9\nB 1 3\n", "-x -b 1,2", "w1 = 13C, w2 = 1H; 1 outside the spectrum, to be folded",
       "9 0.0 1 1 0.0 2"},
  };
  for (const auto& [list, options, names, fields] : rows) {
    const std::string end =
        runExample({{"list", list}, {"a.ft2", writePipe(methyls)}},
                   "sh -c 'peakbox-list " + options + " -s a.ft2 list | sed -n 7p | cut -d \" \" -f 3-5,10-12'");
    const std::string peaks = list.ends_with("B 1 3\n") ? "2 peaks, " : "1 peak, ";
    EXPECT_EQ(end, outcome(0, "list: " + peaks + names + "\n", "(no file)", fields + "\n"));
  }
}

}  // namespace peakbox::test
