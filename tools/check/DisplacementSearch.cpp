#include "check/DisplacementSearch.h"

#include <algorithm>
#include <numeric>

#include "integrate/Uphill.h"

namespace peakbox {

std::optional<Point> findDisplacement(const Spectrum& spectrum, double noise, std::vector<PeakTop> tops) {
  constexpr std::int64_t kReach = 64;
  constexpr std::size_t kEnoughPeaks = 40;
  tops.resize(std::min(tops.size(), kEnoughPeaks));
  double mostShown = 0;
  std::size_t count = 0;
  Point displacement{};
  for (std::int64_t a = -kReach; a <= kReach; ++a) {
    for (std::int64_t b = -kReach; b <= kReach; ++b) {
      std::vector<double> shown;
      for (const PeakTop& top : tops) {
        const Point point{top.point[0] + a, top.point[1] + b};
        if (!spectrum.getAxes().contains(point)) continue;
        const double value = top.sign * spectrum.getData()[point[0]][point[1]];
        if (value > 0 && isSure(value, noise)) shown.push_back(std::min(value / top.height, 1.0));
      }
      const double sum = std::accumulate(shown.begin(), shown.end(), 0.0);
      if (sum <= mostShown) continue;
      mostShown = sum;
      count = shown.size();
      displacement = {a, b};
    }
  }
  const bool isFound = count >= kFewestPeaks && count * 10 >= tops.size() * 6 && displacement != Point{};
  return isFound ? std::optional(displacement) : std::nullopt;
}

}  // namespace peakbox
