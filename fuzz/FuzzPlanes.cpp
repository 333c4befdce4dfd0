#include "FuzzSupport.h"
#include "support/ExampleRun.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile example(test::writePipe(test::examplePlane()));
  static const fuzz::InputFile file;
  file.write({data, size});
  fuzz::runPlanes({file.path()});
  fuzz::runPlanes({"-k", example.path(), file.path()});
  fuzz::runPlanes({"-l", file.path(), example.path()});
  fuzz::runPlanes({"-l", file.path(), "-t", "2", example.path()});
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t sizeLimit,
                                               unsigned seed) {
  static const std::vector<std::size_t> words{36,  40,  44,  48,  52,  60,  96,  100, 104, 108, 204, 220,
                                              224, 396, 400, 404, 476, 872, 876, 880, 884, 888, 916, 996};
  return peakbox::fuzz::mutateSpectrum(words, data, size, sizeLimit, seed);
}
