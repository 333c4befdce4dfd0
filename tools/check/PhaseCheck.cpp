#include <algorithm>
#include <cmath>
#include <map>

#include "base/RobustSpread.h"
#include "check/SampledSeries.h"

namespace peakbox {

PeakProfiles::PeakProfiles(const Series& series, const Spectrum& spectrum) {
  for (std::size_t j = 0; j < series.getPeakCount(); ++j) {
    if (!isTaken(j, series.getPeakCount())) continue;
    std::array<Profile, 2>& both = profiles.emplace_back();
    for (const std::size_t d : {0U, 1U}) {
      for (std::int64_t k = -kReach; k <= kReach; ++k) {
        Point point = series.getSighting(0, j).point;
        point[d] += k;
        const bool isIn = spectrum.getAxes().contains(point);
        both[d][static_cast<std::size_t>(k + kReach)] =
            isIn ? static_cast<float>(spectrum.getData()[point[0]][point[1]]) : NAN;
      }
    }
  }
}

namespace {

constexpr std::int64_t kSide = 6;  // points that are looked at to either side
constexpr std::size_t kFewestPeaksOfPhase = 8;
using Window = std::array<double, 2 * kSide + 1>;

/// A peak with its profiles, and where among them.
struct ProfiledPeak {
  StrongPeak peak;
  std::size_t position;
};

std::vector<ProfiledPeak> findProfiled(const SampledSeries& all) {
  std::vector<ProfiledPeak> profiled;
  for (const StrongPeak& peak : all.findPeaks(10)) {
    const std::size_t count = all.series.getPeakCount();
    if (PeakProfiles::isTaken(peak.j, count)) profiled.push_back({peak, peak.j / (count / 128 + 1)});
  }
  return profiled;
}

/// Cuts what plane n has along a dimension around an offset from where a peak was found in the first plane; false where
/// that is out of reach.
bool cutWindow(const SampledSeries& all, std::size_t n, std::size_t position, std::size_t d, std::int64_t offset,
               Window& window) {
  if (std::abs(offset) > PeakProfiles::kReach - kSide) return false;
  const auto start = static_cast<std::size_t>(offset + PeakProfiles::kReach - kSide);
  for (std::size_t k = 0; k < window.size(); ++k)
    window[k] = all.profiles[n].profiles[position][d][start + k] - all.planes[n].median;
  return std::isfinite(window.front() + window.back());
}

/// The top of a peak in the plane where it is strongest but for plane n; nullptr where it has none.
const Extreme* findTopElsewhere(const SampledSeries& all, std::size_t n, std::size_t j) {
  constexpr std::array<double, 2> kReach{4.5, 2.5};
  std::size_t best = n;
  for (std::size_t m = 0; m < all.planes.size(); ++m) {
    const bool isBetter = best == n || std::fabs(all.heightOf(m, j)) > std::fabs(all.heightOf(best, j));
    if (m != n && isBetter) best = m;
  }
  const Point& point = all.series.getSighting(0, j).point;
  return all.planes[best].findTop({static_cast<double>(point[0]), static_cast<double>(point[1])}, kReach,
                                  all.heightOf(best, j) > 0);
}

/// Whether the median profile about the tops that other planes have, of their sign and height, is antisymmetric.
bool isAntisymmetric(const SampledSeries& all, std::size_t n, std::size_t d, const std::vector<ProfiledPeak>& peaks) {
  std::array<std::vector<double>, 2 * kSide + 1> profile;
  std::vector<double> errors;
  for (const ProfiledPeak& peak : peaks) {
    const Extreme* top = findTopElsewhere(all, n, peak.peak.j);
    if (top == nullptr) continue;
    const std::int64_t offset = std::lround(top->place[d]) - all.series.getSighting(0, peak.peak.j).point[d];
    Window window{};
    if (!cutWindow(all, n, peak.position, d, offset, window)) continue;
    for (std::size_t k = 0; k < window.size(); ++k) profile[k].push_back(window[k] / top->value);
    errors.push_back(all.planes[n].noise / std::fabs(top->value));
  }
  if (errors.size() < kFewestPeaksOfPhase) return false;
  const double error = 1.25 * takeMedian(errors) / std::sqrt(static_cast<double>(errors.size()));
  Window median{};
  for (std::size_t k = 0; k < median.size(); ++k) median[k] = takeMedian(profile[k]);
  double odd = 0;
  double even = 0;
  double highest = 0;
  for (std::size_t k = 0; k < median.size(); ++k) {
    const double mirrored = median[median.size() - 1 - k];
    odd += std::pow(median[k] - mirrored, 2);
    even += std::pow(median[k] + mirrored, 2);
    highest = std::max(highest, std::fabs(median[k]));
  }
  return highest > std::max(6 * error, 0.05) && odd > 0.6 * (odd + even);
}

/// Whether most peaks have a lobe of the other sign, on the same side, at least half as high as they are.
bool hasLobes(const SampledSeries& all, std::size_t n, std::size_t d, const std::vector<ProfiledPeak>& peaks) {
  std::vector<double> ratios;
  double side = 0;
  double signedSide = 0;
  for (const ProfiledPeak& peak : peaks) {
    const std::int64_t offset =
        all.series.getSighting(n, peak.peak.j).point[d] - all.series.getSighting(0, peak.peak.j).point[d];
    Window window{};
    if (!cutWindow(all, n, peak.position, d, offset, window)) continue;
    const auto [lowest, highest] = std::minmax_element(window.begin(), window.end());
    const double high = std::max(*highest, -*lowest);
    if (high < 10 * all.planes[n].noise) continue;
    ratios.push_back(std::min(*highest, -*lowest) / high);
    const double onSide = highest > lowest ? 1 : -1;
    side += onSide;
    signedSide += std::copysign(onSide, onSide * all.heightOf(peak.peak.plane, peak.peak.j));
  }
  if (ratios.size() < kFewestPeaksOfPhase) return false;
  const double consistent = std::max(std::fabs(side), std::fabs(signedSide)) / static_cast<double>(ratios.size());
  return consistent > 0.6 && takeMedian(ratios) > 0.5;
}

}  // namespace

void checkPhase(SampledSeries& all) {
  const std::vector<ProfiledPeak> peaks = findProfiled(all);
  for (const std::size_t d : {0U, 1U}) {
    std::vector<std::size_t> dispersive;
    for (const std::size_t n : all.findFree()) {
      if (isAntisymmetric(all, n, d, peaks) || hasLobes(all, n, d, peaks)) dispersive.push_back(n);
    }
    all.tellPlanes(dispersive, "its peaks have a lobe of the other sign beside them in dimension " +
                                   std::to_string(d + 1) + ": out of phase by about 90 degrees; phase it again");
  }
}

}  // namespace peakbox
