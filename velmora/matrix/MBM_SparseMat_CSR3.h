#pragma once

#include "velmora/matrix/MBM_Matrix.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace velmora {

/// Root of all sparse matrices.
class VELMORA_EXPORT MBM_SparseMatrix : public MBM_Matrix {
  public:
    std::string getClassName() const override { return "MBM_SparseMatrix"; }
    bool isSparse() const override { return true; }

  protected:
    using MBM_Matrix::MBM_Matrix;
};

/// Sparse matrix in compressed rows: three arrays, one-based 32-bit numbers, columns rising within each row,
/// the layout that direct sparse solvers take. The pattern is fixed at construction.
///
///     | 5 0 7 |     values      5 7 9
///     | 0 0 0 |     colIndices  1 3 2
///     | 0 9 0 |     rowIndex    1 3 3 4
class VELMORA_EXPORT MBM_SparseMat_CSR3 : public MBM_SparseMatrix {
  public:
    /// Pattern of numOfEntries places, one-based, in any order, none twice, all within the matrix; every
    /// value starts as 1.0. Linear in rows, and in entries but for sorting within each row. Errors: code 14
    /// for a dimension 0, code 18 (and no storage) if the entries or rows don't fit the solver's signed
    /// 32-bit numbers.
    MBM_SparseMat_CSR3(unsigned numOfRows, unsigned numOfCols, std::uint64_t numOfEntries,
                       const unsigned* rowNumbers, const unsigned* colNumbers);
    /// Mappers hold addresses into the values: a sparse matrix is neither copied nor moved.
    MBM_SparseMat_CSR3(const MBM_SparseMat_CSR3&) = delete;
    MBM_SparseMat_CSR3& operator=(const MBM_SparseMat_CSR3&) = delete;
    ~MBM_SparseMat_CSR3() override = default;

    std::string getClassName() const override { return "MBM_SparseMat_CSR3"; }
    /// Element (row, col), zero-based; 0.0 outside the pattern. Binary search.
    double getValue(unsigned row, unsigned col) const override;
    /// False, with nothing stored, outside the pattern.
    bool setValue(unsigned row, unsigned col, double value) override;

    /// Place in `values` of the first entry of a row whose column isn't below col (both zero-based); the end
    /// of the row if there is none. Binary search.
    std::size_t lowerBound(unsigned row, unsigned col) const;

    unsigned numNonZeros = 0;
    std::unique_ptr<std::byte[]> storage; ///< the one allocation behind the three arrays
    unsigned* colIndices = nullptr;       ///< `numNonZeros` column numbers; null without entries
    unsigned* rowIndex = nullptr; ///< rows + 1 positions; row i holds rowIndex[i] .. rowIndex[i+1] - 1
    double* values = nullptr;     ///< `numNonZeros` values; null without entries

  private:
    void allocate();
    std::size_t find(unsigned row, unsigned col) const;
};

} // namespace velmora
