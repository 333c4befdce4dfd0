// peakbox-noise PARAMETER-FILE: the noise of a box and of a point in every spectrum of a run, see peakbox-noise(1).

#include <array>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <string>

#include "base/Refusal.h"
#include "base/TextNumbers.h"
#include "base/ThrowingMessages.h"
#include "common/Tool.h"
#include "driver/RunSettings.h"
#include "peaks/PeakList.h"
#include "results/NoiseFile.h"
#include "spectrum/PlaneNoise.h"

namespace {

using namespace peakbox;

constexpr double kSignalTail = 1.10;  // which noise alone does not reach
constexpr double kMuchSignalTail = 1.5;
constexpr double kLargeError = 0.07;

bool isFinite(const Spectrum& spectrum) {
  double nothing = 0.0;  // or no number
  for (int j = 0; j < spectrum.getSize(1); ++j) {
    for (int i = 0; i < spectrum.getSize(0); ++i) nothing += 0.0 * spectrum.getData()[i][j];
  }
  return nothing == 0.0;
}

/// That of the spectrum loaded last, for boxes of this size.
SpectrumNoise estimate(const std::string& file, const Spectrum& spectrum, const std::array<std::int64_t, 2>& size) {
  constexpr std::size_t kFewestValues = 100;
  if (!isFinite(spectrum)) refuse(file, "not all values are finite");
  const PlaneNoise box = estimateNoise(spectrum, size);
  if (box.values < kFewestValues) {
    const std::string size1 = std::to_string(size[0]);
    const std::string size2 = std::to_string(size[1]);
    refuse(file, "too few values for the noise of a box of " + size1 + " x " + size2 + " points (" +
                     std::to_string(box.values) + " of " + std::to_string(kFewestValues) +
                     "): the plane is small, the box large, or nearly all zero or constant");
  }
  const double point = estimatePointNoise(spectrum, kSampleSize);
  if (!(box.deviation > 0 && box.error > 0 && point > 0)) refuse(file, "the values have a spread of zero");
  const std::string tail = "signal among the noise (tail " + realToText(std::ceil(100 * box.tail) / 100) + "): ";
  if (box.tail > kMuchSignalTail) {
    warn(file,
         tail + "its noise may be off by a third or more; take a smaller BOXSIZE, or repeats (-r of peakbox-table)");
  } else if (box.tail > kSignalTail) {
    warn(file, tail + "its noise may be off by more than a tenth");
  }
  if (box.error > kLargeError * box.deviation) {
    warn(file, "its noise is known to " + realToText(std::ceil(100 * box.error / box.deviation)) +
                   " % only, as few boxes of this size fit into it; take a smaller BOXSIZE, or repeats (-r of "
                   "peakbox-table)");
  }
  return {box.deviation, box.error, box.tail, point, size, file};
}

/// All that a run reads is read in its order, so that what it refuses is refused here, too.
std::string writeNoise(const std::string& parameterFile) {
  const char* const arguments[] = {"peakbox", "-i", parameterFile.c_str()};
  RunSettings settings;
  settings.parseArguments(3, arguments);
  Spectrum spectrum;
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  PeakList().read(settings.getPeakListFile(), spectrum, false);

  const std::array<std::int64_t, 2> size{2 * std::int64_t{settings.getBoxSize(0)} + 1,
                                         2 * std::int64_t{settings.getBoxSize(1)} + 1};
  std::string table = writeNoiseHeader();
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), false);
    std::cerr << takeMessages();
    table += writeNoiseLine(k + 1, estimate(settings.getSpectrumFile(k), spectrum, size));
  }
  return table;
}

int run(const Arguments& arguments) {
  if (arguments.getOperands().size() != 1) arguments.refuseUsage();
  try {
    return answer(writeNoise(arguments.getOperands()[0]));
  } catch (const RunEnd& end) {
    throw RunEnd{takeMessages() + end.message, 1};  // also where a run ends with status 0
  }
}

}  // namespace

int peakboxNoise(int argc, char** argv) { return runTool({"peakbox-noise", "PARAMETER-FILE", "", run}, argc, argv); }
