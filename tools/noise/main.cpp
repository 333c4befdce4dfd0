// peakbox-noise PARAMETER-FILE: the noise of a box and of a point in every spectrum of a run, see peakbox-noise(1).

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "base/Messages.h"
#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "driver/RunSettings.h"
#include "peaks/PeakList.h"
#include "spectrum/Spectrum.h"

namespace {

using namespace peakbox;

constexpr std::size_t kFewestBoxes = 100;

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
  fail(std::string("peakbox-noise: ").append(file).append(": ").append(reason).append("\n"));
}

/// The sums of boxes of `width` x `height` points that lie side by side over the plane.
struct BoxSums {
  BoxSums(const Spectrum& spectrum, std::int64_t width, std::int64_t height);

  std::size_t count;
  /// Without those of boxes that hold nothing but zeros: there a plane has been filled up, and has no noise.
  std::vector<double> sums;
};

BoxSums::BoxSums(const Spectrum& spectrum, std::int64_t width, std::int64_t height) {
  const std::int64_t count1 = spectrum.getSize(0) / width;
  const std::int64_t count2 = spectrum.getSize(1) / height;
  count = static_cast<std::size_t>(count1 * count2);
  sums.reserve(count);
  for (std::int64_t b = 0; b < count2; ++b) {
    for (std::int64_t a = 0; a < count1; ++a) {
      double sum = 0.0;
      bool hasData = false;
      for (std::int64_t j = b * height; j < (b + 1) * height; ++j) {
        for (std::int64_t i = a * width; i < (a + 1) * width; ++i) {
          const double value = spectrum.getData()[i][j];
          sum += value;
          hasData = hasData || value != 0.0;
        }
      }
      if (hasData) sums.push_back(sum);
    }
  }
}

/// How much farther the values of `spread` scatter to one side of its centre than to the other, as they do where
/// signals of one sign are among them.
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

/// The line of the spectrum loaded last, the `number`-th from 1, for boxes of `width` x `height` points.
std::string describeNoise(int number, const std::string& file, const Spectrum& spectrum, std::int64_t width,
                          std::int64_t height) {
  const BoxSums points(spectrum, 1, 1);
  for (const double value : points.sums) {
    if (!std::isfinite(value)) refuse(file, "not all values are finite");
  }
  const Spread ofPoints = estimateClippedSpread(points.sums);
  const BoxSums boxes(spectrum, width, height);
  const Spread ofBoxes = estimateClippedSpread(boxes.sums);

  const std::string left = std::to_string(ofBoxes.used) + " of " + std::to_string(boxes.count) + " boxes";
  if (ofPoints.deviation > 0.0 && ofBoxes.used < kFewestBoxes) {
    refuse(file, "only " + left + " are left, and the noise needs at least " + std::to_string(kFewestBoxes));
  }
  if (ofPoints.deviation == 0.0 || ofBoxes.deviation == 0.0) refuse(file, "the values have a spread of zero");
  if (3 * ofBoxes.used < 2 * boxes.count) {
    printMessage("peakbox-noise: " + file + ": only " + left + " are left, so signal may be in the estimate\n");
  }
  const double sides = compareSides(boxes.sums, ofBoxes);
  if (sides > 1.15 + 4 / std::sqrt(static_cast<double>(ofBoxes.used))) {  // by chance they never differ that much
    printMessage("peakbox-noise: " + file + ": the boxes scatter " + realToText(std::round(100 * sides) / 100) +
                 " times as far to one side as to the other, so signal may be in the estimate\n");
  }
  return std::to_string(number) + '\t' + realToText(ofBoxes.deviation) + '\t' + realToText(ofPoints.deviation) + '\t' +
         std::to_string(boxes.count) + '\t' + std::to_string(ofBoxes.used) + '\n';
}

[[noreturn]] void usage() {
  std::cerr << "usage: peakbox-noise PARAMETER-FILE\n";
  std::exit(2);
}

}  // namespace

int peakboxNoise(int argc, char** argv);

int peakboxNoise(int argc, char** argv) {
  std::set_new_handler([] { fail("ERROR: Not enough memory.\n"); });
  if (getopt(argc, argv, "") != -1 || optind + 1 != argc) usage();

  // All that a run reads is read in its order, so that what it refuses is refused here, too.
  const char* const arguments[] = {"peakbox", "-i", argv[optind]};
  RunSettings settings;
  settings.parseArguments(3, arguments);
  Spectrum spectrum;
  spectrum.readHeader(settings.getSpectrumFile(0), false);
  PeakList().read(settings.getPeakListFile(), spectrum, false);

  const std::int64_t width = 2 * std::int64_t{settings.getBoxSize(0)} + 1;
  const std::int64_t height = 2 * std::int64_t{settings.getBoxSize(1)} + 1;
  std::string table = "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed\n";
  for (int k = 0; k < settings.getSpectrumCount(); ++k) {
    const char* file = settings.getSpectrumFile(k);
    spectrum.loadData(file, false);
    table += describeNoise(k + 1, file, spectrum, width, height);
  }
  if (!(std::cout << table << std::flush)) fail("peakbox-noise: the table cannot be written\n");
  return 0;
}
