#pragma once

#include <velmora/velmora.h>

#include <string>

namespace velmora::driver {

/// A modal file as the kernel's reader sees it.
struct ModalFile {
    explicit ModalFile(const std::string& name) : reader(name) { isRead = reader.readMtxFile(&content); }

    unsigned getNumOfModes() const { return FeLib_MtxConverter::getNumOfModes(content.modes.get()); }
    const MBM_GeneralDenseMatrix* getInvariant(unsigned k) const { return content.getInvariant(k); }
    /// Line of the header of a block, 0 if the file doesn't have it.
    unsigned getLine(const std::string& block) const;

    FeLib_AdamsMtxFileReader reader;
    FeLib_MtxContent content;
    bool isRead = false;
};

/// How a modal file scales its modes.
enum class ModalScaling { UnitMass, UnitStiffness, Other };
ModalScaling findScaling(const ModalFile& file);

} // namespace velmora::driver
