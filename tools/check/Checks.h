#pragma once

#include <string>
#include <vector>

#include "check/Findings.h"
#include "driver/RunSettings.h"
#include "integrate/Series.h"

/// The checks that are made once, in their order, each in the file of its name.
namespace peakbox {

/// What a parameter file sets, as far as it can be read.
struct Parameters {
  std::string file;
  RunSettings settings;
  std::int64_t toleranceLine = 0;  // of the one that counts; 0 where there is none
  std::int64_t fieldLine = 0;
  double field = 0;  // MHz
  std::vector<std::int64_t> spectrumLines;
};

/// ParameterCheck: reads the file, which may be a pipe. When the first spectrum is known, compares FIELD with it.
Parameters readParameters(const FileFindings& findings);
void checkField(const Parameters& parameters, const Spectrum& first, const FileFindings& findings);

/// ReportCheck: what would become of a report of this name.
void checkReport(const std::string& report, const std::string& parameterFile, const RunSettings& settings,
                 Findings& findings);

/// The peaks of a list that can be read, or those of them that can be placed.
struct ListedPeaks {
  struct Entry {
    std::int64_t line;
    std::size_t position;  // in the list as it is, from 0
    bool hasNumbers;       // in all fields that are read
  };

  std::string file{};
  PeakList list{};
  std::vector<Entry> entries{};  // one for each peak
  bool isUsable = false;         // whether they can be measured
  bool isMisread = false;        // positions or widths are not in ppm, which explains what else is wrong with them

  const std::string& getLabel(std::size_t j) const { return list.getLabel(static_cast<int>(j)); }

  /// How a finding begins that concerns peak `j`.
  std::string nameOf(std::size_t j) const {
    return getLabel(j).empty() ? "peak " + std::to_string(list.getNumber(static_cast<int>(j))) : getLabel(j);
  }
};

/// PeakListCheck: reads the list, as far as it can be read, and where the axes of the first spectrum are known returns
/// the peaks that can be placed by them.
ListedPeaks readPeaks(const Spectrum& first, bool hasAxes, const RunSettings& settings, Findings& findings);

/// ListFitCheck: whether a list belongs to the first spectrum; leaves out the peaks that have no place in it. What it
/// was made for is told by `frequencyLine`, which a run does not read.
void checkPlacement(ListedPeaks& peaks, const std::string& frequencyLine, const Spectrum& first,
                    const RunSettings& settings, const FileFindings& findings);

/// What findings about the list or whole planes explain, so that it is not told of single peaks.
struct Explained {
  bool list = false;         // all lines of peaks but errors
  std::vector<bool> planes;  // by spectrum: what peaks show there
};

/// PeakFindings: puts into words what is wrong with the peaks of a series that has been measured.
void tellPeaks(const Series& series, const ListedPeaks& peaks, const Explained& explained, const RunSettings& settings,
               Findings& findings);

/// Peaks that say something of a whole list or spectrum.
inline constexpr std::size_t kFewestPeaks = 3;

}  // namespace peakbox
