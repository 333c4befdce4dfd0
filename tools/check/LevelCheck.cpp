#include <algorithm>
#include <cmath>

#include "base/RobustSpread.h"
#include "base/TextNumbers.h"
#include "check/SampledSeries.h"

namespace peakbox {

namespace {

/// The quarter of the tiles that are quietest over some planes, of those that no plane fills up with zeros.
std::vector<std::size_t> findQuietTiles(const SampledSeries& all, const std::vector<std::size_t>& planes) {
  constexpr std::size_t kFewestTiles = 4;
  std::vector<std::pair<double, std::size_t>> order;
  for (std::size_t t = 0; t < all.planes[planes[0]].tileSpreads.size(); ++t) {
    double sum = 0;
    for (const std::size_t n : planes) sum += std::log(all.planes[n].tileSpreads[t]);
    if (std::isfinite(sum)) order.emplace_back(sum, t);
  }
  if (order.size() < kFewestTiles) return {};
  std::sort(order.begin(), order.end());
  std::vector<std::size_t> quiet;
  for (std::size_t i = 0; i < std::max(kFewestTiles, order.size() / 4); ++i) quiet.push_back(order[i].second);
  return quiet;
}

/// The noise of the planes in these tiles, as a multiple of that of most of them, or of the first of two.
std::vector<double> compareNoise(const SampledSeries& all, const std::vector<std::size_t>& planes,
                                 const std::vector<std::size_t>& tiles) {
  std::vector<std::vector<double>> ratios(planes.size());
  for (const std::size_t t : tiles) {
    std::vector<double> spreads;
    for (const std::size_t n : planes) spreads.push_back(all.planes[n].tileSpreads[t]);
    std::vector<double> sorted = spreads;
    const double usual = planes.size() == 2 ? spreads[0] : takeMedian(sorted);
    for (std::size_t i = 0; i < planes.size(); ++i) ratios[i].push_back(spreads[i] / usual);
  }
  std::vector<double> noise;
  for (std::vector<double>& values : ratios) noise.push_back(takeMedian(values));
  return noise;
}

/// Points of these tiles that no plane has far from its running mean, less their mean and of unit length, or nothing
/// where they are too few.
std::vector<std::vector<float>> gatherPoints(const SampledSeries& all, const std::vector<std::size_t>& planes,
                                             const std::vector<std::size_t>& tiles) {
  constexpr std::size_t kFewestPoints = 500;
  std::vector<std::vector<float>> points(planes.size());
  for (const std::size_t t : tiles) {
    for (std::size_t k = 0; k < PlaneSample::kTilePoints; ++k) {
      const auto at = [&](std::size_t n) { return all.planes[n].tilePoints[t][k]; };
      if (std::any_of(planes.begin(), planes.end(), [&](std::size_t n) { return at(n) == PlaneSample::kFarOff; }))
        continue;
      for (std::size_t i = 0; i < planes.size(); ++i) points[i].push_back(at(planes[i]));
    }
  }
  if (points[0].size() < kFewestPoints) return {};
  for (std::vector<float>& values : points) {
    double sum = 0;
    double squares = 0;
    for (const double value : values) sum += value;
    for (float& value : values) value -= static_cast<float>(sum / static_cast<double>(values.size()));
    for (const double value : values) squares += value * value;
    for (float& value : values) value /= static_cast<float>(std::sqrt(squares));
  }
  return points;
}

void checkTwice(SampledSeries& all, const std::vector<std::size_t>& planes, const std::vector<std::size_t>& tiles) {
  constexpr float kSame = 0.8F;
  const std::vector<std::vector<float>> points = gatherPoints(all, planes, tiles);
  for (std::size_t b = 0; b < points.size(); ++b) {
    for (std::size_t a = 0; a < b && all.isFree(planes[b]); ++a) {
      float correlation = 0;
      for (std::size_t k = 0; k < points[a].size(); ++k) correlation += points[a][k] * points[b][k];
      if (correlation < kSame) continue;
      all.tellPlanes({planes[b]},
                     "its noise is that of " + all.nameOf(planes[a]) +
                         ", point by point: the same FID processed twice; process this plane from its own");
    }
  }
}

}  // namespace

void checkContents(SampledSeries& all) {
  std::vector<std::size_t> magnitude;
  std::vector<std::size_t> offset;
  for (const std::size_t n : all.findFree()) {
    const PlaneSample& plane = all.planes[n];
    const double median = std::fabs(plane.median);
    const bool isPositive = plane.negativeShare < 0.1 && median < 2 * plane.lowerSpread;
    const bool isOff = median > 1.5 * plane.lowerSpread && median > 1.5 * plane.noise;
    // An offset over a baseline that rolls leaves a few negative values, magnitudes leave none.
    if (isPositive && !(isOff && plane.negativeShare > 0.005)) {
      magnitude.push_back(n);
    } else if (isOff) {
      offset.push_back(n);
    }
  }
  if (!magnitude.empty())
    all.tellPlanes(magnitude,
                   "hardly any of its values are negative: magnitude or power data, which cannot be summed; "
                   "process it without taking absolute values");
  if (!offset.empty()) {
    const PlaneSample& plane = all.planes[offset[0]];
    const std::string level = realToText(std::round(10 * plane.median / plane.noise) / 10);
    all.tellPlanes(offset, "its values lie about " + level +
                               " times the noise and not about 0: an offset; correct "
                               "its baseline");
  }
}

void checkScale(SampledSeries& all) {
  const std::vector<std::size_t> planes = all.findFree();
  const std::vector<std::size_t> tiles = planes.size() > 1 ? findQuietTiles(all, planes) : std::vector<std::size_t>();
  if (tiles.empty()) return;
  const std::vector<double> noise = compareNoise(all, planes, tiles);
  std::vector<std::size_t> odd;
  std::string text;
  for (std::size_t i = 0; i < planes.size(); ++i) {
    if (noise[i] > 0.75 && noise[i] < 1.33) continue;
    if (odd.empty()) text = realToText(std::round(100 * noise[i]) / 100);
    odd.push_back(planes[i]);
  }
  checkTwice(all, planes, tiles);
  all.tellPlanes(odd, "its noise is " + text + " times that of " +
                          (planes.size() == 2 ? all.nameOf(planes[0]) : "most other spectra") +
                          ": another number of scans, receiver gain or scale in the processing, by which its "
                          "intensities differ, too");
}

void checkZeroBoxes(SampledSeries& all) {
  const std::size_t count = all.series.getPeakCount();
  std::vector<std::size_t> empty;  // planes
  std::string text;
  for (const std::size_t n : all.findFree()) {
    std::size_t boxes = 0;
    for (std::size_t j = 0; j < count; ++j) {
      const Sighting& seen = all.series.getSighting(n, j);
      boxes += all.series.isSeen(n, j) && seen.height == 0 && seen.sum == 0;
    }
    if (boxes == 0) continue;
    if (empty.empty()) text = "the boxes of " + std::to_string(boxes) + " of " + std::to_string(count);
    empty.push_back(n);
  }
  all.tellPlanes(empty, text + " peaks hold nothing but zeros: a part of it was blanked, cut off or not processed");
}

}  // namespace peakbox
