#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include "base/ThrowingMessages.h"

namespace peakbox {

/// The findings of a run in the order in which they are printed: by stage, and in a stage by line.
class Findings {
 public:
  enum Stage { Parameters, Peaks, Spectra, Measurement };

  /// Adds a finding about a file and, unless it is 0, a line; its text begins with "error: " or "warning: ".
  void add(Stage stage, const std::string& file, std::int64_t line, const std::string& text);

  /// Prints all of them, or of a stage the first thousand and how many more there are; whether there are no errors.
  bool print() const;

 private:
  std::array<std::multimap<std::int64_t, std::string>, 4> stages;
  std::array<std::size_t, 4> leftOut{};
  bool hasErrors = false;
};

/// Those of one stage about one file.
struct FileFindings {
  Findings& all;
  Findings::Stage stage;
  std::string file;

  /// Adds one if it is so, its text in parts that are strings and numbers. Returns whether it is.
  template <typename... Parts>
  bool add(bool isSo, std::int64_t line, const Parts&... parts) const {
    if (!isSo) return false;
    std::ostringstream text;
    (text << ... << parts);
    all.add(stage, file, line, text.str());
    return true;
  }
};

/// What peakbox prints when it ends there, on one line.
std::string textOf(const RunEnd& end);

/// The same of a step at which a run may end; nothing where it goes on.
template <typename Step>
std::string tryStep(const Step& step) {
  try {
    step();
    return "";
  } catch (const RunEnd& end) {
    return textOf(end);
  }
}

}  // namespace peakbox
