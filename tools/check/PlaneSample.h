#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "spectrum/Spectrum.h"

namespace peakbox {

/// A local extreme, its place between the points, and how far its value is from the median.
struct Extreme {
  std::array<float, 2> place;
  float value;
};

/// What is kept of a plane once it has been read; the memory it takes does not depend on the plane's size.
struct PlaneSample {
  /// Keeps more extremes where more peaks are listed.
  PlaneSample(const Spectrum& spectrum, std::size_t peakCount);

  /// The strongest `most` extremes above `level` times the noise, strongest first.
  std::vector<Extreme> getStrongest(std::size_t most, double level) const;

  /// The strongest extreme of a sign, above 8 times the noise, within `reach` of a place; nullptr where there is none.
  const Extreme* findTop(const std::array<double, 2>& place, const std::array<double, 2>& reach, bool positive) const;

  double noise = 0;                 // that of the quieter tiles of the plane; 0 where nothing can be said
  double median = 0;                // of all values but zeros
  double lowerSpread = 0;           // the median's distance from the 16th percentile
  double negativeShare = 0;         // of all values but zeros
  std::vector<Extreme> extremes{};  // above 5 times the noise, by their place in dimension 1

  /// Up to 128 small tiles: the spread of a row's values about their running mean, 0 where half of them are zeros, and
  /// 64 of these values, in fortieths of it where below 2.5 times.
  static constexpr std::size_t kTilePoints = 64;
  static constexpr std::int8_t kFarOff = 127;
  std::vector<float> tileSpreads{};
  std::vector<std::array<std::int8_t, kTilePoints>> tilePoints{};

 private:
  void sampleLevels(const Spectrum& spectrum);
  void sampleTiles(const Spectrum& spectrum);
  void findExtremes(const Spectrum& spectrum, std::size_t most);
};

}  // namespace peakbox
