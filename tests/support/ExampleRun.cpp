#include "support/ExampleRun.h"

namespace peakbox::test {

Plane examplePlane() {
  const auto value = [](int i, int j) { return i == 5 && j == 6 ? 50.0f : i == 10 && j == 3 ? -70.0f : 1.0f; };
  return {{16, 100, 1600, 0, 5}, {12, 50, 600, 0, 7}, value};
}

std::string examplePeakHeader() {
  return "label dataset sw sf\nH N\nseries\n{1600} {600}\n{100} {50}\n"
         "H.L H.P H.W H.B H.E H.J H.U N.L N.P N.W N.B N.E N.J N.U vol int stat comment flag0\n";
}

std::string examplePeakLine(const std::string& number, const std::string& label, const std::string& ppm1,
                            const std::string& width1, const std::string& ppm2, const std::string& width2,
                            const std::string& field17) {
  return number + " " + label + " " + ppm1 + " 0.1 " + width1 + " ++ {0.0} {} {N}\t" + ppm2 + " 0.1  " + width2 +
         " ++ {0.0} {} 0.0 0.0 " + field17 + " {} 0\n";
}

std::string examplePeaks() {
  return examplePeakHeader() + examplePeakLine("1", "{A1}", "10", "2", "5", "2") +
         examplePeakLine("2", "{noise2}", "5.2", "2", "8.1", "2");
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
