#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace peakbox::planes {

/// An axis of planes, in the words that NMRPipe has for it.
struct Axis {
  std::uint64_t size = 0;
  float sweepWidthHz = 0;
  float originHz = 0;  // of the last point
  float observeMHz = 0;
  std::string label = {};  // at most 8 bytes
};

/// The axis of a dimension with its first point at `firstPpm`; its words give each point's ppm as nearly as they can.
/// Refused where these numbers make no axis; `name` is for the message.
Axis makeAxis(const std::string& path, const std::string& name, std::uint64_t size, double observeMHz,
              double sweepWidthHz, double firstPpm);

enum class Word { Float, Integer, Double };

/// How a file holds planes: as an array of three axes, the slowest first, cut into tiles. Tiles follow each other in
/// the order of the axes, and so do the points of a tile; those at the end of an axis are padded to their full size.
struct Layout {
  std::string path;
  std::uint64_t start = 0;  // of the data, in bytes
  Word word = Word::Float;
  bool isBigEndian = false;
  int exponent = 0;  // integers are to be multiplied by two to its power
  std::array<std::uint64_t, 3> sizes{1, 1, 1};
  std::array<std::uint64_t, 3> tiles{1, 1, 1};
  /// Which of the three is stacked, which is the direct dimension and which the other one of the planes.
  std::size_t stacked = 0;
  std::size_t indirect = 1;
  std::size_t direct = 2;

  std::array<Axis, 2> axes = {};  // of the planes, direct dimension first
  std::int64_t claimedCount = 1;  // planes of the data set that this file is a part of
  std::string pipeHeader = {};    // that of NMRPipe, little-endian, which the planes keep but for their axes

  std::uint64_t getPlaneCount() const { return sizes[stacked]; }
};

/// Reads how a file is laid out, or the data in a Bruker folder. Whatever holds no planes of real, transformed data is
/// refused, and so are files of another length than their headers say.
Layout readLayout(const std::string& path);

/// The readers of the formats, for a file that there is; for Bruker's the file or its folder.
Layout readPipe(const std::string& path);
Layout readUcsf(const std::string& path);
Layout readBruker(const std::string& path);

/// Refuses a file that has not the length of its layout.
void refuseOtherLength(const Layout& layout);

/// Reads plane `k`, from 0, as little-endian floats in rows of the direct dimension; false where the file is cut.
bool readPlane(const Layout& layout, std::uint64_t k, std::vector<std::uint32_t>& points);

/// The NMRPipe header of its planes.
std::string makeHeader(const Layout& layout);

}  // namespace peakbox::planes
