#include "results/NoiseFile.h"

#include <cstdlib>
#include <optional>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"

namespace peakbox {

namespace {

constexpr std::size_t kFields = 7;

std::string writeSize(const std::array<std::int64_t, 2>& size) {
  return std::to_string(size[0]).append("x").append(std::to_string(size[1]));
}

/// The noise that a line holds; nothing where it is not that of the spectrum with this number.
std::optional<SpectrumNoise> readNoise(std::string_view line, std::size_t number) {
  const std::vector<std::string_view> fields = splitFields(line, '\t');
  if (fields.size() != kFields || fields[0] != std::to_string(number) || fields[6].empty()) return std::nullopt;
  std::array<double, 4> numbers{};
  for (std::size_t n = 0; n < numbers.size(); ++n) {
    const std::optional<double> value = textToDecimal(std::string(fields[n + 1]));
    if (!value || !(*value > 0)) return std::nullopt;
    numbers[n] = *value;
  }
  const std::string size(fields[5]);
  char* behind = nullptr;
  const std::int64_t size1 = std::strtoll(size.c_str(), &behind, 10);
  const std::int64_t size2 = *behind == 'x' ? std::strtoll(behind + 1, nullptr, 10) : 0;
  if (size1 <= 0 || size2 <= 0 || writeSize({size1, size2}) != size) return std::nullopt;
  return SpectrumNoise{numbers[0], numbers[1], numbers[2], numbers[3], {size1, size2}, std::string(fields[6])};
}

}  // namespace

std::string writeNoiseHeader() { return "# Spectrum\tBoxNoise\tError\tTail\tPointNoise\tBox\tFile\n"; }

std::string writeNoiseLine(int number, const SpectrumNoise& noise) {
  std::string line = std::to_string(number);
  for (const double value : {noise.box, noise.error, noise.tail, noise.point})
    line.append("\t").append(realToText(value));
  return line.append("\t").append(writeSize(noise.size)).append("\t").append(noise.file).append("\n");
}

std::vector<SpectrumNoise> readNoiseFile(const std::string& path) {
  const std::optional<std::string> bytes = readFile(path);
  if (!bytes) refuse(path, "cannot be read");
  const std::string text = mendLineEnds(*bytes);
  const std::vector<std::string> lines = splitLines(text);
  const bool isOlder = text.starts_with("# Spectrum\tBoxNoise\tPointNoise");
  if (isOlder) refuse(path, "this is of an older peakbox-noise, which took signal for noise; run peakbox-noise again");
  if (lines.empty() || lines[0] + "\n" != writeNoiseHeader()) refuse(path, "this is no file of peakbox-noise");
  std::vector<SpectrumNoise> noise;
  for (std::size_t n = 1; n < lines.size(); ++n) {
    const bool isCut = n + 1 == lines.size() && !text.ends_with('\n');
    const std::optional<SpectrumNoise> ofSpectrum = isCut ? std::nullopt : readNoise(lines[n], n);
    if (!ofSpectrum) refuse(path, "line " + std::to_string(n + 1) + ": not a whole line of peakbox-noise");
    noise.push_back(*ofSpectrum);
    const bool isOtherBox = ofSpectrum->size != noise[0].size;
    if (isOtherBox) refuse(path, "line " + std::to_string(n + 1) + ": the noise of another box than line 2");
  }
  return noise;
}

}  // namespace peakbox
