#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>

#include "base/Refusal.h"
#include "planes/Layout.h"
#include "spectrum/FileHeader.h"
#include "spectrum/Nuclei.h"

namespace peakbox::planes {

namespace {

constexpr std::size_t kHeaderSize = 180;
constexpr std::size_t kAxisSize = 128;

/// The header of an axis, which begins at `start`.
struct UcsfAxis {
  const std::string& bytes;
  std::size_t start;

  std::uint32_t word(std::size_t offset) const {
    std::uint32_t value = 0;
    std::memcpy(&value, &bytes[start + offset], sizeof value);
    return std::endian::native == std::endian::big ? value : reverseBytes(value);
  }
  double real(std::size_t offset) const { return std::bit_cast<float>(word(offset)); }

  std::string nucleus() const { return bytes.substr(start, std::min<std::size_t>(bytes.find('\0', start) - start, 6)); }
  std::uint32_t size() const { return word(8); }
  std::uint32_t tile() const { return word(16); }
  double observeMHz() const { return real(20); }
  double sweepWidthHz() const { return real(24); }
  double firstPpm() const { return real(28) + sweepWidthHz() / observeMHz() / 2; }
};

std::string readHeader(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string bytes(kHeaderSize + 3 * kAxisSize, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const auto found = static_cast<std::size_t>(stream.gcount());
  const int count = static_cast<unsigned char>(bytes[10]);
  if (found < kHeaderSize) refuse(path, "is cut inside its header");
  if (bytes[13] != 2) refuse(path, "is not of version 2 of the format");
  if (bytes[11] != 1) refuse(path, "is not real: it has several components");
  if (count < 2 || count > 3) {
    refuse(path, "has " + std::to_string(count) + " dimensions, and only two or three can be read");
  }
  if (found < kHeaderSize + kAxisSize * static_cast<std::size_t>(count)) refuse(path, "is cut inside its header");
  return bytes;
}

/// Which of three axes is that of the delays: the one whose frequency goes with no nucleus while the others are a pair
/// of nuclei, else the shortest.
std::size_t findDelays(const std::vector<UcsfAxis>& axes, const std::string& path) {
  const auto arePair = [&](std::size_t a, std::size_t b) {
    return nameDimensions(axes[a].observeMHz(), axes[b].observeMHz())[0] != "D1";
  };
  for (std::size_t d = 0; d < 3; ++d) {
    const std::size_t a = (d + 1) % 3;
    const std::size_t b = (d + 2) % 3;
    if (arePair(a, b) && !arePair(a, d) && !arePair(b, d)) return d;
  }
  warn(path, "no frequency tells the axis of the delays: the planes are those of the two longer ones");
  const auto isShorter = [](const UcsfAxis& a, const UcsfAxis& b) { return a.size() < b.size(); };
  return static_cast<std::size_t>(std::min_element(axes.begin(), axes.end(), isShorter) - axes.begin());
}

}  // namespace

Layout readUcsf(const std::string& path) {
  const std::string bytes = readHeader(path);
  const std::size_t count = static_cast<unsigned char>(bytes[10]);
  std::vector<UcsfAxis> axes;
  Layout layout{.path = path, .start = kHeaderSize + kAxisSize * count, .isBigEndian = true};
  for (std::size_t n = 0; n < count; ++n) {
    const UcsfAxis& axis = axes.emplace_back(UcsfAxis{bytes, kHeaderSize + kAxisSize * n});
    if (axis.size() < 1 || axis.size() > INT32_MAX || axis.tile() < 1 || axis.tile() > INT32_MAX) {
      refuse(path, "axis " + std::to_string(n + 1) + " has no points, or tiles without points");
    }
    layout.sizes[n + 3 - count] = axis.size();
    layout.tiles[n + 3 - count] = axis.tile();
  }
  refuseOtherLength(layout);
  if (count == 3) layout.stacked = findDelays(axes, path);
  layout.direct = layout.stacked == 2 ? 1 : 2;
  layout.indirect = 3 - layout.stacked - layout.direct;
  layout.claimedCount = static_cast<std::int64_t>(layout.getPlaneCount());
  for (const std::size_t d : {0U, 1U}) {
    const std::size_t n = (d == 0 ? layout.direct : layout.indirect) + count - 3;
    const UcsfAxis& axis = axes[n];
    layout.axes[d] = makeAxis(path, "axis " + std::to_string(n + 1), axis.size(), axis.observeMHz(),
                              axis.sweepWidthHz(), axis.firstPpm());
    layout.axes[d].label = axis.nucleus();
  }
  return layout;
}

}  // namespace peakbox::planes
