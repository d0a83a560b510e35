#pragma once

#include "velmora/constraints/MBS_ConstraintCommons.h"
#include "velmora/matrix/FixedSize.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_General_CqT.h"
#include "velmora/model/MBS_ModelObject.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_Body;
class MBS_ConstraintGroup;
class MBS_ModelConstraintDofVector;
class MBS_ModelLookUp;

/// Root of all constraints between bodies, or between a body and the ground: holonomic equations
/// C(q, t) = 0, with lambda such that Cq' lambda stands beside the inertia forces. The force of a joint on
/// its body is -Cq' lambda.
///
/// Names of blocks: CqT is Cq', stored per body; CqTdT its rate along the motion; CqTLe_q_ij is
/// d(Cq' lambda)/dq at constant lambda, rows of body i, columns of body j. Residual, CqT, and then the rest
/// are refreshed in this order at one state, with current body commons.
class MBS_ExtConstraint : public MBS_ModelObject {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    /// What the constraint shows of itself in result files; global frame. Per body: joint point, force and
    /// moment on the body as {point, force, point, moment}. Entries of a body that isn't there stay as they
    /// are.
    using ResultData = std::array<Vec3, 8>;

    /// Reads "BodyIDs" (two texts, "0" as the second: the ground) and, optional, "Location" (3, default zero)
    /// and "ConstraintOrientation" (3x3, default the unit matrix), both global, in the initial configuration.
    /// Errors: the block's; the block's text + "ERROR: Body1 not found using bodyID: " + id + "!\n", Body2
    /// alike.
    MBS_ExtConstraint(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                      unsigned index, unsigned numOfEquations);
    ~MBS_ExtConstraint() override;

    std::string getClassName() const override { return "MBS_ExtConstraint"; }

    /// Adds Cq' lambda to `out`.
    virtual void getConstraintForces(const C* multipliers, P* out) const;
    virtual void setTimeOfLastSuccessfulStep(double) {}
    /// Writes the residual into the constraint's part of `out`, and keeps what the blocks need.
    virtual void getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out);
    virtual bool isSingleBodyConstraint() const { return false; }
    /// Begins the start phase of a prescribed motion at the present value of its measure.
    virtual void resetStartPolynomial() {}
    /// Sets the constraint's part of `out` to (dCq/dt) qd; refreshes the CqTdT objects.
    virtual void getCqdT_Mult_Qd(const P* q, const P* qd, const P* qdd, C* out);
    /// First and second partial time derivative of the equations into a cleared `out`; nothing where time
    /// doesn't occur.
    virtual void get_C_t(double, const P*, const P*, const P*, C*) {}
    virtual void get_C_t_order2(double, const P*, const P*, const P*, C*) {}
    /// Joint point and reactions at the state, with the CqT objects of the last update. `location` takes the
    /// last point.
    virtual void getConstraintResultData(const P*, const P*, const P*, const C*, ResultData&) {}

    /// Residual and all CqT objects. A class that computes them in one go overrides it.
    virtual void updateForMotion(double t, const P* q, const P* qd, const P* qdd, C* out);
    /// All CqTLe_q blocks and CqTdT objects, after `updateForMotion` at the same state.
    virtual void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers);

    /// Group of these constraints, all of this class; null if the class has no group of its own. To be called
    /// once, before anything keeps pointers to the elements of blocks, which may move.
    virtual std::shared_ptr<MBS_ConstraintGroup> makeGroup(const std::vector<MBS_ExtConstraint*>&) {
        return nullptr;
    }

    unsigned numOfConstraintDof;
    std::array<MBS_Body*, 2> constraintBodies{}; ///< the second is null for the ground; not owned
    std::vector<unsigned> cqTLe_qRowBodies, cqTLe_qColBodies;
    std::vector<std::unique_ptr<MBS_GeneralBodyBodyMatrix>> cqTLe_qBlocks; ///< updated in this order
    std::vector<unsigned> cqTBodies;
    unsigned constraintIndex;
    std::vector<std::unique_ptr<MBS_General_CqT>> cqTObjects, cqTdTObjects; ///< one per body
    Vec3 location;                                                          ///< joint point, global frame
    Mat3 constraintOrientation; ///< joint axes x, y, z as columns, global frame, initial configuration
    std::unique_ptr<MBS_ConstraintCommons> constraintCommons; ///< null for most classes
    Vec3 localLocation;                                       ///< joint point in the frame of body 1
    Mat3 localOrientation;                                    ///< joint axes in the frame of body 1

  protected:
    /// Reports the block's text with the message behind it.
    void refuse(const IO_DataModelBlock& block, const std::string& message);

    /// Point of the initial configuration in the frame of a body.
    static Vec3 toLocalPoint(const MBS_Body& body, const Vec3& point);
    /// Direction of the initial configuration in the frame of a body.
    static Vec3 toLocalAxis(const MBS_Body& body, const Vec3& axis);
    /// The two joint axes whose angle fixes the rotation about the third.
    static std::array<unsigned, 2> fixedPairOf(unsigned axis) {
        constexpr std::array<std::array<unsigned, 2>, 3> pairs = {{{1, 2}, {0, 2}, {0, 1}}};
        return pairs[axis];
    }
    Vec3 jointAxis(unsigned i) const { return Vec3::from(&constraintOrientation.data[3 * i]); }

    void addCqTLe_q(unsigned rowBody, unsigned colBody, std::unique_ptr<MBS_GeneralBodyBodyMatrix> block);
    void addCqT(unsigned body, std::unique_ptr<MBS_General_CqT> cqT);
    void addCqTdT(std::unique_ptr<MBS_General_CqT> cqTdT) { cqTdTObjects.push_back(std::move(cqTdT)); }

    /// Point, force, point and moment about the point of what the joint exerts on one of its bodies;
    /// `localPoint` in the frame of that body.
    void computeReaction(unsigned body, const Vec3& localPoint, const P* q, const C* multipliers,
                         Vec3* result);

  private:
    void readFrame(IO_DataModelBlock& block);
};

} // namespace velmora
