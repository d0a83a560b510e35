#pragma once

namespace velmora {

class MBS_ModelConstraintDofVector;
class MBS_ModelPhysicalDofVector;

/// Neighbouring bodies of one class, which the model evaluates together; the operations are those of the
/// bodies. A class with many small bodies keeps their numbers side by side in arrays of its group, so that an
/// evaluation walks memory forwards.
class MBS_BodyGroup {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    MBS_BodyGroup() = default;
    MBS_BodyGroup(const MBS_BodyGroup&) = delete;
    MBS_BodyGroup& operator=(const MBS_BodyGroup&) = delete;
    virtual ~MBS_BodyGroup() = default;

    virtual void updateForMotion(double t, const P* q, const P* qd, const P* qdd) = 0;
    virtual void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) = 0;
    virtual void getAccInertiaForces(const P* qdd, P* out) const = 0;
    virtual void getVelInertiaForces(const P* q, const P* qd, P* out) const = 0;
    virtual void getInnerConstraintForces(const C* multipliers, P* out) const = 0;
    virtual void getNormResiduals(const P* q, C* out) const = 0;
};

} // namespace velmora
