#pragma once

#include <vector>

namespace velmora {

class MBS_GeneralBodyBodyMatrix;
class MBS_ModelConstraintDofVector;
class MBS_ModelPhysicalDofVector;

/// All constraints of one class, which the model evaluates together; the operations are those of the
/// constraints. A class with many small constraints keeps their numbers side by side in arrays of its group,
/// so that an evaluation walks memory forwards.
class MBS_ConstraintGroup {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    /// Part of d(Cq' lambda)/dq between two bodies.
    struct CqTLe_q {
        unsigned rowBody, colBody;
        const MBS_GeneralBodyBodyMatrix* block; ///< not owned
        bool isTransposed = false;              ///< the part is the transpose of the block
    };

    MBS_ConstraintGroup() = default;
    MBS_ConstraintGroup(const MBS_ConstraintGroup&) = delete;
    MBS_ConstraintGroup& operator=(const MBS_ConstraintGroup&) = delete;
    virtual ~MBS_ConstraintGroup() = default;

    /// Residuals and all CqT objects.
    virtual void updateForMotion(double t, const P* q, const P* qd, const P* qdd, C* out) = 0;
    /// What `cqTLe_q` lists, and the CqTdT objects if they are read, after `updateForMotion` at the same
    /// state.
    virtual void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) = 0;
    /// Says that somebody reads the CqTdT objects from now on. They hold the values of the last
    /// `updateForJacobian` at once.
    virtual void keepRates() {}
    /// Adds Cq' lambda.
    virtual void getConstraintForces(const C* multipliers, P* out) const = 0;

    std::vector<CqTLe_q> cqTLe_q; ///< together d(Cq' lambda)/dq of the group
};

} // namespace velmora
