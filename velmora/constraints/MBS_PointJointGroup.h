#pragma once

#include "velmora/constraints/MBS_ConstraintGroup.h"
#include "velmora/constraints/PointJointFormulas.h"
#include "velmora/platform/LargePages.h"

#include <memory>
#include <vector>

namespace velmora {

/// Translation fixes between two bodies, gathered into joints: those with the same bodies and the same point
/// are evaluated together, since they share most of their numbers. Of d(Cq' lambda)/dq the group keeps the
/// sum over each joint; the block of one equation is computed when its `update` is called. The CqT and CqTdT
/// objects of the constraints aim into the arrays of the group. A constraint that belongs to no model yet has
/// a group of its own.
class MBS_PointJointGroup final : public MBS_ConstraintGroup {
  public:
    using ColumnsOfBodies = PointJointState::ColumnsOfBodies;

    /// Room for this many joints.
    explicit MBS_PointJointGroup(std::size_t capacity);

    /// Appends a joint without equations.
    void addJoint(const BodyPair& bodies, const Vec3& localPoint2);
    /// Appends an equation to the last joint; returns its column.
    unsigned addEquation(unsigned constraintIndex, const Vec3& localAxis, double localProduct,
                         double initialOffset);
    /// True if the last joint has these bodies and this point, and room for an equation.
    bool isLastJoint(const BodyPair& bodies, const Vec3& localPoint2) const;
    /// Makes the blocks of d(Cq' lambda)/dq of all joints. To be called once, after the last joint.
    void createBlocks();

    void updateForMotion(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;
    void getConstraintForces(const C* multipliers, P* out) const override;
    void keepRates() override;

    EvaluationArray<PointJointState> joints;
    EvaluationArray<ColumnsOfBodies> cqT, cqTdT;
    EvaluationArray<PointJointState::CqTLe_q> sums; ///< of d(Cq' lambda)/dq

  private:
    void createBlocks(std::size_t k);

    std::vector<std::unique_ptr<MBS_GeneralBodyBodyMatrix>> blocks; // over `sums`
    bool areRatesKept = false;
};

} // namespace velmora
