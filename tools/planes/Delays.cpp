#include "planes/Delays.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"

namespace peakbox::planes {

namespace {

/// A number and what stands behind it.
struct Delay {
  std::string digits;
  std::string unit;
};

Delay splitDelay(const std::string& text) {
  const std::vector<std::string> words = splitWords(text);
  if (words.size() == 2) return {words[0], words[1]};
  const std::size_t end = words.size() == 1 ? words[0].find_last_of("0123456789.") + 1 : 0;
  return words.size() == 1 ? Delay{words[0].substr(0, end), words[0].substr(end)} : Delay{"", text};
}

std::string writeSeconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.15g", seconds);
  return text;
}

}  // namespace

std::vector<std::string> readDelays(const std::string& file, std::optional<double> secondsPerCount) {
  static const std::map<std::string, double> kPerSecond{{"n", 1e9}, {"ns", 1e9}, {"u", 1e6}, {"us", 1e6},
                                                        {"m", 1e3}, {"ms", 1e3}, {"s", 1}};
  const std::optional<std::string> text = readFile(file);
  std::error_code failed;
  if (!text) refuse(file, std::filesystem::exists(file, failed) ? "cannot be read" : "there is no such file");
  std::vector<std::string> delays;
  bool hasUnits = false;
  std::string bare;  // the first line without a unit that needs one
  for (int number = 0; const std::string& line : splitLines(mendLineEnds(*text))) {
    ++number;
    const std::string uncommented = line.substr(0, line.find_first_of("#;"));
    if (splitWords(uncommented).empty()) continue;
    const auto refuseLine = [&](const std::string& reason) {
      refuse(file + ":" + std::to_string(number),
             std::string("'").append(showControls(line)).append("' is no ") + reason);
    };
    const Delay delay = splitDelay(uncommented);
    const std::optional<double> value = textToDecimal(delay.digits);
    if (secondsPerCount) {
      const bool isCount = value && delay.unit.empty() && *value >= 0 && *value == std::floor(*value);
      if (!isCount) refuseLine("count, which -t asks for");
      delays.push_back(writeSeconds(*value * *secondsPerCount));
      continue;
    }
    const auto unit = kPerSecond.find(delay.unit);
    const bool hasUnit = unit != kPerSecond.end();
    if (!value || hasUnit == delay.unit.empty()) refuseLine("delay, a number or one with n, u, m or s");
    delays.push_back(hasUnit ? writeSeconds(*value / unit->second) : delay.digits);
    hasUnits = hasUnits || hasUnit;
    if (bare.empty() && !hasUnit && *value != 0) bare = file + ":" + std::to_string(number);
  }
  if (hasUnits && !bare.empty()) warn(bare, "has no unit, as other lines have: the number is taken for seconds");
  if (!hasUnits && !secondsPerCount && !delays.empty()) warn(file, "has no units: its numbers are taken for seconds");
  return delays;
}

}  // namespace peakbox::planes
