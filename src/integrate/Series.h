#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "base/ThrowingMessages.h"
#include "integrate/BoxTable.h"

namespace peakbox {

/// What one spectrum shows of a peak.
struct Sighting {
  Point point{};                // of the greatest magnitude in the search area
  double height = 0;            // the value there
  double sum = 0;               // of the box around it
  std::array<double, 2> top{};  // reached uphill from there, between the points
  double topHeight = 0;
};

/// Where a run ends at a peak whose box leaves the plane: in spectrum `index`, from 0.
struct Loss {
  int index;
  RunEnd end;
};

/// The peaks of a run followed through its spectra as the run does it. Measured first, then only read; peaks count from
/// 0 in the order of the list, spectra from 0 in the order of the parameter file.
class Series {
 public:
  /// Places all search areas by the axes of the first spectrum, whose header has been read.
  Series(const RunSettings& settings, const Spectrum& first, const PeakList& peaks);

  /// Measures spectrum `index` of the run, which is loaded. The first one comes first; others may be left out. In
  /// programs that survive the end of a run, a peak at which it would end is lost from there on.
  void measure(int index, const Spectrum& spectrum);

  std::size_t getPeakCount() const { return losses.size(); }

  /// The axes of the first spectrum, by which peaks are placed.
  const Axes& getAxes() const { return axes; }

  /// The spectra that have been measured.
  const std::vector<int>& getIndices() const { return indices; }

  /// What the `n`-th spectrum measured shows of peak j, and the noise of a point there. Of a lost peak it shows
  /// nothing.
  const Sighting& getSighting(std::size_t n, std::size_t j) const { return sightings[n][j]; }
  double getNoise(std::size_t n) const { return noise[n]; }
  bool isSeen(std::size_t n, std::size_t j) const { return !losses[j] || losses[j]->index > indices[n]; }
  const std::optional<Loss>& getLoss(std::size_t j) const { return losses[j]; }

  /// The search area of peak j in points, direct dimension first: in the first spectrum, and in the later ones.
  const std::array<BoxExtent, 2>& getFirstArea(std::size_t j) const { return firstAreas[j]; }
  std::array<BoxExtent, 2> getLaterArea(std::size_t j) const;

  /// The table of the spectrum measured last.
  const BoxTable& getBoxes() const { return boxes; }

 private:
  Sighting sight(std::size_t j, const Spectrum& spectrum) const;

  const std::array<std::int32_t, 2> halfWidths;
  const Axes axes;
  BoxTable boxes;
  std::vector<std::array<BoxExtent, 2>> firstAreas;
  std::vector<int> indices;
  std::vector<double> noise;
  std::vector<std::vector<Sighting>> sightings;
  std::vector<std::optional<Loss>> losses;
};

}  // namespace peakbox
