// bench-pieces: how fast the pieces of a run are, each on its own. Options are those of Google Benchmark.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "demo/SpectrumWriter.h"
#include "integrate/BoxTable.h"

namespace {

using namespace peakbox;

constexpr int kSize1 = 2048;
constexpr int kSize2 = 1024;
constexpr int kPeaks = 20000;

/// A folder for the inputs that lives until the process ends.
class InputFolder {
 public:
  InputFolder() : path(std::filesystem::temp_directory_path() / ("bench-pieces-" + std::to_string(getpid()))) {
    std::filesystem::create_directory(path);
  }
  ~InputFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  InputFolder(const InputFolder&) = delete;
  InputFolder& operator=(const InputFolder&) = delete;

  std::string write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path / name, std::ios::binary) << bytes;
    return path / name;
  }

 private:
  std::filesystem::path path;
};

const InputFolder& folder() {
  static const InputFolder inputs;
  return inputs;
}

std::string writeSpectrum(bool isView, bool swapped) {
  const demo::Plane plane{
      .direct = {.size = kSize1, .observeMHz = 600, .sweepWidthHz = 9000, .tile = 64},
      .indirect = {.size = kSize2, .observeMHz = 60, .sweepWidthHz = 3000, .tile = 32},
      .value = [](int i, int j) { return static_cast<float>((i * 7919 + j * 104729) % 10007 - 5000); },
      .swapped = swapped};
  return folder().write("spectrum", isView ? writeView(plane) : writePipe(plane));
}

std::string writePeakList() {
  std::string text =
      "label\nH N\n\n\n\nH.L H.P H.W H.B H.E H.J H.U N.L N.P N.W N.B N.E N.J N.U vol int stat comment flag0\n";
  for (int k = 0; k < kPeaks; ++k) {
    const std::string number = std::to_string(k);
    const double ppm1 = 1.0 + 12.0 * (k * 7919 % kPeaks) / kPeaks;
    const double ppm2 = 2.0 + 45.0 * (k * 104729 % kPeaks) / kPeaks;
    text += number + " {" + number + ".H} " + std::to_string(ppm1) + " 0.05 0.03 ++ {0.0} {} {" + number + ".N} " +
            std::to_string(ppm2) + " 0.3 0.2 ++ {0.0} {} 0.0 0.0 0 {} 0\n";
  }
  return folder().write("peaks", text);
}

void load(benchmark::State& state, bool isView, bool swapped) {
  const std::string path = writeSpectrum(isView, swapped);
  Spectrum spectrum;
  spectrum.readHeader(path.c_str(), false);
  for (auto _ : state) spectrum.loadData(path.c_str(), false);
  state.SetBytesProcessed(state.iterations() * kSize1 * kSize2 * 4);
}
BENCHMARK_CAPTURE(load, NMRPipe, false, false);
BENCHMARK_CAPTURE(load, NMRPipe_other_byte_order, false, true);
BENCHMARK_CAPTURE(load, NMRView, true, false);
BENCHMARK_CAPTURE(load, NMRView_other_byte_order, true, true);

/// A spectrum in memory with boxes placed on it, and settings for a report.
struct Measured {
  Measured() {
    const std::string spectrumPath = writeSpectrum(false, false);
    const std::string settingsPath = folder().write("run.par", "BOXSIZE 2\nSPECTRUM spectrum\n");
    const char* const arguments[] = {"peakbox", "-i", settingsPath.c_str()};
    settings.parseArguments(3, arguments);
    spectrum.readHeader(spectrumPath.c_str(), false);
    spectrum.loadData(spectrumPath.c_str(), false);
    peaks.read(writePeakList().c_str(), spectrum, false);
    boxes.placeBoxes(spectrum, peaks);
    for (int j = 0; j < kPeaks; ++j) boxes.integratePeak(j, spectrum, 2, 2);
  }

  RunSettings settings;
  Spectrum spectrum;
  PeakList peaks;
  BoxTable boxes{kPeaks, 10, 10};
};

void integrate(benchmark::State& state) {
  Measured run;
  for (auto _ : state) {
    for (int j = 0; j < kPeaks; ++j) run.boxes.integratePeak(j, run.spectrum, 2, 2);
  }
  state.SetItemsProcessed(state.iterations() * kPeaks);
}
BENCHMARK(integrate)->Name("integrate 5 x 5 boxes (items are peaks)");

void readPeaks(benchmark::State& state) {
  const Measured run;
  const std::string path = writePeakList();
  for (auto _ : state) {
    PeakList peaks;
    benchmark::DoNotOptimize(peaks.read(path.c_str(), run.spectrum, false));
  }
  state.SetItemsProcessed(state.iterations() * kPeaks);
}
BENCHMARK(readPeaks)->Name("read a peak list (items are lines)");

void writeReport(benchmark::State& state) {
  const Measured run;
  for (auto _ : state) {
    std::ostringstream report;
    run.boxes.writeSpectrumTable(0, report, run.settings, run.spectrum, run.peaks);
    benchmark::DoNotOptimize(report);
  }
  state.SetItemsProcessed(state.iterations() * kPeaks);
}
BENCHMARK(writeReport)->Name("write a report (items are lines)");

}  // namespace

int main(int argc, char** argv) {
  // The notice of every swapped header would bury the results.
  std::cerr.setstate(std::ios::failbit);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
