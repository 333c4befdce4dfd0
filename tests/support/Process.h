#pragma once

#include <string>

namespace peakbox::test {

/// What a command leaves behind, in one text: its exit status (128 + n when signal n ended it), what it wrote to
/// standard error, the file "report" of its folder, and what it wrote to standard output.
std::string outcome(int status, const std::string& err, const std::string& report = "(no file)",
                    const std::string& out = "");

/// An empty folder that lives as long as the object.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  /// Writes `bytes` to the file `name` of the folder, replacing it, and returns its path.
  std::string write(const std::string& name, const std::string& bytes) const;

  /// Runs `command` by the shell in this folder, with `peakbox` and `peakbox-table` of this build first in PATH and its
  /// streams in the files "out" and "err"; returns its `outcome`.
  std::string run(const std::string& command) const;

 private:
  std::string folder;
};

}  // namespace peakbox::test
