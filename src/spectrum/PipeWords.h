#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "spectrum/FileHeader.h"

/// Where an NMRPipe header has what; its words are floats, four bytes each, and labels are eight bytes of text. An axis
/// has a number for good, and stands first, second and so on, the fastest first, in an order that transpositions
/// change: sizes go by that order, all else by the number.
namespace peakbox::pipe {

constexpr std::size_t offsetOf(std::size_t word) { return 4 * word; }

constexpr std::size_t kFloatFormat = offsetOf(1);
constexpr std::size_t kFloatOrder = offsetOf(2);
constexpr std::size_t kDimensionCount = offsetOf(9);
constexpr std::size_t kQuadFlag = offsetOf(106);    // of the whole data set, as that of an axis
constexpr std::size_t kTransposed = offsetOf(221);  // 1 in a two-dimensional file whose rows are the indirect dimension
constexpr std::size_t kMostAxes = 4;
constexpr int kDirect = 2;    // the number of the direct dimension
constexpr int kIndirect = 1;  // that of the only other one in a two-dimensional experiment

/// By place in the order: the axis's number and its number of points.
constexpr std::array<std::size_t, kMostAxes> kOrder{offsetOf(24), offsetOf(25), offsetOf(26), offsetOf(27)};
constexpr std::array<std::size_t, kMostAxes> kSize{offsetOf(99), offsetOf(219), offsetOf(15), offsetOf(32)};

/// Whether a word is text, which has no byte order: four labels, the names of source and user, title and comment, and
/// the last operation.
constexpr bool isText(std::size_t word) {
  return (word >= 16 && word < 24) || (word >= 286 && word < 294) || (word >= 297 && word < 352) ||
         (word >= 464 && word < 472);
}

struct AxisWords {
  std::size_t sweepWidthHz;
  std::size_t originHz;  // frequency of the last point
  std::size_t observeMHz;
  std::size_t isTransformed;  // 1 where it is
  std::size_t quadFlag;       // 0 complex, 1 real
  std::size_t label;
  std::size_t carrierPpm;
  std::size_t centre;  // the point of the carrier, from 1
};

/// The words of the axis of this number, from 1 to 4.
constexpr AxisWords getAxisWords(int number) {
  constexpr std::array<std::array<std::size_t, 8>, kMostAxes> kWords{{{229, 249, 218, 222, 55, 18, 67, 80},
                                                                      {100, 101, 119, 220, 56, 16, 66, 79},
                                                                      {11, 12, 10, 13, 51, 20, 68, 81},
                                                                      {29, 30, 28, 31, 54, 22, 69, 82}}};
  const auto& words = kWords[static_cast<std::size_t>(number) - 1];
  return {.sweepWidthHz = offsetOf(words[0]),
          .originHz = offsetOf(words[1]),
          .observeMHz = offsetOf(words[2]),
          .isTransformed = offsetOf(words[3]),
          .quadFlag = offsetOf(words[4]),
          .label = offsetOf(words[5]),
          .carrierPpm = offsetOf(words[6]),
          .centre = offsetOf(words[7])};
}

/// Whether the words of a header are in the other byte order, which the format does not record: a header that makes no
/// sense as it stands is taken for such a one. Nothing where it makes sense both ways.
std::optional<bool> findByteOrder(const FileHeader& header);

}  // namespace peakbox::pipe
