#pragma once

#include "velmora/bodies/MBS_FlexBody_Full_Commons.h"
#include "velmora/bodies/MBS_GeneralSingleBodyMatrix.h"
#include "velmora/bodies/MBS_InnerConstraint_CqT.h"

namespace velmora {

/// Root of the derivative blocks of a flexible body, of shape (3, 4, M) by (3, 4, M). The commons must be
/// current before each `update`.
class MBS_FlexBody_Full_Matrix : public MBS_GeneralSingleBodyMatrix {
  public:
    /// The commons must outlive the block.
    MBS_FlexBody_Full_Matrix(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c)
        : MBS_GeneralSingleBodyMatrix(shape),
          commons(&c) {}
    std::string getClassName() const override { return "MBS_FlexBody_Full_Matrix"; }

  protected:
    unsigned M() const { return colDof[Flex]; }
    double* rr() { return block[Rot][Rot]->data; }   // 4x4
    double* ff() { return block[Flex][Flex]->data; } // MxM
    /// Column j of rf, 4xM.
    void setColumnOfRf(unsigned j, const Vec4& v) { v.to(block[Rot][Flex]->data + std::size_t{4} * j); }
    /// Row j of fr, Mx4.
    void setRowOfFr(unsigned j, const Vec4& v) {
        double* fr = block[Flex][Rot]->data + j;
        for (unsigned k = 0; k < 4; ++k)
            fr[std::size_t{k} * M()] = v.data[k];
    }
    /// A diagonal block ff with these numbers.
    void setFlexDiagonal(const std::vector<double>& diagonal);

    const MBS_FlexBody_Full_Commons* commons; // not owned
};

/// Mass matrix: tt = m 1 and ff = diag(Mred), constant, rr; rf and fr with the coupling T.
class MBS_FlexBody_Full_MassMatrix : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_MassMatrix(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_MassMatrix"; }
    void update(double, const P*, const P*, const P*, const C*) override;
};

/// d(M qdd)/dq at constant qdd: rr, rf; fr and ff with the coupling T.
class MBS_FlexBody_Full_MQdd_q : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_MQdd_q(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_MQdd_q"; }
    void update(double, const P*, const P*, const P* qdd, const C*) override;
};

/// Derivative of the quadratic velocity vector with respect to q at constant qd: rr, rf, fr; ff with the
/// quadratic term of the inertia.
class MBS_FlexBody_Full_Qvv_q : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_Qvv_q(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_Qvv_q"; }
    void update(double, const P*, const P*, const P*, const C*) override;
};

/// Derivative of the quadratic velocity vector with respect to qd at constant q: rr, rf, fr; ff with the
/// coupling T.
class MBS_FlexBody_Full_Qvv_qd : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_Qvv_qd(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_Qvv_qd"; }
    void update(double, const P*, const P*, const P*, const C*) override;
};

/// d(Cq' lambda)/dq of the norm constraint: rr = 2 lambda 1 (diagonal).
class MBS_FlexBody_Full_CqLi_q : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_CqLi_q(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_CqLi_q"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override;
};

/// dF_elastic/dq, constant: ff = diag(Kred); rf and fr are zero, and shape the pattern.
class MBS_FlexBody_Full_Kq_q : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_Kq_q(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_Kq_q"; }
    void update(double, const P*, const P*, const P*, const C*) override {}
};

/// dF_damping/dqd, constant: ff = diag(Dred); rf and fr are zero, and shape the pattern.
class MBS_FlexBody_Full_Dqd_qd : public MBS_FlexBody_Full_Matrix {
  public:
    MBS_FlexBody_Full_Dqd_qd(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c);
    std::string getClassName() const override { return "MBS_FlexBody_Full_Dqd_qd"; }
    void update(double, const P*, const P*, const P*, const C*) override {}
};

/// Cq' of the norm constraint: 2 p.
class MBS_FlexBody_Full_CqT : public MBS_InnerConstraint_CqT {
  public:
    using MBS_InnerConstraint_CqT::MBS_InnerConstraint_CqT;
    std::string getClassName() const override { return "MBS_FlexBody_Full_CqT"; }
    void update(double, const P* q, const P*, const P*) override { setTwice(q); }
};

/// d(Cq')/dt of the norm constraint: 2 dp/dt.
class MBS_FlexBody_Full_CqTdT : public MBS_InnerConstraint_CqT {
  public:
    using MBS_InnerConstraint_CqT::MBS_InnerConstraint_CqT;
    std::string getClassName() const override { return "MBS_FlexBody_Full_CqTdT"; }
    void update(double, const P*, const P* qd, const P*) override { setTwice(qd); }
};

} // namespace velmora
