#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace peakbox::fuzz {

/// A file in memory that the program can open by its path.
class InputFile {
 public:
  explicit InputFile(std::string_view bytes = {});
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// Replaces what the file holds.
  void write(std::string_view bytes) const;
  const std::string& path() const { return name; }

 private:
  int descriptor;
  std::string name;
};

/// A pipe that holds `bytes`, at most 64 KiB, for one reader. Its length shows only when it is read.
class InputPipe {
 public:
  explicit InputPipe(std::string_view bytes);
  ~InputPipe();
  InputPipe(const InputPipe&) = delete;
  InputPipe& operator=(const InputPipe&) = delete;

  const std::string& path() const { return name; }

 private:
  int descriptor;
  std::string name;
};

/// Does what peakbox does with this parameter file, until the run ends in one way or another, and then checks it.
void runPrograms(std::string_view parameters);

/// A companion's main function.
using Main = int(int count, char** arguments);

/// Runs a companion with `words`, its name first, until it ends in one way or another.
void runCompanion(Main* companion, std::vector<std::string> words);

/// A new folder for files that the program opens by their names.
std::string makeFolder();

/// Runs peakbox-planes with `words` behind the folder that it writes to, and removes that again.
void runPlanes(std::vector<std::string> words);

/// Runs the program on a series with `bytes` as its first and second file, then on one that begins with `example` and
/// goes on with `bytes` from a pipe.
void runSeries(const InputFile& example, const std::string& bytes);

/// Changes an input of `size` bytes in place, to `sizeLimit` bytes at most, and returns its new size. Few words of a
/// spectrum's header matter: every other change is one of a word at one of these offsets.
std::size_t mutateSpectrum(const std::vector<std::size_t>& headerWords, std::uint8_t* data, std::size_t size,
                           std::size_t sizeLimit, unsigned seed);

}  // namespace peakbox::fuzz
