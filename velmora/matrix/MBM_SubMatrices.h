#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"

namespace velmora {

/// Rectangle of another dense matrix. The base must outlive the view and must not be reallocated meanwhile.
class VELMORA_EXPORT MBM_DenseSubMatrix : public MBM_DenseMatrix {
  public:
    std::string getClassName() const override { return "MBM_DenseSubMatrix"; }
    bool isSubMatrix() const override { return true; }
    unsigned getLeadingDimension() const override { return leadingDimension; }
    double getValue(unsigned row, unsigned col) const override {
        return data[static_cast<std::size_t>(col) * leadingDimension + row];
    }
    /// Stores the mirror element within the view too if the view says that it is symmetric or skew-symmetric.
    bool setValue(unsigned row, unsigned col, double value) override;

    MBM_DenseMatrix* baseMatrix;   ///< not owned
    unsigned leadingDimension = 0; ///< that of the base
    unsigned rowOffset = 0;        ///< row of the base that holds row 0
    unsigned colOffset = 0;        ///< column of the base that holds column 0

  protected:
    /// View of numOfRows x numOfCols elements from base element (firstRow, firstCol) on. Errors, with `data`
    /// null: code 14 for a dimension 0, code 12 if the view overruns the base.
    MBM_DenseSubMatrix(unsigned numOfRows, unsigned numOfCols, unsigned firstRow, unsigned firstCol,
                       MBM_DenseMatrix& base);
};

/// General view into a general matrix.
class VELMORA_EXPORT MBM_GDSubM_of_GDM : public MBM_DenseSubMatrix {
  public:
    /// Errors: code 14 for a dimension 0, code 12 if the view overruns the base.
    MBM_GDSubM_of_GDM(unsigned numOfRows, unsigned numOfCols, unsigned firstRow, unsigned firstCol,
                      MBM_DenseMatrix& base);

    std::string getClassName() const override { return "MBM_GDSubM_of_GDM"; }
};

/// Square view on the diagonal of a symmetric matrix.
class VELMORA_EXPORT MBM_SDSubM_of_SDM : public MBM_DenseSubMatrix {
  public:
    /// numOfRows equals numOfCols and firstRow equals firstCol. Errors: code 14 for a dimension 0, code 12 if
    /// the view overruns the base.
    MBM_SDSubM_of_SDM(unsigned numOfRows, unsigned numOfCols, unsigned firstRow, unsigned firstCol,
                      MBM_DenseMatrix& base);

    std::string getClassName() const override { return "MBM_SDSubM_of_SDM"; }
    bool isSymmetric() const override { return true; }
    void fillWithPattern(std::string pattern) override;
};

/// View of a square block off the diagonal of a symmetric matrix. What is written into the block appears
/// transposed in the other triangle of the base.
class VELMORA_EXPORT MBM_GDSubM_of_SDM : public MBM_DenseSubMatrix {
  public:
    /// numOfRows equals numOfCols. Errors, with `data` null: code 14 for a dimension 0, code 12 if the view
    /// overruns the base, code 13 if it reaches the main diagonal of the base. A block with equal offsets is
    /// none: `data` stays null, with no code.
    MBM_GDSubM_of_SDM(unsigned numOfRows, unsigned numOfCols, unsigned firstRow, unsigned firstCol,
                      MBM_DenseMatrix& base);

    std::string getClassName() const override { return "MBM_GDSubM_of_SDM"; }
    bool isGeneralSubMatrixOfSymmetric() const override { return true; }
    /// Stores through the base, so that the mirror element changes with it.
    bool setValue(unsigned row, unsigned col, double value) override;
    void fillWithPattern(std::string pattern) override;
    void mirrorIntoBase() override;
};

} // namespace velmora
