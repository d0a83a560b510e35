#pragma once

#include "velmora/external_forces/ExtSubForce.h"

namespace velmora {

/// Forces and torques of a user library on two bodies. With f1, c1, f2, c2 the library's vectors and u1, u2
/// the points of application in the frames of the bodies:
///
///     BodyFixed:   as on one body for body 1; a = A1 f2, b = A1 c2, Q_t2 = a, Q_r2 = G2' b + J(e2; u2)' a
///     SpaceFixed:  as on one body for both
class MBS_RiBo_RiBo_ExtSubForceObject : public MBS_BodyBodyForce {
  public:
    /// Keys and errors: see ExtSubForceState.
    MBS_RiBo_RiBo_ExtSubForceObject(IO_DataModelBlock* block, MBS_Model* owner,
                                    const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSubForceObject"; }
    void setTimeOfLastSuccessfulStep(double t) override { state.library->setTimeOfLastSuccessfulStep(t); }
    void exchangeHistory(MBS_History& history) override { state.library->exchangeHistory(history); }
    void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd) override;
    /// Point, force, place and torque of body 1 as the library gives them; body 2 with the vectors negated.
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;

    const MBS_Body& bodyAt(unsigned i) const { return i == 0 ? *body1 : *body2; }

    ExtSubForceState state;

  protected:
    /// Two blocks, with the rows of either body, for each body that the force depends on.
    template <class Q_1x, class Q_2x, class Qd_1x, class Qd_2x>
    void addBlocks(const MBS_ModelLookUp& lookUp);
};

/// Root of its blocks.
class MBS_RiBo_RiBo_ExtSubForceObject_Qe_q : public MBS_BodyBodyForce_Qe_X {
  public:
    /// `rowBody`: 0 or 1.
    MBS_RiBo_RiBo_ExtSubForceObject_Qe_q(MBS_RiBo_RiBo_ExtSubForceObject& owner, unsigned rowBody,
                                         const MBS_Body& columnBody, ExtSubBy derivesBy);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSubForceObject_Qe_q"; }
    void updateForBody(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                       unsigned columnBody) override;

  protected:
    /// Fills the block from the derivatives of the row body's f and c; `own` holds f and c if the block
    /// derives by the q of a body of the force, else it is null.
    virtual void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) = 0;
    bool isColumn(unsigned body) const { return column == &force->bodyAt(body); }
    const MBS_BodyCommons& commonsOf(unsigned body) const { return *force->bodyAt(body).commons; }
    const Vec3& point() const { return force->state.localPoints[row]; }

    MBS_RiBo_RiBo_ExtSubForceObject* force; // not owned
    const MBS_Body* column;                 // not owned
    unsigned row;
    ExtSubBy by;
};

/// The library's vectors are in the frame of body 1.
class MBS_RiBo_RiBo_ExtSub_BodyFixed final : public MBS_RiBo_RiBo_ExtSubForceObject {
  public:
    MBS_RiBo_RiBo_ExtSub_BodyFixed(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_BodyFixed"; }
    void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q) override;
};

class MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x : public MBS_RiBo_RiBo_ExtSubForceObject_Qe_q {
  public:
    MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x(MBS_RiBo_RiBo_ExtSubForceObject& owner, const MBS_Body& columnBody,
                                           ExtSubBy derivesBy = ExtSubBy::Q)
        : MBS_RiBo_RiBo_ExtSubForceObject_Qe_q(owner, 0, columnBody, derivesBy) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x"; }

  protected:
    void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) override;
};

class MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_1x : public MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x {
  public:
    MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_1x(MBS_RiBo_RiBo_ExtSubForceObject& owner,
                                            const MBS_Body& columnBody)
        : MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x(owner, columnBody, ExtSubBy::Qd) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_1x"; }
};

class MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x : public MBS_RiBo_RiBo_ExtSubForceObject_Qe_q {
  public:
    MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x(MBS_RiBo_RiBo_ExtSubForceObject& owner, const MBS_Body& columnBody,
                                           ExtSubBy derivesBy = ExtSubBy::Q)
        : MBS_RiBo_RiBo_ExtSubForceObject_Qe_q(owner, 1, columnBody, derivesBy) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x"; }

  protected:
    void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) override;
};

class MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_2x : public MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x {
  public:
    MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_2x(MBS_RiBo_RiBo_ExtSubForceObject& owner,
                                            const MBS_Body& columnBody)
        : MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x(owner, columnBody, ExtSubBy::Qd) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_2x"; }
};

/// The library's vectors are in the global frame.
class MBS_RiBo_RiBo_ExtSub_SpaceFixed final : public MBS_RiBo_RiBo_ExtSubForceObject {
  public:
    MBS_RiBo_RiBo_ExtSub_SpaceFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                    const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_SpaceFixed"; }
    void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q) override;
};

class MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x : public MBS_RiBo_RiBo_ExtSubForceObject_Qe_q {
  public:
    MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x(MBS_RiBo_RiBo_ExtSubForceObject& owner,
                                            const MBS_Body& columnBody, ExtSubBy derivesBy = ExtSubBy::Q,
                                            unsigned rowBody = 0)
        : MBS_RiBo_RiBo_ExtSubForceObject_Qe_q(owner, rowBody, columnBody, derivesBy) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x"; }

  protected:
    void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) override;
};

class MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_1x : public MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x {
  public:
    MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_1x(MBS_RiBo_RiBo_ExtSubForceObject& owner,
                                             const MBS_Body& columnBody)
        : MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x(owner, columnBody, ExtSubBy::Qd) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_1x"; }
};

class MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_2x : public MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x {
  public:
    MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_2x(MBS_RiBo_RiBo_ExtSubForceObject& owner,
                                            const MBS_Body& columnBody)
        : MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x(owner, columnBody, ExtSubBy::Q, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_2x"; }
};

class MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_2x : public MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x {
  public:
    MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_2x(MBS_RiBo_RiBo_ExtSubForceObject& owner,
                                             const MBS_Body& columnBody)
        : MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x(owner, columnBody, ExtSubBy::Qd, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_2x"; }
};

} // namespace velmora
