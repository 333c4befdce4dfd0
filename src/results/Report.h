#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace peakbox {

/// A report of peakbox, read whole. Spectra and peaks count from 0; texts are as they stand in the report, but that
/// tabs in labels are blanks.
class Report {
 public:
  struct Peak {
    std::string_view number;
    std::string_view label;
    bool isNoise;
  };

  /// A peak in one spectrum.
  struct Row {
    std::string_view ppm1;
    std::string_view ppm2;
    std::string_view intensity;
    double value;
  };

  struct Spectrum {
    std::string_view file;
    bool hasParameters = false;
    std::string_view parameter1;
    std::string_view parameter2;
    std::vector<Row> rows;  // one for each peak
  };

  /// Refuses, as `name`, all that is not a whole report.
  Report(std::string text, std::string name);
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  const std::string& getName() const { return name; }
  const std::vector<Peak>& getPeaks() const { return peaks; }
  const std::vector<Spectrum>& getSpectra() const { return spectra; }

 private:
  enum class Place { Start, Header, Table, Between };

  void readLine(std::string_view line);
  void beginTable(std::string_view line);
  bool readRow(std::string_view line);
  void endTable();
  [[noreturn]] void refuseLine(const std::string& reason) const;
  [[noreturn]] void refuseIncomplete() const;

  std::string text;
  std::string name;
  std::vector<Peak> peaks;
  std::vector<Spectrum> spectra;
  Place place = Place::Start;
  std::size_t lineNumber = 0;
};

/// Reads the report in this file, or on standard input where the path is "-".
std::string readReportText(const std::string& path);
Report readReport(const std::string& path);

/// The first parameter of each spectrum, which are to be numbers; refuses others, for `reader` needs them.
std::vector<double> readParameters(const Report& report, const std::string& reader);

}  // namespace peakbox
