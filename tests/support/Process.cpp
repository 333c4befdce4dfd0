#include "support/Process.h"

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace peakbox::test {

std::string outcome(int status, const std::string& err, const std::string& report, const std::string& out) {
  return "status " + std::to_string(status) + "\nerr:\n" + err + "report:\n" + report + "out:\n" + out;
}

ScratchFolder::ScratchFolder() : folder(std::filesystem::temp_directory_path() / "peakbox-test-XXXXXX") {
  if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("cannot make a folder " + folder);
}

ScratchFolder::~ScratchFolder() { std::filesystem::remove_all(folder); }

std::string ScratchFolder::write(const std::string& name, const std::string& bytes) const {
  const std::string path = folder + "/" + name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

std::string ScratchFolder::run(const std::string& command) const {
  // A complaint of a sanitizer must not pass for a refusal, and memory that is refused is no complaint.
  const std::string options =
      "export ASAN_OPTIONS=exitcode=99:allocator_may_return_null=1 UBSAN_OPTIONS=exitcode=99 && ";
  const std::string place = options + "cd '" + folder + "' && PATH=" PEAKBOX_PROGRAMS ":$PATH && ";
  const int result = std::system((place + "( " + command + " ) >out 2>err").c_str());
  const auto read = [this](const std::string& name) {
    std::ifstream stream(folder + "/" + name, std::ios::binary);
    return stream.is_open() ? std::string(std::istreambuf_iterator<char>(stream), {}) : "(no file)";
  };
  const int status = WIFEXITED(result) ? WEXITSTATUS(result) : 128 + WTERMSIG(result);
  return outcome(status, read("err"), read("report"), read("out"));
}

}  // namespace peakbox::test
