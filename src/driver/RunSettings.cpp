#include "driver/RunSettings.h"

#include <ostream>

#include "base/Messages.h"

namespace peakbox {

std::int32_t RunSettings::getBoxSize(int dim) const {
  if (boxSize.empty()) fail("ERROR: No BOXSIZE specified.\n");
  return boxSize[static_cast<std::size_t>(dim)];
}

void RunSettings::writeFieldHeader(std::ostream& out) const {
  if (!field.empty()) out << "# FIELD(MHz): " << field << "\n#\n";
}

void RunSettings::writeSpectrumHeader(int index, std::ostream& out) const {
  out << "# SPECTRUM " << index + 1 << ": " << spectrumFiles[static_cast<std::size_t>(index)] << "\n";
}

void RunSettings::writeParametersHeader(int index, std::ostream& out) const {
  if (spectrumTokenCount < 3) return;
  out << "# PARAMETERS: " << spectrumParameters1[static_cast<std::size_t>(index)];
  if (spectrumTokenCount > 3) out << "\t" << spectrumParameters2[static_cast<std::size_t>(index)];
  out << "\n";
}

}  // namespace peakbox
