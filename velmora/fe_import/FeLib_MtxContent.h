#pragma once

#include "velmora/fe_import/FeLib_FeNode.h"

#include <array>
#include <memory>
#include <vector>

namespace velmora {

class FeLib_FeModes;
class FeLib_FeNodeContainer;
class FeLib_FeNodeLabel2NodeIndexMapper;
class FeLib_FeNodeSubset;
class MBM_GeneralDenseMatrix;

/// What a modal file holds. All numbers stand in the units of the file.
class VELMORA_EXPORT FeLib_MtxContent : public FeLib_Item {
  public:
    FeLib_MtxContent();
    FeLib_MtxContent(const FeLib_MtxContent&) = delete;
    FeLib_MtxContent& operator=(const FeLib_MtxContent&) = delete;
    ~FeLib_MtxContent() override;
    std::string getClassName() const override { return "FeLib_MtxContent"; }

    /// Invariant 1 to 9; one that was there is replaced.
    void setInvariant(unsigned number, std::unique_ptr<MBM_GeneralDenseMatrix> matrix);
    /// Null for an invariant that the file doesn't have.
    const MBM_GeneralDenseMatrix* getInvariant(unsigned number) const { return invariants[number - 1].get(); }
    void setGenStiff(std::unique_ptr<MBM_GeneralDenseMatrix> matrix);

    /// Makes `modes`, `nodeSubset` and `nodeIndexMapper` for the nodes read so far. The columns of tMode
    /// (translations) and rMode (rotations), both 3 x (nodes times modes), run by node and within a node by
    /// mode; the first column of selMod (one row per mode) holds the frequencies in Hz. Unless the shapes fit
    /// the nodes and the labels, the modes have frequencies alone.
    void buildModes(const MBM_GeneralDenseMatrix& selMod, const MBM_GeneralDenseMatrix& tMode,
                    const MBM_GeneralDenseMatrix& rMode, const std::vector<std::uint32_t>& labels);

    std::unique_ptr<MBM_GeneralDenseMatrix> genStiff; ///< modes x modes; null until read
    std::unique_ptr<FeLib_FeNodeContainer> nodeList;
    std::unique_ptr<FeLib_FeModes> modes; ///< null until built
    /// Entry k - 1 is invariant k; null until read.
    std::array<std::unique_ptr<MBM_GeneralDenseMatrix>, 9> invariants;
    double mass = 0.0;
    std::array<double, 3> centerOfMass{};                         ///< body frame
    std::vector<std::string> units = std::vector<std::string>(4); ///< of mass, length, time, force
    std::unique_ptr<FeLib_FeNodeSubset> nodeSubset;
    std::unique_ptr<FeLib_FeNodeLabel2NodeIndexMapper> nodeIndexMapper;
};

} // namespace velmora
