#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"

namespace velmora {

/// Makes the n x n column-major field symmetric. Mode "Average" puts the mean of each pair into both places,
/// "Lower2Upper" copies the lower triangle up, "Upper2Lower" the upper one down; any other text changes
/// nothing. The diagonal is never touched.
VELMORA_EXPORT void symmetrizeField(unsigned n, unsigned leadingDimension, double* data,
                                    const std::string& mode);

/// Square matrix whose two triangles are equal after every operation.
class VELMORA_EXPORT MBM_SymmetricDenseMatrix : public MBM_DenseStandAloneMatrix {
  public:
    /// n x n, all elements value.
    explicit MBM_SymmetricDenseMatrix(unsigned n, double value = 0.0);
    /// Copies source, then runs `symmetrizeField` with the mode. Errors: those of source; code 17 if source
    /// isn't square.
    MBM_SymmetricDenseMatrix(const MBM_DenseMatrix& source, const std::string& mode);

    std::string getClassName() const override { return "MBM_SymmetricDenseMatrix"; }
    bool isSymmetric() const override { return true; }
    void fillWithPattern(std::string pattern) override;

    /// New storage, all elements value. False with error code 1 for 2^32 elements or more.
    virtual bool setSquareDimensionAndValue(unsigned n, double value);
    /// New storage, elements undefined.
    virtual bool setSquareDimension(unsigned n);
};

/// Square matrix with zeros off the diagonal; they are stored, so that BLAS takes the matrix as it is.
class VELMORA_EXPORT MBM_DiagonalDenseMatrix : public MBM_DenseStandAloneMatrix {
  public:
    /// n x n, value on the diagonal.
    explicit MBM_DiagonalDenseMatrix(unsigned n, double value = 0.0);

    std::string getClassName() const override { return "MBM_DiagonalDenseMatrix"; }
    bool isSymmetric() const override { return true; }
    bool isDiagonal() const override { return true; }
    double getValue(unsigned row, unsigned col) const override {
        return row == col ? data[(static_cast<std::size_t>(rows) + 1) * row] : 0.0;
    }
    /// Off the diagonal nothing is stored and the result is false.
    bool setValue(unsigned row, unsigned col, double value) override;
    void fillWithPattern(std::string pattern) override;

    /// New storage, value on the diagonal. False with error code 1 for 2^32 elements or more.
    virtual bool setSquareDimensionAndValue(unsigned n, double value);
    /// New storage, zero off the diagonal; don't rely on the elements on it.
    virtual bool setSquareDimension(unsigned n);
};

/// Square matrix with a(i, j) = -a(j, i) and a zero diagonal.
class VELMORA_EXPORT MBM_SkewSymmetricDenseMatrix : public MBM_DenseStandAloneMatrix {
  public:
    /// n x n, value below the diagonal, -value above it.
    explicit MBM_SkewSymmetricDenseMatrix(unsigned n, double value = 0.0);

    std::string getClassName() const override { return "MBM_SkewSymmetricDenseMatrix"; }
    bool isSkewSymmetric() const override { return true; }
    /// Knows "Random" only.
    void fillWithPattern(std::string pattern) override;

    /// New storage, value below the diagonal, -value above it. False with error code 1 for 2^32 elements or
    /// more.
    virtual bool setSquareDimensionAndValue(unsigned n, double value);
    /// New storage, elements undefined.
    virtual bool setSquareDimension(unsigned n);

  private:
    void takeLowerTriangle();
};

} // namespace velmora
