#include "FuzzSupport.h"
#include "support/ExampleRun.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile example(test::writeView(test::examplePlane()));
  const std::string bytes(data, size);
  // The other format has a fuzz program of its own.
  if (bytes.starts_with(std::string(4, '\0'))) return 0;
  fuzz::runSeries(example, bytes);
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t sizeLimit,
                                               unsigned seed) {
  static const std::vector<std::size_t> words{0,    24,   1024, 1028, 1048, 1052, 1056, 1060,
                                              1064, 1152, 1156, 1176, 1180, 1184, 1188, 1192};
  return peakbox::fuzz::mutateSpectrum(words, data, size, sizeLimit, seed);
}
