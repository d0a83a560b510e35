#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/platform/Export.h"

#include <array>
#include <memory>
#include <string>

namespace velmora {

class MBS_ModelConstraintDofVector;
class MBS_ModelPhysicalDofVector;

/// Kinds of coordinates of a body, in their order within the body.
enum MBS_DofKind : unsigned { Trans = 0, Rot = 1, Flex = 2 };

/// Derivative or coupling between one row body and one column body: a 3x3 grid of optional dense blocks,
/// addressed by (row kind, column kind). A null block is structurally zero; the shape of the global sparse
/// matrix is nothing but the union of the blocks that exist. Blocks are stand-alone objects, and settled
/// after construction. Bodies, forces and constraints share this contract.
class VELMORA_EXPORT MBS_GeneralBodyBodyMatrix {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    using Block = std::unique_ptr<MBM_DenseMatrix>;

    /// Makes a general matrix of zeros for each pair of kinds with both counts non-zero.
    MBS_GeneralBodyBodyMatrix(unsigned rowTrans, unsigned rowRot, unsigned rowFlex, unsigned colTrans,
                              unsigned colRot, unsigned colFlex);
    MBS_GeneralBodyBodyMatrix(const MBS_GeneralBodyBodyMatrix&) = delete;
    MBS_GeneralBodyBodyMatrix& operator=(const MBS_GeneralBodyBodyMatrix&) = delete;
    virtual ~MBS_GeneralBodyBodyMatrix();

    virtual std::string getClassName() const { return "MBS_GeneralBodyBodyMatrix"; }

    /// Recomputes the values of all present blocks in place. Pointers that a block doesn't read may be null.
    virtual void update(double time, const P* q, const P* qd, const P* qdd, const C* lagrange) = 0;

    /// Replaces block (r, c) by one of the named class; the symmetric, diagonal and skew classes are rows x
    /// rows.
    void setBlockMatrix(unsigned r, unsigned c, const std::string& matrixClassName, unsigned rows,
                        unsigned cols, double value);
    /// Makes block (r, c) structurally zero.
    void deleteBlock(unsigned r, unsigned c) { block[r][c].reset(); }
    /// Deletes every block but those named.
    void keepOnly(std::initializer_list<std::array<unsigned, 2>> blocksToKeep);

    std::array<std::array<Block, 3>, 3> block; ///< block[row kind][column kind]
    std::array<unsigned, 3> rowDof;            ///< rows per kind of the row body
    std::array<unsigned, 3> colDof;            ///< columns per kind of the column body
    std::string errorString;
};

/// Accumulator for the weighted sum of contributions in one place of the global matrix.
class VELMORA_EXPORT MBS_BodyBodyMatrixInstance : public MBS_GeneralBodyBodyMatrix {
  public:
    using MBS_GeneralBodyBodyMatrix::MBS_GeneralBodyBodyMatrix;
    std::string getClassName() const override { return "MBS_BodyBodyMatrixInstance"; }
    void update(double, const P*, const P*, const P*, const C*) override {}
    /// Sets every element of every block to zero.
    void setToZero();
};

} // namespace velmora
