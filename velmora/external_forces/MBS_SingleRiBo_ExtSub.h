#pragma once

#include "velmora/external_forces/ExtSubForce.h"

namespace velmora {

/// Force and torque of a user library on one body. With f, c the library's vectors, u the point of
/// application in the frame of the body:
///
///     BodyFixed:   Q_t = A f,   Q_r = Gbar' (c + u x f)
///     SpaceFixed:  Q_t = f,     Q_r = G' c + J(e; u)' f
class MBS_Single_RiBo_ExtSubForceObject : public MBS_SingleBodyForce {
  public:
    /// Keys and errors: see ExtSubForceState.
    MBS_Single_RiBo_ExtSubForceObject(IO_DataModelBlock* block, MBS_Model* owner,
                                      const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_Single_RiBo_ExtSubForceObject"; }
    void setTimeOfLastSuccessfulStep(double t) override { state.library->setTimeOfLastSuccessfulStep(t); }
    void exchangeHistory(MBS_History& history) override { state.library->exchangeHistory(history); }
    void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd) override;
    /// Point of application, force, place of the body, torque, as the library gives them.
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;

    const MBS_Body& ownBody() const { return *body; }

    ExtSubForceState state;

  protected:
    /// Blocks for each body that the force depends on: its own where its frame turns the vectors, and those
    /// of measures of order 0 (by q) and 1 (by qd).
    template <class Qe_q, class Qe_qd>
    void addBlocks(const MBS_ModelLookUp& lookUp, bool needsOwn);
};

/// Root of its blocks.
class MBS_Single_RiBo_ExtSubForceObject_Qe_q : public MBS_BodyBodyForce_Qe_X {
  public:
    MBS_Single_RiBo_ExtSubForceObject_Qe_q(MBS_Single_RiBo_ExtSubForceObject& owner,
                                           const MBS_Body& columnBody, ExtSubBy derivesBy = ExtSubBy::Q);
    std::string getClassName() const override { return "MBS_Single_RiBo_ExtSubForceObject_Qe_q"; }
    void updateForBody(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                       unsigned columnBody) override;

  protected:
    /// Fills the block from the derivatives of f and c by the column's coordinates; `own` holds f and c if
    /// the column is the body itself and the block derives by q, else it is null.
    virtual void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) = 0;

    MBS_Single_RiBo_ExtSubForceObject* force; // not owned
    const MBS_Body* column;                   // not owned
    ExtSubBy by;
};

/// The library's vectors are in the frame of the body.
class MBS_SingleRiBo_ExtSub_BodyFixed final : public MBS_Single_RiBo_ExtSubForceObject {
  public:
    MBS_SingleRiBo_ExtSub_BodyFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                    const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_SingleRiBo_ExtSub_BodyFixed"; }
    void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q) override;
};

class MBS_SingleRiBo_ExtSub_BodyFixed_Qe_q : public MBS_Single_RiBo_ExtSubForceObject_Qe_q {
  public:
    using MBS_Single_RiBo_ExtSubForceObject_Qe_q::MBS_Single_RiBo_ExtSubForceObject_Qe_q;
    std::string getClassName() const override { return "MBS_SingleRiBo_ExtSub_BodyFixed_Qe_q"; }

  protected:
    void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) override;
};

class MBS_SingleRiBo_ExtSub_BodyFixed_Qe_qd : public MBS_SingleRiBo_ExtSub_BodyFixed_Qe_q {
  public:
    MBS_SingleRiBo_ExtSub_BodyFixed_Qe_qd(MBS_Single_RiBo_ExtSubForceObject& owner,
                                          const MBS_Body& columnBody)
        : MBS_SingleRiBo_ExtSub_BodyFixed_Qe_q(owner, columnBody, ExtSubBy::Qd) {}
    std::string getClassName() const override { return "MBS_SingleRiBo_ExtSub_BodyFixed_Qe_qd"; }
};

/// The library's vectors are in the global frame.
class MBS_SingleRiBo_ExtSub_SpaceFixed final : public MBS_Single_RiBo_ExtSubForceObject {
  public:
    MBS_SingleRiBo_ExtSub_SpaceFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                     const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_SingleRiBo_ExtSub_SpaceFixed"; }
    void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q) override;
};

class MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_q : public MBS_Single_RiBo_ExtSubForceObject_Qe_q {
  public:
    using MBS_Single_RiBo_ExtSubForceObject_Qe_q::MBS_Single_RiBo_ExtSubForceObject_Qe_q;
    std::string getClassName() const override { return "MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_q"; }

  protected:
    void fill(const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) override;
};

class MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_qd : public MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_q {
  public:
    MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_qd(MBS_Single_RiBo_ExtSubForceObject& owner,
                                           const MBS_Body& columnBody)
        : MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_q(owner, columnBody, ExtSubBy::Qd) {}
    std::string getClassName() const override { return "MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_qd"; }
};

} // namespace velmora
