#pragma once

#include <cstdint>
#include <unordered_map>

#include "check/Findings.h"
#include "driver/RunSettings.h"
#include "spectrum/Spectrum.h"

namespace peakbox {

/// Reads the spectra as a run does, the header of the first one before the peaks, and says what is wrong with each.
class SpectraCheck {
 public:
  SpectraCheck(const RunSettings& runSettings, Findings& all) : settings(runSettings), findings(all) {}

  /// Whether peaks can be placed by the axes of the first spectrum.
  bool readFirstHeader();

  /// Loads spectrum k, from 0, after the first header has been read; whether peaks can be measured in it.
  bool check(int k);

  /// The spectrum read last, and whether a finding explains what its peaks show.
  const Spectrum& getSpectrum() const { return spectrum; }
  bool isExplained() const { return isTold; }

 private:
  bool load(int k, const FileFindings& ofFile);
  bool checkHeader(const FileFindings& ofFile) const;
  bool checkContents(int k, const FileFindings& ofFile);

  const RunSettings& settings;
  Findings& findings;
  Spectrum spectrum;
  bool isTold = false;
  bool hasFirstHeader = false;
  bool isFirstInOrder = false;
  Axes firstAxes;
  std::unordered_map<std::uint64_t, int> spectrumOfContents;  // by the fingerprint
};

}  // namespace peakbox
