#pragma once

#include <string>

namespace velmora {

class MBS_ModelConstraintDofVector;
class MBS_ModelPhysicalDofVector;

/// What the blocks of one constraint share, computed once for all of them. Most constraints need none.
class MBS_ConstraintCommons {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    virtual ~MBS_ConstraintCommons() = default;
    virtual std::string getClassName() const { return "MBS_ConstraintCommons"; }

    /// Refreshes what residual and Jacobian need.
    virtual void update(const P*, const P*, const P*, const C*) {}
    /// Refreshes what the other derivative blocks need.
    virtual void updateForJacobian(double, const P*, const P*, const P*, const C*) {}
};

} // namespace velmora
