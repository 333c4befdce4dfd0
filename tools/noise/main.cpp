// peakbox-noise PARAMETER-FILE: the noise of a box and of a point in every spectrum of a run, see peakbox-noise(1).

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "base/Refusal.h"
#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "base/ThrowingMessages.h"
#include "common/Tool.h"
#include "driver/RunSettings.h"
#include "peaks/PeakList.h"
#include "results/NoiseFile.h"
#include "spectrum/Spectrum.h"

namespace {

using namespace peakbox;

constexpr std::int64_t kMostSums = std::int64_t{2048} * 1024;

/// The sums of boxes of one size that lie side by side over the plane.
struct BoxSums {
  std::int64_t count;  // of boxes in the plane
  std::int64_t step;   // from one that is summed to the next
  /// Without those of boxes that hold nothing but zeros: there a plane has been filled up, and has no noise.
  std::vector<double> sums;
};

BoxSums sumBoxes(const Spectrum& spectrum, std::int64_t width, std::int64_t height) {
  const std::int64_t count1 = spectrum.getSize(0) / width;
  const std::int64_t count = count1 * (spectrum.getSize(1) / height);
  BoxSums boxes{.count = count, .step = (count + kMostSums - 1) / kMostSums | 1, .sums = {}};
  for (std::int64_t n = 0; n < count; n += boxes.step) {
    double sum = 0.0;
    bool hasData = false;
    for (std::int64_t j = n / count1 * height; j < (n / count1 + 1) * height; ++j) {
      for (std::int64_t i = n % count1 * width; i < (n % count1 + 1) * width; ++i) {
        const double value = spectrum.getData()[i][j];
        sum += value;
        hasData = hasData || value != 0.0;
      }
    }
    if (hasData) boxes.sums.push_back(sum);
  }
  return boxes;
}

/// How much farther the values of `spread` scatter to one side than to the other, as where signals are among them.
double compareSides(const std::vector<double>& values, const Spread& spread) {
  double squares[2] = {};
  double counts[2] = {};
  for (const double value : values) {
    const double deviation = value - spread.centre;
    if (!(std::fabs(deviation) <= 3 * spread.deviation)) continue;
    squares[deviation > 0] += deviation * deviation;
    counts[deviation > 0] += 1;
  }
  const double ratio = std::sqrt(squares[1] / counts[1] / (squares[0] / counts[0]));
  return std::max(ratio, 1 / ratio);
}

/// That of the spectrum loaded last, for boxes of `width` x `height` points.
SpectrumNoise estimateNoise(const char* file, const Spectrum& spectrum, std::int64_t width, std::int64_t height) {
  const std::int64_t size1 = spectrum.getSize(0);
  double nothing = 0.0;  // or no number
  for (std::int64_t n = 0; n < size1 * spectrum.getSize(1); ++n)
    nothing += 0.0 * spectrum.getData()[n % size1][n / size1];
  if (nothing != 0.0) refuse(file, "not all values are finite");
  const double ofPoints = estimateClippedSpread(sumBoxes(spectrum, 1, 1).sums).deviation;
  const BoxSums boxes = sumBoxes(spectrum, width, height);
  const Spread ofBoxes = estimateClippedSpread(boxes.sums);

  const std::int64_t used = std::min(boxes.count, static_cast<std::int64_t>(ofBoxes.used) * boxes.step);
  const std::string left = "only " + std::to_string(used) + " of " + std::to_string(boxes.count) + " boxes are left, ";
  if (ofPoints > 0.0 && used < 100) refuse(file, left + "and the noise needs at least 100");
  if (ofPoints == 0.0 || ofBoxes.deviation == 0.0) refuse(file, "the values have a spread of zero");
  if (3 * used < 2 * boxes.count) warn(file, left + "so signal may be in the estimate");
  const double sides = compareSides(boxes.sums, ofBoxes);
  if (sides > 1.15 + 4 / std::sqrt(static_cast<double>(ofBoxes.used))) {  // by chance they never differ that much
    warn(file, "the boxes scatter " + realToText(std::round(100 * sides) / 100) +
                   " times as far to one side as to the other, so signal may be in the estimate");
  }
  return {.box = ofBoxes.deviation, .point = ofPoints, .boxCount = boxes.count, .used = used};
}

/// All that a run reads is read in its order, so that what it refuses is refused here, too.
std::string writeNoise(const std::string& parameterFile) {
  const char* const arguments[] = {"peakbox", "-i", parameterFile.c_str()};
  RunSettings settings;
  settings.parseArguments(3, arguments);
  Spectrum spectrum;
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  PeakList().read(settings.getPeakListFile(), spectrum, false);

  const std::int64_t width = 2 * std::int64_t{settings.getBoxSize(0)} + 1;
  const std::int64_t height = 2 * std::int64_t{settings.getBoxSize(1)} + 1;
  std::string table = writeNoiseHeader();
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    spectrum.loadData(settings.getSpectrumFile(k), false);
    std::cerr << takeMessages();
    table += writeNoiseLine(k + 1, estimateNoise(settings.getSpectrumFile(k), spectrum, width, height));
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
