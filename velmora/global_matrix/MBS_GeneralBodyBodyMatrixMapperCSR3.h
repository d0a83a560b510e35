#pragma once

#include <array>
#include <memory>
#include <string>

namespace velmora {

class MBM_MatrixMapper;
class MBM_SparseMat_CSR3;
class MBS_General_CqT;
class MBS_GeneralBodyBodyMatrix;

/// Scatter of all blocks of one body pair into the sparse matrix. Diagonal blocks scatter their diagonal
/// alone.
class MBS_GeneralBodyBodyMatrixMapperCSR3 {
  public:
    /// `rowPosition`, `colPosition`: sparse place of the pair's first row and column, zero-based.
    MBS_GeneralBodyBodyMatrixMapperCSR3(const MBS_GeneralBodyBodyMatrix& matrix, MBM_SparseMat_CSR3& sparse,
                                        unsigned rowPosition, unsigned colPosition);
    virtual ~MBS_GeneralBodyBodyMatrixMapperCSR3();
    virtual std::string getClassName() const { return "MBS_GeneralBodyBodyMatrixMapperCSR3"; }
    void mapValues(double scale);

  private:
    std::array<std::unique_ptr<MBM_MatrixMapper>, 9> mappers; // row-major in (row kind, column kind)
};

/// Scatter of the three parts of one transposed constraint Jacobian.
class MBS_ConstrainedJacobianMapperCSR3 {
  public:
    virtual ~MBS_ConstrainedJacobianMapperCSR3();
    virtual std::string getClassName() const = 0;
    void mapValues(double scale);

  protected:
    MBS_ConstrainedJacobianMapperCSR3();
    std::array<std::unique_ptr<MBM_MatrixMapper>, 3> mappers; // parts t, r, f
};

/// Parts enter as they are stored: coordinates in the rows, equations in the columns.
class MBS_GeneralTransposedConstrainedJacobianMapperCSR3 : public MBS_ConstrainedJacobianMapperCSR3 {
  public:
    MBS_GeneralTransposedConstrainedJacobianMapperCSR3(const MBS_General_CqT& cqT, MBM_SparseMat_CSR3& sparse,
                                                       unsigned rowPosition, unsigned colPosition);
    std::string getClassName() const override { return "MBS_GeneralTransposedConstrainedJacobianMapperCSR3"; }
};

/// Parts enter as Cq: equations in the rows, coordinates in the columns.
class MBS_GeneralNonTransposedConstrainedJacobianMapperCSR3 : public MBS_ConstrainedJacobianMapperCSR3 {
  public:
    MBS_GeneralNonTransposedConstrainedJacobianMapperCSR3(const MBS_General_CqT& cqT,
                                                          MBM_SparseMat_CSR3& sparse, unsigned rowPosition,
                                                          unsigned colPosition);
    std::string getClassName() const override {
        return "MBS_GeneralNonTransposedConstrainedJacobianMapperCSR3";
    }
};

} // namespace velmora
