#pragma once

#include "velmora/constraints/MBS_ConstraintGroup.h"

namespace velmora {

class MBS_ExtConstraint;

/// Group that walks its constraints one by one: for classes without a group of their own.
class MBS_OneByOneGroup : public MBS_ConstraintGroup {
  public:
    explicit MBS_OneByOneGroup(std::vector<MBS_ExtConstraint*> members);

    void updateForMotion(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;
    void getConstraintForces(const C* multipliers, P* out) const override;

  private:
    std::vector<MBS_ExtConstraint*> constraints; // in model order; not owned
};

} // namespace velmora
