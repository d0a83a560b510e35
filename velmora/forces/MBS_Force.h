#pragma once

#include "velmora/matrix/FixedSize.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_ModelObject.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_Body;
class MBS_BodyCommons;
class MBS_Measure;
class MBS_ModelConstraintDofVector;
class MBS_ModelLookUp;

/// Root of the derivative blocks of forces: dQ/dq or dQ/dqd of the generalised force on a row body with
/// respect to the coordinates of a column body.
class MBS_Force_Qe_X : public MBS_GeneralBodyBodyMatrix {
  public:
    MBS_Force_Qe_X(const MBS_Body& rowBody, const MBS_Body& colBody);
    void update(double, const P*, const P*, const P*, const C*) override {}
    /// Refreshes the block for the column body with this index.
    virtual void updateForBody(double, const P*, const P*, const P*, const C*, unsigned) {}
};

/// Root of the derivative blocks of single-body forces.
class MBS_SingleBodyForce_Qe_X : public MBS_Force_Qe_X {
  public:
    using MBS_Force_Qe_X::MBS_Force_Qe_X;
    std::string getClassName() const override { return "MBS_SingleBodyForce_Qe_X"; }
};

/// Root of the derivative blocks of body-body forces.
class MBS_BodyBodyForce_Qe_X : public MBS_Force_Qe_X {
  public:
    using MBS_Force_Qe_X::MBS_Force_Qe_X;
    std::string getClassName() const override { return "MBS_BodyBodyForce_Qe_X"; }
};

/// Root of all applied forces. A force adds its share to the generalised forces Q (per body: 3 translational
/// entries, 4 conjugate to the Euler parameters, the flexible ones); a positive entry acts in the sense of
/// the coordinate. Forces read measures, and never update them.
class MBS_Force : public MBS_ModelObject {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    using ResultData = std::array<Vec3, 8>;

    /// The derivative blocks of one pair of bodies; either may be null. Pairs on which a force doesn't depend
    /// have no entry.
    struct JacobianEntry {
        unsigned rowBody;
        unsigned colBody;
        std::unique_ptr<MBS_GeneralBodyBodyMatrix> qeQ;  ///< dQ/dq
        std::unique_ptr<MBS_GeneralBodyBodyMatrix> qeQd; ///< dQ/dqd
    };

    /// Forwards read errors that stand on the block.
    MBS_Force(IO_DataModelBlock* block, MBS_Model* owner);
    std::string getClassName() const override { return "MBS_Force"; }

    /// Adds the force at the state to Q; qdd may be null.
    virtual void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q);
    virtual void setTimeOfLastSuccessfulStep(double) {}
    /// Refreshes all blocks; `addExternalForces` has run at the same state.
    virtual void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd);
    /// What the force result file shows: eight vectors, global frame.
    virtual void getForceResultData(const P*, const P*, const P*, const C*, ResultData&) {}
    /// Asks for memory that the next evaluation reads, or the next refresh of the blocks; see
    /// `forEachFetchedAhead` for the steps.
    virtual void fetchAhead(unsigned, bool) const {}
    virtual bool hasForceResultData() const { return true; }
    virtual bool isGravityForce() const { return false; }
    virtual bool isSingleBodyForce() const { return false; }
    /// Adds the derivative of the force with respect to the parameter with this label.
    virtual void addExternalForcesDPar(double, const P*, const P*, const P*, const std::string&, P*) {}

    std::vector<JacobianEntry> jacobianEntries;   ///< settled at construction
    std::vector<MBS_Measure*> dependencyMeasures; ///< that the force reads; not owned
    unsigned numOfDependencyMeasures = 0;

  protected:
    /// Reports this text behind the block's own.
    void refuse(const IO_DataModelBlock& block, const std::string& text);
    /// Body of the n-th ID of "BodyIDs", which must be rigid unless `anyKind`; reports and gives null
    /// otherwise. `role` begins the messages: "Body", "Body1", "Body2".
    MBS_Body* findBody(const IO_DataModelBlock& block, const MBS_ModelLookUp& lookUp,
                       const std::vector<std::string>& ids, unsigned n, const std::string& role,
                       bool anyKind);
};

/// In the place of a force that its block doesn't allow; holds the reason.
class MBS_RefusedForce final : public MBS_Force {
  public:
    using MBS_Force::MBS_Force;
    using MBS_Force::refuse;
    std::string getClassName() const override { return "MBS_RefusedForce"; }
};

/// A force on one body. Reads "BodyIDs", of which the first counts.
class MBS_SingleBodyForce : public MBS_Force {
  public:
    MBS_SingleBodyForce(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_SingleBodyForce"; }
    bool isSingleBodyForce() const override { return true; }

  protected:
    MBS_Body* body = nullptr;               // not owned
    MBS_BodyCommons* bodyCommons = nullptr; // not owned
    unsigned bodyIndex = 0;
};

/// A force between two bodies. Reads "BodyIDs".
class MBS_BodyBodyForce : public MBS_Force {
  public:
    MBS_BodyBodyForce(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_BodyBodyForce"; }

  protected:
    MBS_Body* body1 = nullptr;               // not owned
    MBS_BodyCommons* bodyCommons1 = nullptr; // not owned
    unsigned body1Index = 0;
    MBS_Body* body2 = nullptr;               // not owned
    MBS_BodyCommons* bodyCommons2 = nullptr; // not owned
    unsigned body2Index = 0;
};

} // namespace velmora
