#include "integrate/Series.h"

#include <cmath>

#include "integrate/Uphill.h"
#include "spectrum/PlaneNoise.h"

namespace peakbox {

Series::Series(const RunSettings& settings, const Spectrum& first, const PeakList& peaks)
    : halfWidths{settings.getBoxSize(0), settings.getBoxSize(1)},
      axes(first.getAxes()),
      boxes(static_cast<unsigned>(peaks.getCount()), settings.getTolerance1(), settings.getTolerance2()),
      losses(static_cast<std::size_t>(peaks.getCount())) {
  boxes.placeBoxes(first, peaks);
  for (int j = 0; j < peaks.getCount(); ++j) firstAreas.push_back({boxes.getExtent1(j), boxes.getExtent2(j)});
}

void Series::measure(int index, const Spectrum& spectrum) {
  indices.push_back(index);
  noise.push_back(estimatePointNoise(spectrum));
  std::vector<Sighting>& seen = sightings.emplace_back(losses.size());
  for (std::size_t j = 0; j < losses.size(); ++j) {
    if (losses[j]) continue;
    try {
      boxes.integratePeak(static_cast<int>(j), spectrum, halfWidths[0], halfWidths[1]);
      seen[j] = sight(j, spectrum);
    } catch (const RunEnd& end) {
      losses[j] = Loss{index, end};
    }
  }
  if (index == 0) boxes.recentreBoxes(static_cast<int>(losses.size()));
}

Sighting Series::sight(std::size_t j, const Spectrum& spectrum) const {
  const int peak = static_cast<int>(j);
  const Point point{std::llround(boxes.getExtent1(peak).centre), std::llround(boxes.getExtent2(peak).centre)};
  const Point top = climb(spectrum, point, noise.back());
  const DataPlane& data = spectrum.getData();
  return {.point = point,
          .height = data[point[0]][point[1]],
          .sum = boxes.getIntensity(peak),
          .top = interpolateTop(spectrum, top),
          .topHeight = data[top[0]][top[1]]};
}

std::array<BoxExtent, 2> Series::getLaterArea(std::size_t j) const {
  return {boxes.getExtent1(static_cast<int>(j)), boxes.getExtent2(static_cast<int>(j))};
}

}  // namespace peakbox
