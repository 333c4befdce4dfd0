#include "integrate/PeaksByPoint.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>

namespace peakbox {

PeaksByPoint::PeaksByPoint(const Series& series, std::size_t n, const PeakList& peaks) {
  for (std::size_t j = 0; j < series.getPeakCount(); ++j) {
    if (!series.isSeen(n, j)) continue;
    const Point& point = series.getSighting(n, j).point;
    double distance = 0;
    for (const std::size_t d : {0U, 1U}) {
      const BoxExtent& area = series.getFirstArea(j)[d];
      distance += std::pow(static_cast<double>(point[d]) - 0.5 * (area.low + area.high), 2);
    }
    entries.push_back({point, isNoiseLabel(peaks.getLabel(static_cast<int>(j))), distance, j});
  }
  const auto order = [](const Entry& entry) {
    return std::tie(entry.point, entry.isNoise, entry.distance, entry.peak);
  };
  std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) { return order(a) < order(b); });
  const auto areAtOne = [](const Entry& a, const Entry& b) { return a.point == b.point; };
  std::unique_copy(entries.begin(), entries.end(), std::back_inserter(owners), areAtOne);
}

}  // namespace peakbox
