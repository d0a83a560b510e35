#pragma once

#include "velmora/fe_import/FeLib_FeNode.h"

#include <memory>
#include <vector>

namespace velmora {

class FeLib_FeNodeDofVecPattern;
class FeLib_FeNodeLabel2DofVecIndexMapper;
class FeLib_FeNodeList;
class MBM_DenseStandAloneVector;
class MBM_GeneralDenseMatrix;

/// Displacement fields of a mesh, one a column: u = Phi q.
class VELMORA_EXPORT FeLib_FeDisplacementShapes : public FeLib_Item {
  public:
    /// Fields over the DOF of the nodes; without shapes yet.
    explicit FeLib_FeDisplacementShapes(const FeLib_FeNodeList& list);
    ~FeLib_FeDisplacementShapes() override;
    FeLib_FeDisplacementShapes(const FeLib_FeDisplacementShapes&) = delete;
    FeLib_FeDisplacementShapes& operator=(const FeLib_FeDisplacementShapes&) = delete;
    std::string getClassName() const override { return "FeLib_FeDisplacementShapes"; }

    /// Takes Phi and the labels of its columns. False, and Phi is dropped, unless Phi has the rows of the
    /// pattern and a label for each column.
    bool setShapes(std::unique_ptr<MBM_GeneralDenseMatrix> phi,
                   const std::vector<std::uint32_t>& columnLabels);
    /// M becomes the rows of Phi that belong to the DOF of one node, 6 x modes for an imported one. A node
    /// that doesn't exist, or has no DOF, leaves M as it is.
    void addNodeShapes(std::uint32_t nodeLabel, MBM_GeneralDenseMatrix& M) const;

    std::unique_ptr<MBM_GeneralDenseMatrix> shapes;        ///< Phi: DOF of the pattern x modes; may be null
    std::unique_ptr<MBM_DenseStandAloneVector> dofVector;  ///< zero, one entry per DOF
    std::unique_ptr<MBM_DenseStandAloneVector> modeVector; ///< zero, one entry per mode; null without shapes
    std::vector<std::uint32_t> labels; ///< of the modes; their number is that of the modes
    std::unique_ptr<FeLib_FeNodeDofVecPattern> pattern;
    std::unique_ptr<FeLib_FeNodeLabel2DofVecIndexMapper> dofMapper;
};

/// Mode shapes with their frequencies.
class VELMORA_EXPORT FeLib_FeModes : public FeLib_FeDisplacementShapes {
  public:
    explicit FeLib_FeModes(const FeLib_FeNodeList& list);
    ~FeLib_FeModes() override;
    std::string getClassName() const override { return "FeLib_FeModes"; }

    std::unique_ptr<MBM_DenseStandAloneVector> frequencies; ///< Hz, one per mode of the file; null before
};

} // namespace velmora
