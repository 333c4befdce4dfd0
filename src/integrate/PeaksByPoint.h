#pragma once

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "integrate/Series.h"

namespace peakbox {

/// The peaks that one spectrum of a series shows, by the points at which they were measured. A point belongs to the
/// peak whose listed place is nearest; among equals to the first, and to one of noise only if no other is there.
class PeaksByPoint {
 public:
  struct Entry {
    Point point;
    bool isNoise;
    double distance;  // of the listed place
    std::size_t peak;
  };

  PeaksByPoint(const Series& series, std::size_t n, const PeakList& peaks);

  /// All peaks, those of a point behind the one that it belongs to.
  const std::vector<Entry>& getEntries() const { return entries; }

  /// Calls `visit` with those to which points within `reach` belong; of very many with the nearer ones of dimension 1.
  template <typename Visit>
  void visitNear(const Point& point, const Point& reach, const Visit& visit) const;

 private:
  std::vector<Entry> entries;
  std::vector<Entry> owners;
};

template <typename Visit>
void PeaksByPoint::visitNear(const Point& point, const Point& reach, const Visit& visit) const {
  constexpr std::ptrdiff_t kMost = 1000;  // to either side
  const auto isBefore = [](const Entry& entry, const Point& place) { return entry.point < place; };
  const auto middle = std::lower_bound(owners.begin(), owners.end(), point, isBefore);
  const auto tryOne = [&](const Entry& entry) {
    if (std::abs(entry.point[0] - point[0]) > reach[0]) return false;
    if (std::abs(entry.point[1] - point[1]) <= reach[1]) visit(entry);
    return true;
  };
  for (auto next = middle; next != owners.end() && next - middle < kMost && tryOne(*next);) ++next;
  for (auto next = middle; next != owners.begin() && middle - next < kMost && tryOne(*(next - 1));) --next;
}

}  // namespace peakbox
