#include "driver/ModalFile.h"

#include <algorithm>

namespace velmora::driver {

unsigned ModalFile::getLine(const std::string& block) const {
    const auto name = std::ranges::find(reader.blockNames, block);
    return name == reader.blockNames.end()
               ? 0
               : reader.blockLines[static_cast<std::size_t>(name - reader.blockNames.begin())];
}

ModalScaling findScaling(const ModalFile& file) {
    const MBM_GeneralDenseMatrix *mass = file.getInvariant(6), *stiffness = file.content.genStiff.get();
    if (mass && mass->isUnitMatrix())
        return ModalScaling::UnitMass;
    return stiffness && stiffness->isUnitMatrix() ? ModalScaling::UnitStiffness : ModalScaling::Other;
}

} // namespace velmora::driver
