#include <cstdlib>
#include <filesystem>

#include "FuzzSupport.h"
#include "support/ExampleRun.h"

/// The main function of peakbox-planes.
int peakboxPlanes(int count, char** arguments);

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile example(test::writePipe(test::examplePlane()));
  static const fuzz::InputFile file;
  static std::string parent = "/tmp/peakbox-fuzz-XXXXXX";
  static const bool isMade = mkdtemp(parent.data()) != nullptr;
  if (!isMade) std::abort();
  const std::string folder = parent + "/planes";
  file.write({data, size});
  const auto run = [&](std::vector<std::string> words) {
    words.insert(words.begin(), {"peakbox-planes", "-o", folder});
    fuzz::runCompanion(peakboxPlanes, words);
    std::filesystem::remove_all(folder);
  };
  run({file.path()});
  run({"-k", example.path(), file.path()});
  run({"-l", file.path(), example.path()});
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t sizeLimit,
                                               unsigned seed) {
  static const std::vector<std::size_t> words{36,  40,  44,  48,  52,  60,  96,  100, 104, 108, 204, 220,
                                              224, 396, 400, 404, 476, 872, 876, 880, 884, 888, 916, 996};
  return peakbox::fuzz::mutateSpectrum(words, data, size, sizeLimit, seed);
}
