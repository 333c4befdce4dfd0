// Writes the inputs that the fuzz programs begin with: make-seeds FOLDER
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "demo/StackWriter.h"
#include "support/ExampleRun.h"

namespace {

using namespace peakbox::test;

class SeedFolder {
 public:
  explicit SeedFolder(std::filesystem::path path) : folder(std::move(path)) {
    std::filesystem::create_directories(folder);
  }

  void add(const std::string& name, const std::string& bytes) const {
    std::ofstream stream(folder / name, std::ios::binary);
    stream << bytes << std::flush;
    if (!stream) {
      std::cerr << "make-seeds: cannot write " << folder / name << "\n";
      std::exit(1);
    }
  }

 private:
  std::filesystem::path folder;
};

void makeParameterFiles(const SeedFolder& seeds) {
  seeds.add("plain", exampleParameters());
  seeds.add("series", exampleParameters("SPECTRUM a 1 x\nSPECTRUM b \" \"\nspectrum c 2 \"\n"));
  seeds.add("limits", exampleParameters("BOXSIZE 0x7fffffff 0\nTOLERANCE nan -1e30\nSPECTRUM a"));
}

void makePeakLists(const SeedFolder& seeds) {
  const auto list = [](const std::string& lines) { return examplePeakHeader() + lines; };
  seeds.add("plain", examplePeaks());
  seeds.add(
      "folded",
      list(examplePeakLine({.number = "0x1", .label = "{?}", .ppm1 = "26.1", .ppm2 = "-107.3", .width2 = "0.1"})));
  seeds.add("deleted", list(examplePeakLine({.field17 = "-1"}) + "1 {A1 10\n"));
  seeds.add("limits", list(examplePeakLine({.number = "-2147483648",
                                            .label = "{a b}",
                                            .ppm1 = "1e5",
                                            .width1 = "-1e30",
                                            .ppm2 = "nan",
                                            .width2 = "inf"})));
}

void makeForeignLists(const SeedFolder& seeds) {
  seeds.add("own", examplePeaks());
  seeds.add("sparky", "Assignment w1 w2 Data Height\n\n A1N-H 5 10 7\n ?-? 4 9 8\n");
  seeds.add("pipe", "DATA X_AXIS HN 1 16\nVARS INDEX X_PPM Y_PPM ASS\nFORMAT %d\nNULLVALUE -666\n 1 10 5 A1\n");
  seeds.add("form-feed", "Assignment w1 w2\n\f\nA 10 5\n\v\n\t\t\f\n");
  seeds.add("topspin", "<?xml?>\n<Peak2D F1=\"5\" F2=\"10\" annotation='A&lt;'/>\n<!-- <x -->");
  seeds.add("ccpnmr", "\t#\tPos F1\tPos F2\tAssign F1\n0\t1\t10\t5\t{3}H\n");
  seeds.add("quotes", "\"\"\n,,\"\n");
  seeds.add("europe", "sep=;\nA;B;C;;\na b;10,5;\"5\";;\n");
  seeds.add("padded", "# c\nAssignment w1\tw2 Note\nA 1 \t5.5\t10\t # x\n");
  seeds.add("table", "#\tA\tB\tC\n1\t{3}H\t10\t5\n2\t\"a\"\"b\"\t10\t5\r\n");
}

/// A cube of two planes, its axes in this order, and one of its planes alone.
void makeCube(const SeedFolder& seeds, const std::string& name, int first, int second, int third) {
  Plane plane = examplePlane();
  plane.direct.size = plane.indirect.size = 4;
  std::string bytes = writePipe(plane);
  const std::pair<std::size_t, int> words[] = {{9, 3},   {24, first}, {25, second}, {26, third}, {15, 2},   {220, 1},
                                               {222, 1}, {13, 1},     {51, 1},      {10, 60},    {11, 1000}};
  for (const auto& [word, number] : words) putReal(bytes, 4 * word, static_cast<float>(number), false);
  seeds.add(name + "-plane", bytes);
  seeds.add(name, bytes + bytes.substr(2048));
}

/// Two planes with the delays in any of three axes, and for Bruker one plane: files with form feeds between them.
void makeStacks(const SeedFolder& ucsf, const SeedFolder& bruker) {
  const std::vector<std::size_t> forms[] = {{0, 1, 2}, {1, 0, 2}, {1, 2, 0}, {1, 2}};
  for (const std::vector<std::size_t>& roles : forms) {
    Stack stack{.plane = examplePlane(), .planeCount = 2, .roles = roles, .tiles = {5, 7, 3}};
    stack.tiles.resize(roles.size());
    const std::string name =
        "axes-" + std::to_string(roles.size()) + std::to_string(roles[0]) + std::to_string(roles[1]);
    ucsf.add(name, writeUcsf(stack));
    stack.isDouble = roles[0] == 0;
    std::string files;
    auto written = writeBruker(stack);
    for (const char* file : {"procs", "proc2s", "proc3s", "2rr", "3rrr"}) files += written[file] + "\f";
    bruker.add(name, files);
  }
}

template <typename Write>
void makeSpectra(const SeedFolder& seeds, const Write& write) {
  for (const bool swapped : {false, true}) {
    const std::string order = swapped ? "-swapped" : "";
    Plane plane = examplePlane();
    plane.swapped = swapped;
    seeds.add("plain" + order, write(plane));
    plane.direct.tile = plane.direct.size;
    plane.direct.quadFlag = 0;
    seeds.add("one-complex" + order, write(plane));
    plane.indirect.tile = plane.indirect.size;
    plane.indirect.quadFlag = 0;
    seeds.add("both-complex" + order, write(plane));
    plane.direct.size = plane.direct.tile = 150;
    plane.indirect.size = plane.indirect.tile = 2;
    seeds.add("wide" + order, write(plane));
  }
}

}  // namespace

void makeReports(const SeedFolder& seeds) {
  seeds.add("plain", kExampleField + exampleTable() + exampleTable("2: b\n"));
  seeds.add("repeats", exampleTable("1: a\n# PARAMETERS: 0.1\tx\r\n") +
                           exampleTable("2: b\n# PARAMETERS: .10\tx\n", "  1\tA\t1\t1\t1\t-5e3\n"));
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make-seeds FOLDER\n";
    return 1;
  }
  const std::filesystem::path folder = argv[1];
  makeParameterFiles(SeedFolder(folder / "parameters"));
  makePeakLists(SeedFolder(folder / "peaks"));
  makeForeignLists(SeedFolder(folder / "list"));
  makeCube(SeedFolder(folder / "planes"), "cube", 2, 1, 3);
  makeCube(SeedFolder(folder / "planes"), "transposed", 3, 2, 1);
  makeReports(SeedFolder(folder / "report"));
  SeedFolder(folder / "planes").add("delays", "10m\r\n\n 0.5\n\f\n2u\n1e-3s\n");
  makeStacks(SeedFolder(folder / "ucsf"), SeedFolder(folder / "bruker"));
  makeSpectra(SeedFolder(folder / "pipe"), writePipe);
  makeSpectra(SeedFolder(folder / "view"), writeView);
  return 0;
}
