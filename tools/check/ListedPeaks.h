#pragma once

#include <string>
#include <vector>

#include "peaks/PeakList.h"

namespace peakbox {

/// The peaks of a list that can be read, or those of them that can be placed.
struct ListedPeaks {
  struct Entry {
    std::int64_t line;
    std::size_t position;  // in the list as it is, from 0
    bool hasNumbers;       // in all fields that are read
  };

  std::string file{};
  PeakList list{};
  std::vector<Entry> entries{};  // one for each peak
  bool isUsable = false;         // whether they can be measured

  const std::string& getLabel(std::size_t j) const { return list.getLabel(static_cast<int>(j)); }

  /// How a finding begins that concerns peak `j`.
  std::string nameOf(std::size_t j) const {
    return getLabel(j).empty() ? "peak " + std::to_string(list.getNumber(static_cast<int>(j))) : getLabel(j);
  }
};

}  // namespace peakbox
