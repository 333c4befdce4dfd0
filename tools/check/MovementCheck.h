#pragma once

#include <utility>

#include "check/Checks.h"
#include "check/Findings.h"
#include "integrate/Series.h"

namespace peakbox {

/// The top of a peak in the first spectrum.
struct PeakTop {
  double sign;  // of its value, 1 or -1
  Point point;
  std::array<double, 2> exact;  // between the points
  double height;                // without the sign
  int lastSeen = 0;             // the last spectrum, from 0, that shows it with this sign
  double lastHeight = 0;        // and its height there
};

/// Follows the tops of the peaks uphill from the first plane to all others, however narrow the tolerance is, and tells
/// of planes in which most of them are elsewhere, missing or of the other sign.
class MovementCheck {
 public:
  MovementCheck(const RunSettings& runSettings, const ListedPeaks& listed) : settings(runSettings), peaks(listed) {}

  /// Takes the plane that the series has measured last; the first one comes first.
  void follow(const Series& series, const Spectrum& spectrum);

  /// Adds what was found in all planes.
  void tell(Findings& findings) const;

 private:
  /// A spectrum in which most tops are missing or turned, and the height that they are to have elsewhere to be missed.
  struct OddSpectrum {
    int index;
    bool isTurned;
    double height;
    std::vector<std::size_t> tops;
  };

  void findTops(const Series& series, const Spectrum& spectrum);
  void compareTops(int k, double noise, const Spectrum& spectrum);
  void noteMovement(const std::string& file, const std::string& what, std::array<std::vector<double>, 2> moved);
  std::string describeOdd(const OddSpectrum& odd) const;

  const RunSettings& settings;
  const ListedPeaks& peaks;
  std::vector<PeakTop> tops;                                   // of the peaks that the first spectrum shows
  std::vector<std::pair<std::string, std::string>> movements;  // file and text
  std::vector<OddSpectrum> oddSpectra;
};

}  // namespace peakbox
