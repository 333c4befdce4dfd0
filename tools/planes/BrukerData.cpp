#include <cmath>
#include <filesystem>
#include <map>

#include "base/Refusal.h"
#include "base/TextFile.h"
#include "base/TextNumbers.h"
#include "planes/Layout.h"

namespace peakbox::planes {

namespace fs = std::filesystem;

namespace {

/// The processing parameters of an axis.
class Parameters {
 public:
  explicit Parameters(std::string file) : path(std::move(file)) {
    std::error_code failed;
    const std::optional<std::string> text = fs::is_regular_file(path, failed) ? readFile(path) : std::nullopt;
    if (!text) refuse(path, fs::exists(path, failed) ? "cannot be read" : "there is no such file");
    for (const std::string& line : splitLines(mendLineEnds(*text))) {
      const std::size_t equal = line.find('=');
      if (!line.starts_with("##$") || equal == std::string::npos) continue;
      const std::vector<std::string> words = splitWords(line.substr(equal + 1));
      if (!words.empty()) values.try_emplace(line.substr(3, equal - 3), words[0]);
    }
  }

  double real(const std::string& name) const {
    const std::optional<double> value = values.contains(name) ? textToDecimal(values.at(name)) : std::nullopt;
    if (!value) refuse(path, "there is no number " + name);
    return *value;
  }

  std::int64_t integer(const std::string& name) const {
    const double value = real(name);
    if (value != std::floor(value) || std::fabs(value) > INT32_MAX) refuse(path, name + " is no whole number");
    return static_cast<std::int64_t>(value);
  }

  std::int64_t integer(const std::string& name, std::int64_t missing) const {
    return values.contains(name) ? integer(name) : missing;
  }

  std::string nucleus() const {
    const std::string text = values.contains("AXNUC") ? values.at("AXNUC") : "<>";
    return text.size() < 2 ? "" : text.substr(1, std::min<std::size_t>(text.size() - 2, 8));
  }

  Axis makeAxis() const {
    Axis axis = planes::makeAxis(path, "this axis", static_cast<std::uint64_t>(integer("SI")), real("SF"), real("SW_p"),
                                 real("OFFSET"));
    axis.label = nucleus();
    return axis;
  }

  const std::string path;

 private:
  std::map<std::string, std::string> values;
};

/// The file of real data, which is given or in the folder that is given.
std::string findData(const std::string& path) {
  std::error_code failed;
  if (!fs::is_directory(path, failed)) return path;
  const bool has2 = fs::exists(fs::path(path) / "2rr", failed);
  const bool has3 = fs::exists(fs::path(path) / "3rrr", failed);
  if (has2 && has3) refuse(path, "has both 2rr and 3rrr; give the file");
  if (has2 || has3) return fs::path(path) / (has2 ? "2rr" : "3rrr");
  refuse(path, fs::exists(fs::path(path) / "pdata", failed)
                   ? "this is a whole experiment; give the folder pdata/N in it"
                   : "this is a folder without processed data, 2rr or 3rrr");
}

/// The data's number of dimensions.
std::size_t countDimensions(const std::string& data) {
  const std::string name = fs::path(data).filename();
  if (name == "fid" || name == "ser") refuse(data, "has not been processed; give the folder pdata/N or the 2rr in it");
  if (name.starts_with('1')) refuse(data, "has one dimension, and only two or three can be read");
  if (name != "2rr" && name != "3rrr") refuse(data, "is an imaginary part; give the real one, 2rr or 3rrr");
  return name == "2rr" ? 2 : 3;
}

/// Says which axis is not transformed, where only that of delays may be so.
std::size_t findStacked(const std::vector<Parameters>& axes, const std::string& data) {
  std::size_t stacked = 3;
  for (std::size_t n = 0; n < axes.size(); ++n) {
    if (axes[n].integer("FT_mod") != 0) continue;
    if (axes.size() == 2 || n == 2 || stacked < 3) refuse(axes[n].path, "this axis is not transformed (FT_mod is 0)");
    stacked = n;
  }
  if (stacked < 3 || axes.size() == 2) return stacked % 3;
  warn(data, "all its axes are transformed: the planes are those of the two longer ones");
  return axes[0].integer("SI") <= axes[1].integer("SI") ? 0 : 1;
}

void setWords(Layout& layout, const Parameters& direct) {
  layout.isBigEndian = direct.integer("BYTORDP") == 1;
  const std::int64_t type = direct.integer("DTYPP", 0);
  if (type != 0 && type != 2) refuse(direct.path, "DTYPP is neither 0 nor 2");
  layout.word = type == 2 ? Word::Double : Word::Integer;
  if (type == 2) return;
  const std::int64_t exponent = direct.integer("NC_proc");
  if (exponent < -100 || exponent > 100) refuse(direct.path, "NC_proc is beyond all measure");
  layout.exponent = static_cast<int>(exponent);
}

}  // namespace

Layout readBruker(const std::string& path) {
  Layout layout{.path = findData(path)};
  const std::size_t count = countDimensions(layout.path);
  std::error_code failed;
  if (!fs::is_regular_file(layout.path, failed)) refuse(layout.path, "this is no regular file");
  const std::string folder = fs::path(layout.path).parent_path() / "";
  std::vector<Parameters> axes;  // the slowest first
  if (count == 3) axes.emplace_back(folder + "proc3s");
  axes.emplace_back(folder + "proc2s");
  axes.emplace_back(folder + "procs");

  setWords(layout, axes.back());
  for (std::size_t n = 0; n < count; ++n) {
    const std::int64_t size = axes[n].integer("SI");
    const std::int64_t tile = axes[n].integer("XDIM", 0);
    if (size < 1 || tile < 0) refuse(axes[n].path, "SI or XDIM is no number of points");
    layout.sizes[n + 3 - count] = static_cast<std::uint64_t>(size);
    layout.tiles[n + 3 - count] = static_cast<std::uint64_t>(tile == 0 ? size : tile);
  }
  refuseOtherLength(layout);
  layout.stacked = findStacked(axes, layout.path);
  layout.indirect = 1 - layout.stacked;
  layout.claimedCount = static_cast<std::int64_t>(layout.getPlaneCount());
  for (const std::size_t d : {0U, 1U}) {
    const Parameters& axis = axes[(d == 0 ? layout.direct : layout.indirect) + count - 3];
    layout.axes[d] = axis.makeAxis();
    if (axis.integer("PH_mod", 1) == 2)
      warn(axis.path, "PH_mod is 2: these are magnitudes, whose noise is not around 0");
  }
  return layout;
}

}  // namespace peakbox::planes
