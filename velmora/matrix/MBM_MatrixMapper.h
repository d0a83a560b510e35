#pragma once

#include "velmora/platform/Export.h"

#include <vector>

namespace velmora {

class MBM_DenseMatrix;
class MBM_SparseMat_CSR3;

/// Precomputed scatter of one dense block into the values of a sparse matrix. Neither may be reallocated
/// while the mapper lives. The creator guarantees that all places of the block are in the pattern.
class VELMORA_EXPORT MBM_MatrixMapper {
  public:
    virtual ~MBM_MatrixMapper() = default;
    /// Overwrites the block's places in the sparse matrix with scale times the block. No search, no
    /// allocation.
    virtual void mapValues(double scale) = 0;

    const MBM_DenseMatrix* source = nullptr; ///< not owned
    const double* sourceData = nullptr;      ///< the source's `data` at construction
    unsigned sourceLeadingDimension = 0;
    unsigned sourceRows = 0;
    unsigned sourceCols = 0;              ///< left 0 by the mapper of a main diagonal
    MBM_SparseMat_CSR3* target = nullptr; ///< not owned
    unsigned rowOffset = 0;               ///< sparse row of the block's element (0, 0), zero-based
    unsigned colOffset = 0;               ///< sparse column of the block's element (0, 0), zero-based
    bool isTransposed = false;            ///< the block enters as its transpose

  protected:
    MBM_MatrixMapper(const MBM_DenseMatrix& block, MBM_SparseMat_CSR3& sparse, unsigned firstRow,
                     unsigned firstCol);
    MBM_MatrixMapper(const MBM_MatrixMapper&) = default;
    MBM_MatrixMapper& operator=(const MBM_MatrixMapper&) = default;
};

/// Scatter of a whole rectangle, whose columns stand side by side in each sparse row.
class VELMORA_EXPORT MBM_Dense_2_CSR3_Mapper : public MBM_MatrixMapper {
  public:
    /// The block's element (0, 0) goes to the sparse element (firstRow, firstCol), zero-based.
    MBM_Dense_2_CSR3_Mapper(const MBM_DenseMatrix& block, MBM_SparseMat_CSR3& sparse, unsigned firstRow,
                            unsigned firstCol, bool transposed);
    void mapValues(double scale) override;

    std::vector<double*> entryPointers; ///< per sparse row of the block: the place of its first element
};

/// Scatter of the main diagonal of a diagonal block; the pattern holds these places alone.
class VELMORA_EXPORT MBM_DenseMatMainDiag_2_CSR3_Mapper : public MBM_MatrixMapper {
  public:
    /// The block's element (0, 0) goes to the sparse element (firstRow, firstCol), zero-based.
    MBM_DenseMatMainDiag_2_CSR3_Mapper(const MBM_DenseMatrix& block, MBM_SparseMat_CSR3& sparse,
                                       unsigned firstRow, unsigned firstCol);
    void mapValues(double scale) override;

    std::vector<double*> entryPointers; ///< per element of the diagonal: its place
};

} // namespace velmora
