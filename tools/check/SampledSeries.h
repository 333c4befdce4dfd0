#pragma once

#include <string>
#include <vector>

#include "check/Checks.h"
#include "check/PeakProfiles.h"
#include "check/PlaneSample.h"

namespace peakbox {

/// A peak that a series shows: where in the list, and where it is strongest.
struct StrongPeak {
  std::size_t j;
  std::size_t plane;
  double height;  // there, without its sign, in times the noise of that plane
};

/// A series that has been measured with what was kept of its planes, of which those count, from 0, that were measured;
/// and the planes that are taken out of further checks because a finding explains them.
struct SampledSeries {
  const Parameters& parameters;
  const ListedPeaks& peaks;
  const Series& series;
  const Axes& axes;
  const std::vector<PlaneSample>& planes;
  const std::vector<PeakProfiles>& profiles;
  Findings& findings;
  std::vector<bool> taken;

  bool isFree(std::size_t n) const { return !taken[n] && planes[n].noise > 0; }
  std::vector<std::size_t> findFree() const;
  std::string nameOf(std::size_t n) const { return parameters.settings.getSpectrumFile(series.getIndices()[n]); }
  const std::string& getParameter(std::size_t n, int word) const {
    return parameters.settings.getParameter(series.getIndices()[n], word);
  }

  bool areRepeats(std::size_t a, std::size_t b) const {
    return !getParameter(a, 0).empty() && getParameter(a, 0) == getParameter(b, 0) &&
           getParameter(a, 1) == getParameter(b, 1);
  }

  /// The first words behind the spectra as numbers; nothing unless all are.
  std::vector<double> readParameters() const;

  /// The height of peak j in times the noise of the plane.
  double heightOf(std::size_t n, std::size_t j) const {
    return planes[n].noise > 0 ? series.getSighting(n, j).height / planes[n].noise : 0;
  }
  /// The peaks that are strong enough somewhere, but those of noise and those at which the run ends.
  std::vector<StrongPeak> findPeaks(double level) const;

  /// Adds a finding about planes, at the first of them with the names of some others, and takes all of them out.
  void tellPlanes(const std::vector<std::size_t>& odd, const std::string& text);

  /// Adds a finding at the SPECTRUM line of a plane.
  void tellParameter(std::size_t n, const std::string& text) const;
};

/// A number with its sign and so many decimal places.
std::string writeSigned(double value, int decimals);

/// LevelCheck: planes whose values cannot be compared with those of others.
void checkContents(SampledSeries& all);
void checkScale(SampledSeries& all);
void checkZeroBoxes(SampledSeries& all);

/// ReferenceCheck: planes and lists whose peaks are somewhere else. Returns whether the list is.
bool checkListPlace(const SampledSeries& all);
struct Displacement {
  std::size_t plane;
  std::size_t reference;
  std::array<double, 2> points;
};
std::vector<Displacement> findDisplaced(const SampledSeries& all);
void checkForeign(SampledSeries& all, const std::vector<Displacement>& displaced);
void tellDisplaced(SampledSeries& all, const std::vector<Displacement>& displaced);

/// PhaseCheck: planes out of phase by about 90 degrees.
void checkPhase(SampledSeries& all);

/// OrderCheck: planes and parameters that do not go with one another.
void checkSigns(SampledSeries& all);
void checkRepeats(SampledSeries& all);
bool checkOrder(const SampledSeries& all);  // whether it told something
void checkWeakest(const SampledSeries& all);

/// ToleranceCheck: whether the tolerance goes with how the peaks move.
void checkMovement(const SampledSeries& all);

}  // namespace peakbox
