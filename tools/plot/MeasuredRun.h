#pragma once

#include <set>

#include "integrate/Series.h"
#include "plot/RatesFile.h"
#include "results/Report.h"

namespace peakbox {

/// A rectangle of the plane in points, where point n reaches from n - 0.5 to n + 0.5.
struct Window {
  std::array<double, 2> low{};
  std::array<double, 2> high{};
};

/// What is wrong with a peak, empty where nothing is, and the spectra that show it.
struct Trouble {
  std::string text;
  std::set<std::size_t> spectra;
};

/// A run measured again, and its report. Peaks and spectra count from 0.
struct MeasuredRun {
  /// Refuses what cannot be measured or drawn, and a report that is not this run's.
  MeasuredRun(const std::string& parameterFile, const std::string& reportFile);

  /// The box of peak j in spectrum k, and the magnitude of its point.
  Window getBox(std::size_t j, std::size_t k) const;
  double getHeight(std::size_t j, std::size_t k) const { return std::fabs(series->getSighting(k, j).height); }

  /// The spectra in which a peak is drawn: the first, the last, and one in trouble where these are not.
  std::set<std::size_t> findDrawn(std::size_t j) const;

  RunSettings settings;
  Spectrum spectrum;  // the one loaded last
  Axes axes;          // of the first one, on which all are drawn: boxes are carried on as points
  PeakList peaks;
  std::array<double, 2> halfBox{};  // from its middle to its outline
  std::optional<Series> series;
  std::optional<Report> report;
  std::vector<Trouble> troubles;  // of each peak
  std::vector<double> abscissas;  // the first parameters of the spectra; unless all are numbers, those of the spectra
  bool hasNumbers = true;
  std::vector<double> uncertainties;  // of the intensities in each spectrum, or none
  Results results;                    // of all peaks, which say nothing where there are none
};

}  // namespace peakbox
