#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace peakbox {

/// Everything that the command line and the parameter file set for a run. `parseArguments` fills it once, or
/// `parseNextLine` line by line; after that it is only read. Every fault of the command line or the parameter file ends
/// the run with status 1; a line with a fault changes nothing.
class RunSettings {
 public:
  /// Applies the options, reads the parameter file and, in verbose mode, writes the box size to standard output.
  /// Returns the verbose flag. `arguments[0]` is the command's own name.
  bool parseArguments(int count, const char* const* arguments);

  /// Reads the next line of a parameter file, the `line`-th counted from 1, and applies it. What is left to do at the
  /// end of the file is to refuse settings without a spectrum.
  void parseNextLine(std::istream& stream, std::int64_t line);
  void refuseNoSpectrum() const;

  /// The words of the line read last.
  const std::vector<std::string>& getTokens() const { return tokens; }

  bool getVerbose() const { return verbose; }
  bool getAbsoluteIntensity() const { return absoluteIntensity; }

  /// Box half-width in data points; `dim` is 0 (direct dimension) or 1 (indirect dimension). Ends the run with status 1
  /// when the parameter file had none.
  std::int32_t getBoxSize(int dim) const;
  bool hasBoxSize() const { return !boxSize.empty(); }

  std::int32_t getSpectrumCount() const { return static_cast<std::int32_t>(spectrumFiles.size()); }

  /// Search tolerance of the direct dimension, Hz.
  double getTolerance1() const { return tolerance1; }

  /// Search tolerance of the indirect dimension, Hz.
  double getTolerance2() const { return tolerance2; }

  /// The texts stay valid as long as the settings live.
  const char* getPeakListFile() const { return peakListFile.c_str(); }
  const char* getOutputFile() const { return outputFile.c_str(); }
  const char* getSpectrumFile(int index) const { return spectrumFiles[static_cast<std::size_t>(index)].c_str(); }

  /// The first or the second word behind the file of a spectrum, `word` 0 or 1; empty where there is none.
  const std::string& getParameter(int index, int word) const {
    return (word == 0 ? spectrumParameters1 : spectrumParameters2)[static_cast<std::size_t>(index)];
  }

  /// The report's "#" lines; spectra are counted from 0 here. A header without a value writes nothing.
  void writeFieldHeader(std::ostream& out) const;
  void writeSpectrumHeader(int index, std::ostream& out) const;
  void writeParametersHeader(int index, std::ostream& out) const;

 private:
  void parseOptions(int count, const char* const* arguments);
  [[noreturn]] static void printUsage(int status);

  void readParameterFile();
  std::int32_t readLine(std::istream& stream);
  bool firstCharIs(char c) const { return tokens[0][0] == c; }
  bool keywordIs(const char* word) const;

  void parseFieldLine(std::int64_t line);
  void parseBoxSizeLine(std::int64_t line);
  void parsePeakListLine(std::int64_t line);
  void parseToleranceLine(std::int64_t line);
  void parseSpectrumLine(std::int64_t line);
  static std::string resolveDitto(const std::vector<std::string>& parameters, const std::string& token,
                                  std::int64_t line);

  bool verbose = false;
  bool awaitingSpectrum = true;
  bool absoluteIntensity = false;
  std::int32_t tokenCount = 0;
  std::vector<std::int32_t> boxSize;
  std::int32_t spectrumTokenCount = 0;
  double tolerance1 = 10.0;
  double tolerance2 = 10.0;
  std::string field;
  std::string inputFile;
  std::string outputFile;
  std::string peakListFile;
  std::vector<std::string> spectrumFiles;
  std::vector<std::string> tokens;
  std::vector<std::string> spectrumParameters1;
  std::vector<std::string> spectrumParameters2;
};

}  // namespace peakbox
