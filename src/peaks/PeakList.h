#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "peaks/LineSplitter.h"
#include "spectrum/Spectrum.h"

namespace peakbox {

/// Whether a peak of this label stands for noise and not for a signal.
inline bool isNoiseLabel(const std::string& label) { return label.find("noise") != std::string::npos; }

/// The field of a peak's line, counted from 0, that holds -1 when the peak has been deleted, whatever line 6 calls it.
inline constexpr std::int32_t kDeletedColumn = 17;

/// One peak of the list; arrays hold the direct dimension at 0, the indirect one at 1.
struct Peak {
  std::int32_t number;
  std::string label;
  /// Centre, and full width of the bounds: ppm as read, points of the spectrum after `toPoints`.
  std::array<double, 2> position;
  std::array<double, 2> boundsWidth;

  void toPoints(const Spectrum& spectrum);
};

/// The peaks of one peak list file in file order, their places in data points of the run's first spectrum.
class PeakList {
 public:
  /// Reads the file once, converting ppm by the axes of `spectrum`, and returns the number of peaks. A file that cannot
  /// be opened ends the run with status 1, a line with too few fields with status 0. When verbose, reports the number
  /// on standard output.
  unsigned read(const char* path, const Spectrum& spectrum, bool verbose);

  /// The two steps of `read`, for a list that is at hand as a stream: the six header lines, and data lines to the end
  /// of the stream, whose peaks are added.
  void readHeader(std::istream& stream);
  void readPeaks(std::istream& stream, const Spectrum& spectrum);

  /// Adds the peak of a data line; returns whether the line has one, which is not so when it has been deleted.
  bool addPeak(const LineSplitter& fields, const Spectrum& spectrum);

  /// Adds a peak of another list.
  void addPeak(const PeakList& other, int i) { peaks.push_back(other.at(i)); }

  /// Where a data line has its fields, counted from 0; a column that the header does not name is 0.
  std::int32_t getLabelColumn() const { return labelColumn; }
  std::int32_t getPositionColumn(int dim) const { return positionColumn[static_cast<std::size_t>(dim)]; }
  std::int32_t getBoundsColumn(int dim) const { return boundsColumn[static_cast<std::size_t>(dim)]; }

  /// `i` is a position in the list, from 0 to `getCount() - 1`; `dim` is 0 or 1. Neither is checked.
  int getCount() const { return static_cast<int>(peaks.size()); }
  std::int32_t getNumber(int i) const { return at(i).number; }
  const std::string& getLabel(int i) const { return at(i).label; }
  double getPosition(int i, int dim) const { return at(i).position[static_cast<std::size_t>(dim)]; }
  double getBoundsWidth(int i, int dim) const { return at(i).boundsWidth[static_cast<std::size_t>(dim)]; }

 private:
  const Peak& at(int i) const { return peaks[static_cast<std::size_t>(i)]; }

  std::vector<Peak> peaks;
  /// Field indices in a data line.
  std::int32_t labelColumn = 0;
  std::array<std::int32_t, 2> positionColumn{};
  std::array<std::int32_t, 2> boundsColumn{};
};

}  // namespace peakbox
