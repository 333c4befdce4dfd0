#include "results/NoiseFile.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"

namespace peakbox {

namespace {

constexpr std::size_t kFields = 5;

/// The numbers of a line; nothing where they are not those of the spectrum with this number.
std::optional<std::array<double, kFields>> readNumbers(std::string_view line, std::size_t number) {
  const std::vector<std::string_view> fields = splitFields(line, '\t');
  std::array<double, kFields> numbers{};
  if (fields.size() != kFields) return std::nullopt;
  for (std::size_t n = 0; n < kFields; ++n) {
    const std::optional<double> value = textToDecimal(std::string(fields[n]));
    if (!value || !(*value > 0)) return std::nullopt;
    numbers[n] = *value;
  }
  if (fields[0] != std::to_string(number) || std::max(numbers[3], numbers[4]) >= 0x1p63) return std::nullopt;
  return numbers;
}

}  // namespace

std::string writeNoiseHeader() { return "# Spectrum\tBoxNoise\tPointNoise\tBoxes\tUsed\n"; }

std::string writeNoiseLine(int number, const SpectrumNoise& noise) {
  return std::to_string(number) + "\t" + realToText(noise.box) + "\t" + realToText(noise.point) + "\t" +
         std::to_string(noise.boxCount) + "\t" + std::to_string(noise.used) + "\n";
}

std::vector<SpectrumNoise> readNoiseFile(const std::string& path, std::size_t spectrumCount, const std::string& owner) {
  const std::optional<std::string> bytes = readFile(path);
  if (!bytes) refuse(path, "cannot be read");
  const std::string text = mendLineEnds(*bytes);
  const std::vector<std::string> lines = splitLines(text);
  if (lines.empty() || lines[0] + "\n" != writeNoiseHeader()) refuse(path, "this is no file of peakbox-noise");
  std::vector<SpectrumNoise> noise;
  for (std::size_t n = 1; n < lines.size(); ++n) {
    const bool isCut = n + 1 == lines.size() && !text.ends_with('\n');
    const auto numbers = isCut ? std::nullopt : readNumbers(lines[n], n);
    if (!numbers) refuse(path, "line " + std::to_string(n + 1) + ": not a whole line of peakbox-noise");
    const auto& [number, box, point, boxCount, used] = *numbers;
    noise.push_back({box, point, static_cast<std::int64_t>(boxCount), static_cast<std::int64_t>(used)});
  }
  if (noise.size() != spectrumCount) {
    refuse(path, "has the noise of " + std::to_string(noise.size()) + " spectra, and " + owner + " has " +
                     std::to_string(spectrumCount) + " spectra");
  }
  return noise;
}

}  // namespace peakbox
