// make-workloads FOLDER: writes the inputs of the benchmark's five workloads, each in a folder of its own with the
// parameter file run.par.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "demo/SpectrumWriter.h"

namespace {

using peakbox::demo::Plane;

struct Work {
  std::string name;
  int planes;
  int size1;
  int size2;
  int peaks;
  bool swapped = false;
  bool isView = false;
};

constexpr int kHalfWidth1 = 2;
constexpr int kHalfWidth2 = 2;

void write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream stream(path, std::ios::binary);
  stream << bytes << std::flush;
  if (!stream) {
    std::cerr << "cannot write " << path << "\n";
    std::exit(1);
  }
}

/// Evenly scattered noise; a peak list on it makes the search do its whole work.
float noiseAt(int i, int j) {
  std::uint32_t hash = static_cast<std::uint32_t>(i) * 0x9e3779b9u ^ static_cast<std::uint32_t>(j) * 0x85ebca6bu;
  hash = (hash ^ hash >> 15) * 0x2c1b3c6du;
  return static_cast<float>(hash >> 8) - 8388608.0f;
}

/// Peaks all over the plane, far enough from its edges for their boxes.
std::string makePeakList(const Work& work) {
  std::string text =
      "label dataset sw sf\nH N\nseries\n{9000} {3000}\n{600} {60}\n"
      "H.L H.P H.W H.B H.E H.J H.U N.L N.P N.W N.B N.E N.J N.U vol int stat comment flag0\n";
  for (int k = 0; k < work.peaks; ++k) {
    const int i = 20 + static_cast<int>(std::int64_t{k} * 7919 % (work.size1 - 40));
    const int j = 20 + static_cast<int>(std::int64_t{k} * 104729 % (work.size2 - 40));
    const double ppm1 = (work.size1 - 1 - i) * 9000.0 / work.size1 / 600.0;
    const double ppm2 = (work.size2 - 1 - j) * 3000.0 / work.size2 / 60.0;
    const std::string name = std::to_string(k);
    text += name + " {" + name + ".H} " + std::to_string(ppm1) + " 0.05 0.03 ++ {0.0} {} {" + name + ".N} " +
            std::to_string(ppm2) + " 0.3 0.2 ++ {0.0} {} 0.0 0.0 0 {} 0\n";
  }
  return text;
}

void makeWork(const std::filesystem::path& root, const Work& work) {
  const std::filesystem::path folder = root / work.name;
  std::filesystem::create_directories(folder);
  const Plane plane{.direct = {.size = work.size1, .observeMHz = 600, .sweepWidthHz = 9000, .tile = 64},
                    .indirect = {.size = work.size2, .observeMHz = 60, .sweepWidthHz = 3000, .tile = 32},
                    .value = noiseAt,
                    .swapped = work.swapped};
  const std::string bytes = work.isView ? writeView(plane) : writePipe(plane);

  std::string parameters = "FIELD 600\nBOXSIZE " + std::to_string(kHalfWidth1) + " " + std::to_string(kHalfWidth2) +
                           "\nPEAKLIST peaks.xpk\nTOLERANCE 10 10\n";
  for (int k = 1; k <= work.planes; ++k) {
    const std::string name = "plane" + std::to_string(k);
    write(folder / name, bytes);
    parameters += "SPECTRUM " + name + " " + std::to_string(k) + "\n";
  }
  write(folder / "run.par", parameters);
  write(folder / "peaks.xpk", makePeakList(work));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make-workloads FOLDER\n";
    return 1;
  }
  const Work pipe{.name = "pipe", .planes = 16, .size1 = 2048, .size2 = 1024, .peaks = 200};
  Work swapped = pipe;
  swapped.name = "pipe-swapped";
  swapped.swapped = true;
  Work view = pipe;
  view.name = "view";
  view.isView = true;
  const Work large{.name = "large", .planes = 1, .size1 = 8192, .size2 = 4096, .peaks = 500};
  const Work peaks{.name = "peaks", .planes = 1, .size1 = 2048, .size2 = 1024, .peaks = 100000};
  for (const Work& work : {pipe, swapped, view, large, peaks}) {
    makeWork(argv[1], work);
  }
}
