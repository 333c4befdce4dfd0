#pragma once

#include <vector>

#include "spectrum/FileHeader.h"

namespace peakbox::planes {

/// An axis of a plane, as its file says.
struct Axis {
  int number = 0;
  std::uint64_t size = 0;
  float sweepWidthHz = 0;
  float originHz = 0;
  float observeMHz = 0;
  bool operator==(const Axis&) const = default;
};

/// A file of NMRPipe in either byte order: one plane or a cube, rows of the first axis for each point of the second.
struct PipeFile {
  /// Reads the header. Whatever holds no planes of the direct dimension is refused.
  explicit PipeFile(const std::string& file);

  /// The header of its planes, little-endian, with the direct dimension first and number 1 for the other one.
  std::string makeHeader() const;

  /// Reads plane `k`, from 0, as little-endian words in rows of the direct dimension; false where the file is cut.
  bool readPlane(std::uint64_t k, std::vector<std::uint32_t>& points) const;

  std::string path;
  FileHeader header;
  bool isSwapped = false;
  int dimensionCount = 0;
  std::array<Axis, 2> axes;
  std::uint64_t planeCount = 1;   // in the file
  std::int64_t claimedCount = 1;  // in the data set, by the header

 private:
  void readOrder();
  void readAxis(std::size_t place);
  void countPlanes();
  std::int32_t integer(std::size_t offset) const { return header.getTruncated(offset, isSwapped); }
  bool isTransposed() const;
  bool isBigEndian() const;
};

}  // namespace peakbox::planes
