#include "check/PlaneSample.h"

#include <algorithm>
#include <cmath>

#include "base/RobustSpread.h"
#include "integrate/Uphill.h"

namespace peakbox {

namespace {

constexpr std::int64_t kTileHeight = 8;
constexpr std::int64_t kTileWidth = 64;

double takeQuantile(std::vector<double>& values, double share) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

bool isStronger(const Extreme& a, const Extreme& b) { return std::fabs(a.value) > std::fabs(b.value); }

/// Some hundred values of a tile, spread over it, but no zeros, with which planes are filled up.
std::vector<double> sampleTile(const DataPlane& data, const Region& tile) {
  constexpr std::int64_t kMostSteps = 16;
  std::vector<double> values;
  const std::int64_t step1 = std::max<std::int64_t>(1, (tile[0].last - tile[0].first) / kMostSteps);
  const std::int64_t step2 = std::max<std::int64_t>(1, (tile[1].last - tile[1].first) / kMostSteps);
  for (std::int64_t j = tile[1].first; j <= tile[1].last; j += step2) {
    for (std::int64_t i = tile[0].first; i <= tile[0].last; i += step1) {
      if (std::isfinite(data[i][j]) && data[i][j] != 0) values.push_back(data[i][j]);
    }
  }
  return values;
}

/// Adds values of a row less their mean over nine points; NaN for zeros.
void levelRow(const double* row, std::int64_t size, const Range& range, std::vector<double>& levelled) {
  const auto at = [&](std::int64_t i) { return row[std::clamp<std::int64_t>(i, 0, size - 1)]; };
  double sum = 0;
  for (std::int64_t i = range.first - 4; i < range.first + 4; ++i) sum += at(i);
  for (std::int64_t i = range.first; i <= range.last; ++i) {
    sum += at(i + 4);
    levelled.push_back(row[i] == 0 ? NAN : row[i] - sum / 9);
    sum -= at(i - 4);
  }
}

/// 1.4826 times the median magnitude of values that are numbers, 0 where fewer than half of them are.
double findSpread(const std::vector<double>& values) {
  std::vector<double> magnitudes;
  for (const double value : values) {
    if (std::isfinite(value)) magnitudes.push_back(std::fabs(value));
  }
  return 2 * magnitudes.size() > values.size() ? 1.4826 * takeMedian(magnitudes) : 0;
}

/// Of points alike the last one counts, and none beside one that is no number.
bool isExtreme(const double* point, std::int64_t rowSize, double median) {
  const double magnitude = std::fabs(*point - median);
  for (const std::int64_t before : {-rowSize - 1, -rowSize, -rowSize + 1, std::int64_t{-1}}) {
    const bool isHigher =
        std::fabs(point[before] - median) <= magnitude && std::fabs(point[-before] - median) < magnitude;
    if (!isHigher) return false;
  }
  return true;
}

}  // namespace

PlaneSample::PlaneSample(const Spectrum& spectrum, std::size_t peakCount) {
  constexpr std::size_t kFewestExtremes = 500;
  sampleLevels(spectrum);
  sampleTiles(spectrum);
  if (noise > 0) findExtremes(spectrum, kFewestExtremes + peakCount);
}

void PlaneSample::sampleLevels(const Spectrum& spectrum) {
  constexpr std::int64_t kTiles = 8;  // in each dimension
  constexpr std::size_t kFewestValues = 30;
  const std::int64_t width = std::max(kTileHeight, spectrum.getSize(0) / kTiles);
  const std::int64_t height = std::max(kTileHeight, spectrum.getSize(1) / kTiles);
  std::vector<double> all;
  std::vector<double> deviations;
  for (std::int64_t j = 0; j + height <= spectrum.getSize(1); j += height) {
    for (std::int64_t i = 0; i + width <= spectrum.getSize(0); i += width) {
      const Region tile{{{i, i + width - 1}, {j, j + height - 1}}};
      const std::vector<double> values = sampleTile(spectrum.getData(), tile);
      all.insert(all.end(), values.begin(), values.end());
      const double deviation = values.size() > kFewestValues ? takeMedianSpread(values).deviation : 0;
      if (deviation > 0) deviations.push_back(deviation);
    }
  }
  if (deviations.empty()) return;
  noise = takeQuantile(deviations, 0.2);
  const auto negative = std::count_if(all.begin(), all.end(), [](double value) { return value < 0; });
  negativeShare = static_cast<double>(negative) / static_cast<double>(all.size());
  median = takeQuantile(all, 0.5);
  lowerSpread = median - takeQuantile(all, 0.16);
}

void PlaneSample::sampleTiles(const Spectrum& spectrum) {
  constexpr std::int64_t kMostTiles = 128;
  const std::int64_t width = std::min<std::int64_t>(kTileWidth, spectrum.getSize(0));
  const std::int64_t perRow = spectrum.getSize(0) / width;
  const std::int64_t count = perRow * (spectrum.getSize(1) / kTileHeight);
  std::vector<double> values;
  for (std::int64_t n = 0; n < std::min(count, kMostTiles); ++n) {
    const std::int64_t tile = count > kMostTiles ? n * (count - 1) / (kMostTiles - 1) : n;
    const std::int64_t i = tile % perRow * width;
    const std::int64_t j = tile / perRow * kTileHeight;
    values.clear();
    for (std::int64_t row = j; row < j + kTileHeight; ++row)
      levelRow(&spectrum.getData()[0][row], spectrum.getSize(0), {i, i + width - 1}, values);
    const double spread = findSpread(values);
    tileSpreads.push_back(static_cast<float>(spread));
    std::array<std::int8_t, kTilePoints>& points = tilePoints.emplace_back();
    for (std::size_t k = 0; k < kTilePoints; ++k) {
      const double value = values[k * values.size() / kTilePoints] / spread;
      points[k] = std::fabs(value) < 2.5 ? static_cast<std::int8_t>(std::lround(40 * value)) : kFarOff;
    }
  }
}

void PlaneSample::findExtremes(const Spectrum& spectrum, std::size_t most) {
  const std::int64_t size = spectrum.getSize(0);
  double level = 5 * noise;
  const auto keepStrongest = [&] {
    if (extremes.size() <= most) return;
    const auto end = extremes.begin() + static_cast<std::ptrdiff_t>(most);
    std::nth_element(extremes.begin(), end, extremes.end(), isStronger);
    level = std::fabs(end->value - static_cast<float>(median));
    extremes.erase(end, extremes.end());
  };
  for (std::int64_t j = 1; j + 1 < spectrum.getSize(1); ++j) {
    const double* row = &spectrum.getData()[0][j];
    for (std::int64_t i = 1; i + 1 < size; ++i) {
      const double magnitude = std::fabs(row[i] - median);
      if (!(magnitude > level) || !std::isfinite(magnitude) || !isExtreme(row + i, size, median)) continue;
      extremes.push_back({{static_cast<float>(i), static_cast<float>(j)}, static_cast<float>(row[i] - median)});
      if (extremes.size() >= 8 * most) keepStrongest();
    }
  }
  keepStrongest();
  for (Extreme& extreme : extremes) {
    const std::array<double, 2> exact = interpolateTop(
        spectrum, {static_cast<std::int64_t>(extreme.place[0]), static_cast<std::int64_t>(extreme.place[1])});
    extreme.place = {static_cast<float>(exact[0]), static_cast<float>(exact[1])};
  }
  std::sort(extremes.begin(), extremes.end(), [](const Extreme& a, const Extreme& b) { return a.place < b.place; });
}

std::vector<Extreme> PlaneSample::getStrongest(std::size_t most, double level) const {
  std::vector<Extreme> strongest;
  for (const Extreme& extreme : extremes) {
    if (std::fabs(extreme.value) > level * noise) strongest.push_back(extreme);
  }
  std::sort(strongest.begin(), strongest.end(), isStronger);
  strongest.resize(std::min(strongest.size(), most));
  return strongest;
}

const Extreme* PlaneSample::findTop(const std::array<double, 2>& place, const std::array<double, 2>& reach,
                                    bool positive) const {
  const Extreme* top = nullptr;
  double most = 8 * noise;
  const auto isBefore = [](const Extreme& extreme, double x) { return extreme.place[0] < x; };
  auto next = std::lower_bound(extremes.begin(), extremes.end(), place[0] - reach[0], isBefore);
  for (; next != extremes.end() && next->place[0] <= place[0] + reach[0]; ++next) {
    const double height = positive ? next->value : -next->value;
    if (std::fabs(next->place[1] - place[1]) > reach[1] || height <= most) continue;
    most = height;
    top = &*next;
  }
  return top;
}

}  // namespace peakbox
