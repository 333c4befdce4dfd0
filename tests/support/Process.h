#pragma once

#include <filesystem>
#include <string>

namespace peakbox::test {

/// What a process left behind: its exit status (128 + n when signal n ended it) and its two streams, byte for byte.
struct Outcome {
  int status;
  std::string out;
  std::string err;
};

/// An empty folder that lives as long as the object.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return folder; }

  /// Writes `bytes` to the file `name` of the folder, replacing it.
  void write(const std::string& name, const std::string& bytes) const;

  /// The bytes of the file `name`, "(no file)" where there is none.
  std::string read(const std::string& name) const;

  /// Runs `command` by the shell in this folder, with `peakbox` and `peakbox-table` of this build first in PATH.
  Outcome run(const std::string& command) const;

 private:
  std::filesystem::path folder;
};

}  // namespace peakbox::test
