#include "FuzzSupport.h"
#include "support/ExampleRun.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile example(test::writePipe(test::examplePlane()));
  const std::string bytes(data, size);
  // The other format has a fuzz program of its own.
  if (bytes.starts_with("\x34\x18\xab\xcd") || bytes.starts_with("\xcd\xab\x18\x34")) return 0;
  fuzz::runSeries(example, bytes);
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t sizeLimit,
                                               unsigned seed) {
  static const std::vector<std::size_t> words{36, 220, 224, 396, 400, 404, 476, 872, 876, 916, 996};
  return peakbox::fuzz::mutateSpectrum(words, data, size, sizeLimit, seed);
}
