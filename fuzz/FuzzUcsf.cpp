#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  using namespace peakbox;
  static const fuzz::InputFile file;
  file.write({data, size});
  fuzz::runPlanes({file.path()});
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t sizeLimit,
                                               unsigned seed) {
  static const std::vector<std::size_t> words{8,   12,  188, 196, 200, 204, 208, 316, 324,
                                              328, 332, 336, 444, 452, 456, 460, 464};
  return peakbox::fuzz::mutateSpectrum(words, data, size, sizeLimit, seed);
}
