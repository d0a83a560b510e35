#pragma once

#include "velmora/platform/Export.h"

#include <string>

namespace velmora {

/// Root of all matrices. Indices are zero-based, sizes 32 bits, numbers 64-bit floats.
///
/// A matrix whose construction fails stays alive without storage; whoever builds one from input reads
/// `errorCode` or `errorString` and passes the text on.
class VELMORA_EXPORT MBM_Matrix {
  public:
    virtual ~MBM_Matrix() = default;
    /// Exact name of the concrete class.
    virtual std::string getClassName() const { return "MBM_Matrix"; }

    /// A view into another matrix.
    virtual bool isSubMatrix() const { return false; }
    virtual bool isSparse() const { return false; }
    virtual bool isSymmetric() const { return false; }
    virtual bool isSkewSymmetric() const { return false; }
    virtual bool isDiagonal() const { return false; }
    /// A view of an off-diagonal block of a symmetric matrix, whose writes have a mirror image in the base.
    virtual bool isGeneralSubMatrixOfSymmetric() const { return false; }

    /// Element (row, col).
    virtual double getValue(unsigned row, unsigned col) const = 0;
    /// Stores one element, with its mirror image where the kind of matrix has one. False if there is no such
    /// place.
    virtual bool setValue(unsigned row, unsigned col, double value) = 0;

    /// Copy of the error text.
    std::string getErrorString() const { return errorString; }

    unsigned rows = 0;
    unsigned cols = 0;
    double zeroTolerance = 1.0e-10; ///< largest difference that still counts as equal
    int errorCode = 0;              ///< 0 while the object is sound
    std::string errorString;        ///< empty while the object is sound

  protected:
    /// Errors: code 14 if a dimension is 0.
    MBM_Matrix(unsigned numOfRows, unsigned numOfCols);
    MBM_Matrix(const MBM_Matrix&) = default;
    MBM_Matrix& operator=(const MBM_Matrix&) = default;

    void setError(int code, const char* text);
};

} // namespace velmora
