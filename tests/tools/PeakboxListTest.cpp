#include <gtest/gtest.h>

#include <vector>

#include "support/ExampleRun.h"

namespace peakbox::test {
namespace {

const std::string kSparky = "Assignment w1 w2\n";

/// 32 x 24 points: 1H from 10.84375 ppm on, 0.15625 ppm each, 15N from 133.75 ppm on, 1.25 ppm each; with other words.
std::string spectrum(const std::vector<std::pair<std::size_t, float>>& words = {}) {
  std::string bytes =
      writePipe({.direct = {.size = 32, .observeMHz = 600, .sweepWidthHz = 3000, .lastPpm = 6},
                 .indirect = {.size = 24, .observeMHz = 60.82f, .sweepWidthHz = 1824.6f, .lastPpm = 105},
                 .value = [](int i, int j) { return static_cast<float>(i * 100 + j + 1); }});
  for (const auto& [word, number] : words) putReal(bytes, 4 * word, number, false);
  return bytes;
}

/// 1H from 3.875 ppm on, 0.125 ppm each, 13C from 23 ppm on, 1 ppm each.
std::string methyls() { return spectrum({{100, 2400}, {101, 0}, {218, 150.87f}, {229, 3620.88f}, {249, 0}}); }

/// Peaks of these numbers as they are to be written.
std::string knownPeaks(const std::string& numbers) {
  std::string list =
      "label dataset sw sf\n1H 15N\na.ft2\n{3000} {1824.6}\n{600} {60.82}\n"
      "1H.L 1H.P 1H.W 1H.B 1H.E 1H.J 1H.U 15N.L 15N.P 15N.W 15N.B 15N.E 15N.J 15N.U vol int stat comment flag0\n"
      "# {A1} 9.28125 0.0 0.04 ++ {0.0} {} {A1} 127.5 0.0 0.4 ++ {0.0} {} 0.0 0.0 0 {} 0\n"
      "# {?} 7.71875 0.0 0.04 ++ {0.0} {} {?} 115 0.0 0.4 ++ {0.0} {} 0.0 0.0 0 {} 0\n"
      "# {C-3} 10.21875 0.0 0.04 ++ {0.0} {} {C-3} 103.75 0.0 0.4 ++ {0.0} {} 0.0 0.0 0 {} 0\n";
  for (const char number : numbers) list[list.find('#')] = number;
  return list;
}

TEST(PeakboxList, ReadsListsOfAllKinds) {
  struct Row {
    std::string name;
    std::string list;
    std::string columns;
    std::string options = "";
    std::string numbers = "123";
  };
  const Row rows[] = {
      {"Sparky",
       "      Assignment   w1    w2   Data Height\n\n A1  127.5  9.28125  1\n \f\n ?-?\t115 7.71875 2\n\n"
       "C-3 103.75 10.21875 -3",
       "w1 = 15N, w2 = 1H"},
      {"Sparky of an old Mac",
       "Assignment\tw1\tw2\rA1\t9.28125\t127.5\r  None\t7.71875\t115\r\t\t\v\rC-3\t10.21875\t103.75\t\r",
       "w1 = 1H, w2 = 15N", "-b 0.04,0.4"},
      {"Sparky, padded and with comments",
       "# w1 w2\nAssignment \tw1\tw2 Data Height\tNote\t\n# B 1 2\nA1 \t\t127.5 \t9.28125\t2 a b c \t \n"
       "?-? 115\t7.71875 \t# weak\nC-3 103.75 \t10.21875\t\n",
       "w1 = 15N, w2 = 1H"},
      {"NMRPipe",
       "REMARK x\nDATA X_AXIS HN 1 2\n\nVARS X_AXIS INDEX Y_PPM X_PPM ASS\nFORMAT %d\nNULLVALUE -666\nNULLSTRING no\n"
       "\v\n 331.0 7 127.5 9.28125 A1\n 4 3 115 7.71875 no\n 9 5 103.75 10.21875 C-3\n",
       "X_PPM = 1H, Y_PPM = 15N", "", "735"},
      {"CcpNmr",
       "\n\tNumber\t#\tPos F1\tAssign\tPos F2\n0\t1\t4\t9.28125\t\001A1\t127.5\n1\t2\t8\t7.71875\t {3}H[6]\t115\n"
       "2\t3\t6\t10.21875\tC-3\t103.75\n",
       "Pos F1 = 1H, Pos F2 = 15N", R"(-c Assign,"Pos F1","Pos F2")", "486"},
      {"CcpNmr 3",
       "\t#\tPos F1\tAssign F1\tPos F2\tAssign F2\n0\t7\t127.5\tx\t9.28125\tA1\n1\t3\t115\ty\t7.71875\t\n"
       "2\t5\t103.75\tz\t10.21875\tC-3\n",
       "Pos F1 = 15N, Pos F2 = 1H", "", "735"},
      {"CcpNmr 2",
       "Number\t#\tPosition F1\tPosition F2\tAssign F1\tAssign F2\n1\t1\t9.28125\t127.5\t A1\t x\n"
       "2\t2\t7.71875\t115\t {3}H[6]\t y\n3\t3\t10.21875\t103.75\t C-3\t z\n",
       "Position F1 = 1H, Position F2 = 15N"},
      {"TopSpin",
       "<?xml version=\"1.0\"?>\n<PeakList><a>b</a><!-- <Peak2D F1=\"1\" F2=\"1\"/> -->\n"
       "<Peak2D F1=\"127.5\" F2=\"9.28125\" annotation=\"A1\" new='\"' type=\"0\"/>\n"
       "<Peak2D annotation=\"\" F2 = '7.71875' F1=\"115\"/>\n"
       "<Peak2D annotation=\"C-3\" F1=\"103.75\" F2=\"10.21875\"></Peak2D></PeakList>",
       "F1 = 15N, F2 = 1H"},
      {"a spreadsheet of Europe",
       "sep=;\nmine, of May;;\n# H;N\nPeak;H, ppm;N;\nA1;\"9,28125\";127,5;;;\n;7,71875;115;x, "
       "y\nC-3;10.21875;103,75\n",
       "N = 15N, H, ppm = 1H", R"(-c "Peak,N,\"H, ppm\"")"},
      {"a spreadsheet",
       "\xef\xbb\xbf\"P, k\",1H,\"15N, ppm\",Note\r\n\"A1\",9.28125,\"127.5\",\"a\nb\"\r\n"
       ",7.71875,115,\"x, \"\"y\"\"\"\r\n,,,\r\nC-3,10.21875,103.75,",
       "15N, ppm = 15N, 1H = 1H", R"(-c "\"P, k\",\"15N, ppm\",1H")"},
      {"peakbox",
       "\r\n" + examplePeakHeader() +
           "8 {A1 } 9.28125 0 0.04 a {} {} {} 127.5 0 0.4\n\f\n9 {?} 7.71875 0 0.04 a {} {} {} 115 0 0.4\n"
           "4 x 1 2 3 ++ {0.0} {} x 4 5 6 ++ {0.0} {} 0.0 0.0 -1 {} 0\n7 C-3 10.21875 0 0.04 a {} {} {} 103.75 0 0.4",
       "H = 1H, N = 15N", "", "897"},
      {"peakbox, the other way round",
       "N.L N.P N.W N.B stat H.L H.P H.W H.B\n1 A1 127.5 0 0.4 0 A1 9.28125 0 0.04\n1 ? 115 0 0.4 0 ? 7.71875 0 0.04\n"
       "2 x 1 0 1 -1 x 2 0 1\n3 C-3 103.75 0 0.4 0 C-3 10.21875 0 0.04",
       "N = 15N, H = 1H"},
  };
  for (const Row& row : rows) {
    const std::string unusual = "; 1 without assignment; 1 outside the spectrum, to be folded\n";
    EXPECT_EQ(runExample({{"list", row.list}, {"a.ft2", spectrum()}}, "peakbox-list " + row.options + " -s a.ft2 list"),
              outcome(0, "list: 3 peaks, " + row.columns + unusual, "(no file)", knownPeaks(row.numbers)))
        << row.name;
  }
}

TEST(PeakboxList, RefusesWhatItIsNotSureOf) {
  struct Row {
    std::string list;
    std::string message;
    std::string arguments = "";
    std::string bytes = spectrum();
  };
  const Row rows[] = {
      {"\n\f\n", "list: is empty"},
      {"A\tB\n",
       "list: no list of Sparky or POKY, NMRPipe, CcpNmr, TopSpin or peakbox; the columns of a table with a header "
       "line "
       "are named by -c LABEL,PPM1,PPM2"},
      {kSparky, "list: has no peaks"},
      {kSparky + "A 9 120\n\nB 9\n", "list:4: field 3 is missing"},
      {kSparky + "A 8 120 9.5\n", "list:2: more fields than columns"},
      {"Assignment w1 w2 Data Height lw1 (hz)\nA 120.1 9 1 2\nG 10 109.4 7.83 1 2\n",
       "list:3: more fields than columns"},
      {"Assignment w1 w2 Data Height Volume Note\nA 120.1 9 1 2 ga 3 a\nG 10 109.4 7.83 1 2 ga\n",
       "list:3: more fields than columns"},
      {"VARS ASS X_PPM Y_PPM\nA 1 9 120\n", "list:2: more fields than columns"},
      {"P,1H,15N,k\nA,8,120,\nB,8,119,5,,x\n", "list:3: more fields than columns", "-c P,1H,15N"},
      {examplePeakHeader() + examplePeakLine({.label = "A 1", .ppm1 = "9", .ppm2 = "120"}),
       "list:7: more fields than columns"},
      {"P,H,N,V,W\nA,8,25,120,5\n", "list: no position has a decimal point: are these decimal commas without quotes?",
       "-c P,H,N"},
      {"<PeakList>\n<Peak2D F1=\"9\"/>", "list:2: the position '' is no number"},
      {"<Peak2D F1=\"9\" F2=\"8/>", "list:1: an element that is not well-formed"},
      {"<Peak3D F1=\"9\"/>", "list: a list of other than two dimensions"},
      {"Pos F1,Pos F2,Pos F3\n9,120,4\n", "list: a list of more than two dimensions"},
      {"\"\"\n", "list: is empty", "-c A,B,C"},
      {"DATA X_AXIS 15N\nVARS ASS X_PPM Y_PPM\nA 9 120\n",
       "list: says that X_PPM = 15N, Y_PPM = 1H, but the positions fit a.ft2 only as X_PPM = 1H, Y_PPM = 15N; -d names "
       "the direct column"},
      {"<Peak2D F1=\"9\" F2=\"120\"/>",
       "list: says that F1 = 15N, F2 = 1H, but the positions fit a.ft2 only as F1 = 1H, F2 = 15N; -d names the direct "
       "column"},
      {"P;1H;13C\nA;15;2\n",
       "list: says that 1H = 1H, 13C = 13C, but the positions fit a.ft2 only as 1H = 13C, 13C = 1H; -d names the "
       "direct "
       "column",
       "-c P,1H,13C", methyls()},
      {"P;15N;13C\nA;120;40\n",
       "list: its positions are of '15N' and '13C', the nuclei of a.ft2 are 1H and 15N; -d names the direct column",
       "-c P,15N,13C"},
      {"P,c (ppm),1H_shift\nA,2.5,15.5\n",
       "list: says that c (ppm) = 13C, 1H_shift = 1H, but the positions fit a.ft2 only as c (ppm) = 1H, 1H_shift = "
       "13C; "
       "-d names the direct column",
       "-c 'P,c (ppm),1H_shift'", methyls()},
      {kSparky + "A 9 120\n", "list: by -d w1 = 15N, w2 = 1H, but the positions fit a.ft2 only as w1 = 1H, w2 = 15N",
       "-d w2"},
      {kSparky + "A 9 120\n", "-d: 'w3' is neither 'w1' nor 'w2'", "-d w3"},
      {kSparky + "A 9 9\n", "list: both dimensions of a.ft2 are of one nucleus; -d names the direct column", "",
       spectrum({{218, 600}, {229, 3000}, {249, 3600}})},
      {"Assignment w1 w2 S/N\n 120.5 8.1 20\n", "list:2: there is no label"},
      {kSparky + "A 9 1" + '\0' + "0\n", "list: is no plain text; is it binary, or UTF-16 (\"Unicode text\")?"},
      {kSparky + "A 9 120\nB 9 120000\nC 8 119\n", "list:3: the positions 9 and 120000 lie far outside a.ft2"},
      {kSparky + "A 9 0x78\n", "list:2: the position '0x78' is no number"},
      {"Assignment w1\n", "list:1: there is no column 'w2' behind w1"},
      {"Assignment w1 w2 w3\nA 9 120 9\n", "list: a list of more than two dimensions"},
      {"H.P N.P C.P\n", "list: a list of more than two dimensions"},
      {"VARS ASS X_PPM Y_PPM Z_PPM\nA 9 120 9\n", "list: a list of more than two dimensions"},
      {"VARS ASS X_PPM Y_PPM\nA 9 120\nVARS X_PPM\n", "list:3: a second table"},
      {"A 9 120\nVARS ASS X_PPM Y_PPM\n", "list:1: a peak before the line of VARS"},
      {"VARS X_PPM Y_PPM\n9 120\n", "list:1: there is no column 'ASS', there are 'X_PPM', 'Y_PPM'"},
      {"NULLVALUE -666\nVARS ASS X_PPM Y_PPM\nA -666.0 120\n", "list:3: the position '-666.0' is no number"},
      {examplePeakHeader() + examplePeakLine({.ppm1 = "9", .width1 = "0", .ppm2 = "120"}),
       "list:7: the bounds '0' are no width; -b gives others"},
      {"L,\"X\"\"\",Y\n", "list:1: there is no column 'Z', there are 'L', 'X\"', 'Y'", "-c L,Y,Z"},
      {"L\tX\tY\tX\n", "list:1: there are two columns 'X'", "-c L,X,Y"},
      {"L,X,Y\nA,9,120\n\"B,9,120\n", "list:3: a quote that does not end", "-c L,X,Y"},
      {kSparky + "A 3 2\n",
       "list: from the positions it cannot be told whether w1 or w2 is the direct dimension of a.ft2; -d names the "
       "direct column",
       "", methyls()},
      {kSparky + "A 9 29\n", "a.ft2: its nuclei are 1H and 31P, for which the bounds must be given: -b WIDTH1,WIDTH2",
       "", spectrum({{218, 242.88f}, {249, 6072}})},
      {kSparky + "A 9 120\n", "a.ft2: its dimension 2 has no ppm axis", "", spectrum({{229, 0}})},
      {kSparky + "A 9 120\n",
       "a.ft2: the second axis is number 3 of its experiment, and peakbox reads number 1; peakbox-planes makes it so",
       "", spectrum({{25, 3}})},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(
        runExample({{"list", row.list}, {"a.ft2", row.bytes}}, "peakbox-list " + row.arguments + " -s a.ft2 list"),
        outcome(1, "peakbox-list: " + row.message + "\n"));
  }
  for (const std::string arguments :
       {"l", "-s a", "-b 1 -s a l", "-b 1,-1 -s a l", "-c A,B -s a l", "-c '' -s a l", "-d '' -s a l"}) {
    EXPECT_EQ(runExample({}, "peakbox-list " + arguments),
              outcome(2, "usage: peakbox-list [-b WIDTH1,WIDTH2] [-c LABEL,PPM1,PPM2] [-d COLUMN] -s SPECTRUM LIST\n"))
        << arguments;
  }
}

TEST(PeakboxList, FollowsNamesOrTheUserWherePositionsFitBothWays) {
  const std::string protons = spectrum({{101, 0}, {218, 600}, {229, 3000}, {249, 0}});
  struct Row {
    std::string list;
    std::string options;
    std::string summary;
    std::string fields;
    std::string bytes = methyls();
  };
  const Row rows[] = {
      {"DATA X_AXIS 13C\nDATA Y_AXIS H1\nVARS ASS X_PPM Y_PPM\nA +3 2e0\n", "", "1 peak, X_PPM = 13C, Y_PPM = 1H",
       "2e0 0.0 0.04 +3 0.0 0.4"},
      {"DATA X_AXIS HN\nDATA Y_AXIS C13\nVARS ASS X_PPM Y_PPM\nA 3 2\n", "", "1 peak, X_PPM = 1H, Y_PPM = 13C",
       "3 0.0 0.04 2 0.0 0.4"},
      {kSparky + "A 3 2\n", "-d w2", "1 peak, w1 = 13C, w2 = 1H", "2 0.0 0.04 3 0.0 0.4"},
      {"-;1H;13C\nA;3;2\n", "-c -,13C,1H", "1 peak, 13C = 13C, 1H = 1H; 1 without assignment", "3 0.0 0.04 2 0.0 0.4"},
      {"P\tppm_C\th_shift\nA\t3\t2\n", "-c P,ppm_C,h_shift", "1 peak, ppm_C = 13C, h_shift = 1H",
       "2 0.0 0.04 3 0.0 0.4"},
      {"P\tCarbon\tw_H(ppm)\nA\t3\t2\n", "-c \"P,Carbon,w_H(ppm)\"", "1 peak, Carbon = 13C, w_H(ppm) = 1H",
       "2 0.0 0.04 3 0.0 0.4"},
      {"P\tcs_c\t\u03b4H\nA\t3\t2\n", "-c P,cs_c,\u03b4H", "1 peak, cs_c = 13C, \u03b4H = 1H", "2 0.0 0.04 3 0.0 0.4"},
      {"P\tHeight\tChi\nA\t9\t3\nB\t9\t2\n", "-c P,Height,Chi", "2 peaks, Height = 13C, Chi = 1H",
       "3 0.0 0.04 9 0.0 0.4"},
      {"<Peak2D F1=\"3\" F2=\"2\"/>", "", "1 peak, F1 = 13C, F2 = 1H; 1 without assignment", "2 0.0 0.04 3 0.0 0.4"},
      {"VARS ASS X_PPM Y_PPM\nA 3 2\n", "-b 1,1", "1 peak, X_PPM = 1H, Y_PPM = 1H_2", "3 0.0 1 2 0.0 1", protons},
      {"x\nb a\na.L a.P b.L b.P\n1 A 3 A 2\n", "-b 1,1", "1 peak, a = 1H_2, b = 1H", "2 0.0 1 3 0.0 1", protons},
      {"x\nb a\na.L a.P b.L b.P\n1 A 3 A 2\n", "-b 1,1 -d a", "1 peak, a = 1H, b = 1H_2", "3 0.0 1 2 0.0 1", protons},
      {kSparky + "A 1 9\nB 1 3\n", "", "2 peaks, w1 = 1H, w2 = 13C", "1 0.0 0.04 9 0.0 0.4"},
      {kSparky + "A 1 9\nB 1 3\n", "-d w2 -b 1,2", "2 peaks, w1 = 13C, w2 = 1H; 1 outside the spectrum, to be folded",
       "9 0.0 1 1 0.0 2"},
  };
  for (const Row& row : rows) {
    const std::string command = "peakbox-list " + row.options + " -s a.ft2 - <list";
    EXPECT_EQ(runExample({{"list", row.list}, {"a.ft2", row.bytes}},
                         "sh -c '" + command + " | sed -n 7p | cut -d \" \" -f 3-5,10-12'"),
              outcome(0, "standard input: " + row.summary + "\n", "(no file)", row.fields + "\n"))
        << row.list << row.options;
  }
}

}  // namespace
}  // namespace peakbox::test
