#pragma once

#include <array>
#include <optional>

#include "list/Rows.h"
#include "peaks/PeakListWriter.h"

namespace peakbox::list {

/// A list of any kind: rows of fields, and which field is what.
struct ForeignList {
  static constexpr std::size_t kNone = SIZE_MAX / 2;  // this and what is above it

  std::string file;
  std::vector<Row> rows = {};
  std::size_t columnCount = kNone;
  std::size_t number = kNone;
  std::array<std::size_t, 2> label{kNone, kNone};  // where the first or the second column of positions is direct
  std::array<std::size_t, 2> ppm{kNone, kNone};
  std::array<std::size_t, 2> bounds{kNone, kNone};
  std::size_t deletion = kNone;
  std::array<std::string, 2> names{};                // of the two columns of positions
  std::array<std::string, 2> descriptions{};         // texts that may name their nuclei
  std::optional<std::size_t> direct = std::nullopt;  // the direct one by the list's format
  bool isDirectSure = false;                         // also where the nuclei differ
  std::string noLabel = "?";
  std::optional<double> noValue = std::nullopt;
  bool hasBracedLabels = false;
  bool hasDecimalCommas = false;
  bool isBetweenCommas = false;
};

/// Recognises the kind of a list and reads it, "-" from standard input; a table where `columns` names its label ("-"
/// for none), first and second position.
ForeignList readForeignList(const std::string& file, const std::vector<std::string>& columns);

/// The readers of the kinds, from at least one row; whatever they are not sure of is refused.
ForeignList readSparky(const std::string& file, std::vector<Row> rows);
ForeignList readPipeTable(const std::string& file, std::vector<Row> rows);
ForeignList readOwn(const std::string& file, std::vector<Row> rows, const std::string& dimensionLine);
ForeignList readTopSpin(const std::string& file, const std::string& text);
ForeignList readTable(const std::string& file, const std::string& text, const std::vector<std::string>& columns);

/// That of a table of CcpNmr; nothing where the text is none.
std::optional<ForeignList> readCcpNmr(const std::string& file, const std::string& text);

/// For these: the first column of a name, or kNone; the only one, else refused; the refusal of a kind not known.
std::size_t seekColumn(const Row& header, const std::string& name);
std::size_t findColumn(const Row& header, const std::string& name);
[[noreturn]] void refuseKind(const std::string& file);

/// A peak as it will be written, but that its pairs stand in the order of the list's columns, and its label is the one
/// of these for the column that is direct.
struct Entry {
  std::string place;
  ListEntry peak;
  std::array<std::string, 2> labels;
};

/// The peaks that are not deleted, with "?" for labels that say nothing, numbered as in the list where it numbers all
/// of them differently, else from 1. A field that is not as it must be is refused.
std::vector<Entry> takeEntries(const ForeignList& list);

}  // namespace peakbox::list
