#include "check/InputFile.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "base/TextFile.h"
#include "spectrum/FileHeader.h"

namespace peakbox {

namespace {

namespace fs = std::filesystem;

/// The files of formats that people try although peakbox does not read them.
std::string describeForeign(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string start(8, '\0');
  stream.read(start.data(), 8);
  start.resize(static_cast<std::size_t>(stream.gcount()));
  const fs::path name = fs::path(path).filename();
  if (start.starts_with("UCSF NMR")) return "this is a UCSF file, as Sparky has them; peakbox-planes writes its planes";
  if (start.starts_with("\x89HDF")) return "this is an HDF5 file";
  if (start.starts_with("\x1f\x8b")) return "this is a compressed file; unpack it first";
  if (name == "2rr" || name == "3rrr") return "this is a file of a Bruker data set; peakbox-planes writes its planes";
  if (name == "ser" || name == "fid") return "this is a file of a Bruker data set that has not been processed";
  return stream.eof() && start.empty() ? "this is an empty file" : "";
}

/// How much is missing of a file; a damaged header can ask for more than can be counted.
std::string describeLength(const std::string& path, std::uint64_t words) {
  std::error_code ignored;
  const std::uintmax_t bytes = fs::file_size(path, ignored);
  if (bytes >= FileHeader::kSize && (bytes - FileHeader::kSize) / 4 >= words) return "";
  if (words > UINT64_MAX / 8) return "truncated: nearly all is missing";
  return "truncated: " + std::to_string(FileHeader::kSize + 4 * words - bytes) + " bytes are missing";
}

std::string describeRefused(const std::string& path, SpectrumFormat wanted) {
  std::error_code ignored;
  const bool isLink = fs::is_symlink(path, ignored);
  if (!fs::exists(path, ignored)) return isLink ? "this is a link that leads nowhere" : "there is no such file";
  if (access(path.c_str(), R_OK) != 0) return "no permission to read it";
  std::string foreign = describeForeign(path);
  if (!foreign.empty()) return foreign;
  Spectrum alone;
  const std::string end = tryStep([&] { alone.readHeader(path.c_str(), false); });
  const bool isPipeFormat = alone.getFormat() == SpectrumFormat::NMRPipe;
  const bool isCube = isPipeFormat && end.find("not two dimentional") != std::string::npos;
  if (!end.empty()) return isCube ? "peakbox-planes writes the planes of a cube" : "";
  const bool isWanted = wanted == SpectrumFormat::None || wanted == alone.getFormat();
  if (!isWanted) return "it does not have the format of the first spectrum";
  const std::string order = alone.describeOrder();
  return order.empty() ? describeLength(path, alone.countDataWords()) : order;
}

}  // namespace

std::string describeUnusual(const std::string& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::is_directory(status)) {
    const bool isOfBruker = fs::exists(path + "/2rr", ignored) || fs::exists(path + "/3rrr", ignored);
    return isOfBruker ? "this is a folder of a Bruker data set; peakbox-planes writes its planes" : "this is a folder";
  }
  if (fs::is_fifo(status)) return kPipe;
  return fs::exists(status) && !fs::is_regular_file(status) ? "this is no regular file" : "";
}

std::optional<std::string> readText(const FileFindings& findings) {
  const bool setsParameters = findings.stage == Findings::Parameters;
  std::string refusal = describeUnusual(findings.file);
  if (setsParameters && refusal == kPipe) refusal.clear();
  std::optional<std::string> text = refusal.empty() ? readFile(findings.file) : std::nullopt;
  if (refusal.empty()) refusal = "ERROR: Unable to open '" + findings.file + "'";
  if (findings.add(!text, 0, "error: ", refusal)) return std::nullopt;
  findings.add(setsParameters && text->starts_with("\xef\xbb\xbf"), 1,
               "error: begins with a byte-order mark, as Windows editors write it; take it out");
  const auto first = std::find(text->begin(), text->end(), '\r');
  findings.add(
      first != text->end(), 1 + std::count(text->begin(), first, '\n'),
      "error: lines end with a carriage return (\r), as Windows writes them, and peakbox takes it for a part of the "
      "last value; take them out, for instance with dos2unix");
  // Several in a row are one, and one at the end of the file ends no line.
  const auto areTwo = [](char before, char after) { return before == '\r' && after == '\r'; };
  text->erase(std::unique(first, text->end(), areTwo), text->end());
  if (text->ends_with('\r')) text->pop_back();
  return mendLineEnds(*text);
}

std::string explainRefusal(const std::string& path, SpectrumFormat wanted) {
  const std::string text = describeRefused(path, wanted);
  return text.empty() ? "" : " (" + text + ")";
}

}  // namespace peakbox
