#pragma once

#include <map>
#include <utility>

#include "check/Checks.h"
#include "check/Findings.h"
#include "integrate/Series.h"

namespace peakbox {

/// The top of a peak in the first spectrum, and in the last one, counted from 0, that shows it with the same sign.
struct PeakTop {
  Point point;
  std::array<double, 2> exact;  // between the points
  double height;
  int lastSeen = 0;
  double lastHeight = 0;
};

/// Follows the tops of the peaks uphill from the first plane to all others, however narrow the tolerance is, and tells
/// of planes in which most of them are elsewhere, missing or of the other sign.
class MovementCheck {
 public:
  MovementCheck(const RunSettings& runSettings, const ListedPeaks& listed) : settings(runSettings), peaks(listed) {}

  /// Takes the plane that the series has measured last.
  void follow(const Series& series, const Spectrum& spectrum);

  /// Adds what was found in all planes.
  void tell(Findings& findings) const;

 private:
  /// Tops, and the height that they are to have elsewhere to be missed.
  struct OddTops {
    double height;
    std::vector<std::size_t> tops;
  };

  void findTops(const Series& series, const Spectrum& spectrum);
  void compareTops(int k, double noise, const Spectrum& spectrum);
  void noteMovement(const std::string& file, const std::string& what, std::array<std::vector<double>, 2> moved);
  std::string describeOdd(bool areTurned, int k, const OddTops& odd) const;

  const RunSettings& settings;
  const ListedPeaks& peaks;
  std::vector<PeakTop> tops;                                   // of the peaks that the first spectrum shows
  std::vector<std::pair<std::string, std::string>> movements;  // file and text
  std::map<std::pair<bool, int>, OddTops> oddTops;             // by whether they are turned or missing, and by spectrum
};

}  // namespace peakbox
