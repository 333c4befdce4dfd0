#include <bit>
#include <cstring>

#include "planes/Layout.h"
#include "spectrum/PipeWords.h"

namespace peakbox::planes {

namespace {

void put(std::string& bytes, std::size_t offset, float value) {
  auto word = std::bit_cast<std::uint32_t>(value);
  if (std::endian::native == std::endian::big) word = reverseBytes(word);
  std::memcpy(&bytes[offset], &word, sizeof word);
}

/// A header with what other programs of NMRPipe's look for besides the axes.
std::string makeBareHeader(const std::array<Axis, 2>& axes) {
  std::string bytes(FileHeader::kSize, '\0');
  put(bytes, pipe::kFloatFormat, 4008636160.0F);
  put(bytes, pipe::kFloatOrder, 2.345F);
  put(bytes, pipe::kQuadFlag, 1);
  for (const std::size_t d : {0U, 1U}) {
    const pipe::AxisWords words = pipe::getAxisWords(d == 0 ? pipe::kDirect : pipe::kIndirect);
    const auto middle = static_cast<float>(axes[d].size / 2);
    const float toEnd = 1 - (middle + 1) / static_cast<float>(axes[d].size);
    put(bytes, words.centre, middle + 1);
    put(bytes, words.carrierPpm, (axes[d].originHz + axes[d].sweepWidthHz * toEnd) / axes[d].observeMHz);
  }
  return bytes;
}

}  // namespace

std::string makeHeader(const Layout& layout) {
  std::string bytes = layout.pipeHeader.empty() ? makeBareHeader(layout.axes) : layout.pipeHeader;
  const float order[] = {pipe::kDirect, pipe::kIndirect, 3, 4};
  const float sizes[] = {static_cast<float>(layout.axes[0].size), static_cast<float>(layout.axes[1].size), 1, 1};
  for (std::size_t place = 0; place < pipe::kMostAxes; ++place) {
    put(bytes, pipe::kOrder[place], order[place]);
    put(bytes, pipe::kSize[place], sizes[place]);
  }
  put(bytes, pipe::kDimensionCount, 2);
  put(bytes, pipe::kTransposed, 0);
  for (const std::size_t d : {0U, 1U}) {
    const Axis& axis = layout.axes[d];
    const pipe::AxisWords words = pipe::getAxisWords(d == 0 ? pipe::kDirect : pipe::kIndirect);
    put(bytes, words.sweepWidthHz, axis.sweepWidthHz);
    put(bytes, words.originHz, axis.originHz);
    put(bytes, words.observeMHz, axis.observeMHz);
    put(bytes, words.isTransformed, 1);
    put(bytes, words.quadFlag, 1);
    std::string label = axis.label;
    label.resize(8);
    bytes.replace(words.label, 8, label);
  }
  return bytes;
}

}  // namespace peakbox::planes
