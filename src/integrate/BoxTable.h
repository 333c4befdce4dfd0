#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "driver/RunSettings.h"
#include "peaks/PeakList.h"
#include "spectrum/Spectrum.h"

namespace peakbox {

/// One peak's place in one dimension, in data points: the edges of the area that is searched for it, and its centre,
/// which is the listed position until the peak is measured and then the point that was found.
struct BoxExtent {
  double centre = 0.0;
  double low = 0.0;
  double high = 0.0;

  /// The whole points of the area, from first to last as doubles, since edges may be infinite or beyond any integer;
  /// the first lies behind the last where there are none.
  double firstPoint() const { return std::ceil(low); }
  double lastPoint() const { return std::floor(high); }
};

/// The working table of a run: where each peak is looked for and what was measured there in the spectrum in hand.
/// Entry j belongs to peak j of the peak list, from 0, which is also the number that messages give.
class BoxTable {
 public:
  /// Made for a list of `peakCount` peaks; all operations are to be called with that list. Tolerances in Hz, direct
  /// dimension first.
  BoxTable(unsigned peakCount, double tolerance1, double tolerance2);

  /// Builds every search area from the peak list and folds it, by whole sizes, in each dimension: up until its lower
  /// edge is not below 0, then down until its upper edge is not above the size. An area that ends elsewhere than it
  /// began gives a warning; one across point 0 comes back to where it was unless it is wider than the plane. A place
  /// that is no number, or farther off than 2^31 sizes, ends the run with status 1.
  void placeBoxes(const Spectrum& spectrum, const PeakList& peaks);

  /// Of this the part of one peak.
  void placeBox(int j, const Spectrum& spectrum, const PeakList& peaks);

  /// Measures peak j: moves its centre to the point of greatest magnitude in its search area, and sums the
  /// (2 halfWidth1 + 1) x (2 halfWidth2 + 1) points around it. Of an area that holds no point the two beside it are
  /// searched, of one that reaches outside the plane what is inside or, where nothing is, the nearest point. A box that
  /// reaches outside the plane ends the run with status 0, a search area that is not a number with status 1.
  void integratePeak(int j, const Spectrum& spectrum, std::int32_t halfWidth1, std::int32_t halfWidth2);

  /// Measures all peaks in spectrum `index` of the run, from 0. After the first one the search areas move to the points
  /// found there.
  void measureSpectrum(int index, const Spectrum& spectrum, const RunSettings& settings);

  /// Search areas of the first `count` peaks become centre +- tolerance, in points of the spectrum that placed them.
  void recentreBoxes(int count);

  /// Measures all spectra of the run and writes a table for each, flushed when complete. A report that cannot be
  /// created or written is not an error; settings without half-widths end the run before the report is created.
  void writeReport(const RunSettings& settings, Spectrum& spectrum, const PeakList& peaks);

  /// The table of spectrum `index`, from 0, from what this table and `spectrum`'s axes hold.
  void writeSpectrumTable(int index, std::ostream& out, const RunSettings& settings, const Spectrum& spectrum,
                          const PeakList& peaks) const;

  const BoxExtent& getExtent1(int j) const { return extents1[static_cast<std::size_t>(j)]; }
  const BoxExtent& getExtent2(int j) const { return extents2[static_cast<std::size_t>(j)]; }

  /// How often peak j was folded; negative for a peak that was moved up.
  std::int32_t getFoldCount1(int j) const { return foldCount1[static_cast<std::size_t>(j)]; }
  std::int32_t getFoldCount2(int j) const { return foldCount2[static_cast<std::size_t>(j)]; }

  double getIntensity(int j) const { return intensities[static_cast<std::size_t>(j)]; }

 private:
  void convertTolerance(const Spectrum& spectrum);
  void foldDirect(int j, int size);
  void foldIndirect(int j, int size);

  std::array<double, 2> tolerance;
  std::array<double, 2> tolerancePoints{};
  std::vector<BoxExtent> extents1;
  std::vector<BoxExtent> extents2;
  std::vector<double> intensities;
  std::vector<std::int32_t> foldCount1;
  std::vector<std::int32_t> foldCount2;
};

}  // namespace peakbox
