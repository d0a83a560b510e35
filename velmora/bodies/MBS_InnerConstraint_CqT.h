#pragma once

#include "velmora/bodies/MBS_BodyShape.h"
#include "velmora/model/MBS_General_CqT.h"

namespace velmora {

/// Root of the transposed Jacobians of a body's norm constraint C = p'p - 1 - offset.
class MBS_InnerConstraint_CqT : public MBS_General_CqT {
  public:
    /// A rotational part alone, 4 x 1.
    explicit MBS_InnerConstraint_CqT(const MBS_BodyShape& shape);
    std::string getClassName() const override { return "MBS_InnerConstraint_CqT"; }

  protected:
    /// rPart = 2 x, for the rotational part x of a vector over the degrees of freedom.
    void setTwice(const P* vector);

    unsigned bodyIndex;
};

/// Cq' of the norm constraint: 2 p.
class MBS_RiBo_PAI_CqT : public MBS_InnerConstraint_CqT {
  public:
    using MBS_InnerConstraint_CqT::MBS_InnerConstraint_CqT;
    std::string getClassName() const override { return "MBS_RiBo_PAI_CqT"; }
    void update(double, const P* q, const P*, const P*) override { setTwice(q); }
};

/// d(Cq')/dt of the norm constraint: 2 dp/dt.
class MBS_RiBo_PAI_CqTdT : public MBS_InnerConstraint_CqT {
  public:
    using MBS_InnerConstraint_CqT::MBS_InnerConstraint_CqT;
    std::string getClassName() const override { return "MBS_RiBo_PAI_CqTdT"; }
    void update(double, const P*, const P* qd, const P*) override { setTwice(qd); }
};

} // namespace velmora
