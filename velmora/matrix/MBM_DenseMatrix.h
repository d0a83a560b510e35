#pragma once

#include "velmora/matrix/MBM_Matrix.h"

#include <cstddef>
#include <memory>

namespace velmora {

/// Root of all matrices with column-major storage: element (i, j) stands at data[j*ld + i] with the leading
/// dimension ld, so that `data` goes to BLAS as it is. All n x n elements are stored for every kind of
/// matrix.
class VELMORA_EXPORT MBM_DenseMatrix : public MBM_Matrix {
  public:
    std::string getClassName() const override { return "MBM_DenseMatrix"; }

    /// Distance of two neighbours of one row in `data`.
    virtual unsigned getLeadingDimension() const { return rows; }
    /// "Random" fills with numbers in [-1, 1] seeded by the clock, "Unit" with the identity, each within what
    /// the kind of matrix can hold; any other pattern changes nothing.
    virtual void fillWithPattern(std::string pattern);
    /// Writes the transposed image of the matrix into its base if it is a block of a symmetric matrix. Every
    /// operation that writes `data` directly ends with this call.
    virtual void mirrorIntoBase() {}

    /// All elements become 0.0.
    void setAllToZero();
    /// True if the matrix is square and no element is further from the identity than `zeroTolerance`.
    bool isUnitMatrix() const;

    double* data = nullptr; ///< element (0, 0)

  protected:
    using MBM_Matrix::MBM_Matrix;
    MBM_DenseMatrix(const MBM_DenseMatrix&) = default;
    MBM_DenseMatrix& operator=(const MBM_DenseMatrix&) = default;
};

/// Dense matrix that owns its storage; ld = rows.
class VELMORA_EXPORT MBM_DenseStandAloneMatrix : public MBM_DenseMatrix {
  public:
    /// Elements are undefined. Errors: code 14 for a dimension 0, code 1 for 2^32 elements or more.
    MBM_DenseStandAloneMatrix(unsigned numOfRows, unsigned numOfCols);
    /// All elements become value. Errors as above.
    MBM_DenseStandAloneMatrix(unsigned numOfRows, unsigned numOfCols, double value);
    /// Duplicates storage, tolerance and error state.
    MBM_DenseStandAloneMatrix(const MBM_DenseStandAloneMatrix& other);
    /// Takes shape and elements. With an equal number of elements the storage stays where it is; otherwise it
    /// is allocated anew and the error state is taken over too.
    MBM_DenseStandAloneMatrix& operator=(const MBM_DenseStandAloneMatrix& other);
    ~MBM_DenseStandAloneMatrix() override = default;

    std::string getClassName() const override { return "MBM_DenseStandAloneMatrix"; }
    double getValue(unsigned row, unsigned col) const override {
        return data[static_cast<std::size_t>(col) * rows + row];
    }
    /// Stores the mirror element too if the matrix says that it is symmetric (equal) or skew-symmetric
    /// (negated, with 0.0 on the diagonal). Always true here.
    bool setValue(unsigned row, unsigned col, double value) override;

    /// New storage with undefined elements. False with error code 1 for 2^32 elements or more.
    bool setDimensions(unsigned numOfRows, unsigned numOfCols);
    /// New storage filled with value, as it stands, whatever the kind of matrix. Errors as above.
    bool setDimensionsAndValue(unsigned numOfRows, unsigned numOfCols, double value);
    /// Moves the elements to a place that is large enough, for example within one array shared by matrices
    /// that are used together. The matrix owns its share of it. All pointers to the elements end.
    void moveStorage(std::shared_ptr<double[]> place);

  private:
    bool allocate();

    std::shared_ptr<double[]> ownedData;
};

/// The plain matrix of the system.
class VELMORA_EXPORT MBM_GeneralDenseMatrix : public MBM_DenseStandAloneMatrix {
  public:
    using MBM_DenseStandAloneMatrix::MBM_DenseStandAloneMatrix;

    std::string getClassName() const override { return "MBM_GeneralDenseMatrix"; }
};

/// Header over somebody else's memory; ld = rows. `rows`, `cols` and `data` may be rewritten at any time to
/// aim it at another piece of memory; the memory must outlive the use.
class VELMORA_EXPORT MBM_DenseMatrix_ExternalDatas : public MBM_DenseMatrix {
  public:
    /// The memory may be given later through `data`. Errors: code 14 for a dimension 0.
    MBM_DenseMatrix_ExternalDatas(unsigned numOfRows, unsigned numOfCols, double* memory = nullptr);
    /// The copy looks at the same memory.
    MBM_DenseMatrix_ExternalDatas(const MBM_DenseMatrix_ExternalDatas&) = default;
    /// Copies elements between the two memories; never re-aims and never allocates. Error code 100, and no
    /// element changed, if the dimensions differ. Without memory on either side only the test takes place.
    MBM_DenseMatrix_ExternalDatas& operator=(const MBM_DenseMatrix_ExternalDatas& other);
    /// The same from any dense matrix.
    MBM_DenseMatrix_ExternalDatas& operator=(const MBM_DenseMatrix& other);
    ~MBM_DenseMatrix_ExternalDatas() override = default;

    std::string getClassName() const override { return "MBM_DenseMatrix_ExternalDatas"; }
    double getValue(unsigned row, unsigned col) const override {
        return data[static_cast<std::size_t>(col) * rows + row];
    }
    bool setValue(unsigned row, unsigned col, double value) override;
};

} // namespace velmora
