#pragma once

#include "velmora/bodies/MBS_BodyGroup.h"

#include <vector>

namespace velmora {

class MBS_Body;

/// Group that walks its bodies one by one: for classes without a group of their own.
class MBS_BodyByBodyGroup final : public MBS_BodyGroup {
  public:
    explicit MBS_BodyByBodyGroup(std::vector<MBS_Body*> members) : bodies(std::move(members)) {}

    void updateForMotion(double t, const P* q, const P* qd, const P* qdd) override;
    void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;
    void getAccInertiaForces(const P* qdd, P* out) const override;
    void getVelInertiaForces(const P* q, const P* qd, P* out) const override;
    void getInnerConstraintForces(const C* multipliers, P* out) const override;
    void getNormResiduals(const P* q, C* out) const override;

  private:
    std::vector<MBS_Body*> bodies; // not owned
};

} // namespace velmora
