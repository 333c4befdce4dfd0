#include "support/Process.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace peakbox::test {

ScratchFolder::ScratchFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "peakbox-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder " + name);
  folder = name;
}

ScratchFolder::~ScratchFolder() { std::filesystem::remove_all(folder); }

void ScratchFolder::write(const std::string& name, const std::string& bytes) const {
  std::ofstream(folder / name, std::ios::binary) << bytes;
}

std::string ScratchFolder::read(const std::string& name) const {
  std::ifstream stream(folder / name, std::ios::binary);
  if (!stream.is_open()) return "(no file)";
  return {std::istreambuf_iterator<char>(stream), {}};
}

Outcome ScratchFolder::run(const std::string& command) const {
  const ScratchFolder streams;
  const std::string target = streams.path().string();
  const std::string shellCommand = "cd '" + folder.string() + "' && PATH=" PEAKBOX_PROGRAMS ":$PATH && ( " + command +
                                   " ) >" + target + "/out 2>" + target + "/err";
  const int result = std::system(shellCommand.c_str());
  const int status = WIFEXITED(result) ? WEXITSTATUS(result) : 128 + WTERMSIG(result);
  return {status, streams.read("out"), streams.read("err")};
}

}  // namespace peakbox::test
