#include "support/ExampleRun.h"

namespace peakbox::test {

Plane examplePlane() {
  const auto value = [](int i, int j) { return i == 5 && j == 6 ? 50.0f : i == 10 && j == 3 ? -70.0f : 1.0f; };
  return {.direct = {.size = 16, .observeMHz = 100, .sweepWidthHz = 1600, .tile = 5, .name = "1H"},
          .indirect = {.size = 12, .observeMHz = 50, .sweepWidthHz = 600, .tile = 7, .name = "15N"},
          .value = value};
}

std::string examplePeakHeader() {
  return "label dataset sw sf\nH N\nseries\n{1600} {600}\n{100} {50}\n"
         "H.L H.P H.W H.B H.E H.J H.U N.L N.P N.W N.B N.E N.J N.U vol int stat comment flag0\n";
}

std::string examplePeakLine(const PeakLine& peak) {
  return peak.number + " " + peak.label + " " + peak.ppm1 + " 0.1 " + peak.width1 + " ++ {0.0} {} {N}\t" + peak.ppm2 +
         " 0.1  " + peak.width2 + " ++ {0.0} {} 0.0 0.0 " + peak.field17 + " {} 0\n";
}

std::string examplePeaks() {
  return examplePeakHeader() + examplePeakLine({.number = "1", .label = "{A1}"}) +
         examplePeakLine({.number = "2", .label = "{noise2}", .ppm1 = "5.2", .ppm2 = "8.1"});
}

std::string exampleParameters(const std::string& spectra) {
  return "# a comment\nFIELD 600.13\nboxsize 1\nPEAKLIST peaks.xpk\nTOLERANCE 100,\t50\n" + spectra;
}

void writeExample(const ScratchFolder& folder) {
  folder.write("run.par", exampleParameters());
  folder.write("peaks.xpk", examplePeaks());
  folder.write("a.ft2", writePipe(examplePlane()));
}

std::string exampleTable(const std::string& head, const std::string& lines) {
  return "# SPECTRUM " + head + "# Num\tLabel\tPos1\tPos2\tInt\n" + lines + "\n";
}

std::string runExample(const std::map<std::string, std::string>& files, const std::string& command) {
  const ScratchFolder folder;
  writeExample(folder);
  for (const auto& [name, bytes] : files) folder.write(name, bytes);
  return folder.run("timeout 10 " + command);
}

}  // namespace peakbox::test
