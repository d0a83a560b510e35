#pragma once

#include "velmora/bodies/MBS_ActorPull.h"
#include "velmora/bodies/MBS_GeneralSingleBodyMatrix.h"
#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Commons.h"

#include <vector>

namespace velmora {

/// Root of the derivative blocks of a rigid body, of shape (3, 4, 0) by (3, 4, 0). The commons must be
/// current before each `update`. A massless body has no inertia blocks, and their `update` does nothing.
class MBS_RigidBody_EulerP_PAI_Matrix : public MBS_GeneralSingleBodyMatrix {
  public:
    /// Where the body keeps the address of its commons, which changes when the body joins a group.
    using CommonsPlace = MBS_RigidBody_EulerP_PAI_Commons* const;

    MBS_RigidBody_EulerP_PAI_Matrix(const MBS_BodyShape& shape, const CommonsPlace& c)
        : MBS_GeneralSingleBodyMatrix(shape),
          commonsOfBody(&c) {}
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_Matrix"; }

  protected:
    /// Keeps the rotational block alone, or nothing for a massless body.
    void keepRotational();
    /// Elements of the rotational block, 4x4.
    double* rr() { return block[Rot][Rot]->data; }

    const MBS_RigidBody_EulerP_PAI_Commons& commons() const { return **commonsOfBody; }

  private:
    const CommonsPlace* commonsOfBody; // not owned
};

/// Mass matrix: tt = m 1 (diagonal), rr = Gbar' I Gbar (symmetric).
class MBS_RigidBody_EulerP_PAI_MassMatrix : public MBS_RigidBody_EulerP_PAI_Matrix {
  public:
    MBS_RigidBody_EulerP_PAI_MassMatrix(const MBS_BodyShape& shape, const CommonsPlace& c, double mass);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_MassMatrix"; }
    void update(double, const P*, const P*, const P*, const C*) override;
};

/// d(M qdd)/dq at constant qdd.
class MBS_RigidBody_EulerP_PAI_MQdd_q : public MBS_RigidBody_EulerP_PAI_Matrix {
  public:
    MBS_RigidBody_EulerP_PAI_MQdd_q(const MBS_BodyShape& shape, const CommonsPlace& c);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_MQdd_q"; }
    void update(double, const P*, const P*, const P* qdd, const C*) override;
};

/// Derivative of the quadratic velocity vector with respect to q at constant qd.
class MBS_RigidBody_EulerP_PAI_Qvv_q : public MBS_RigidBody_EulerP_PAI_Matrix {
  public:
    MBS_RigidBody_EulerP_PAI_Qvv_q(const MBS_BodyShape& shape, const CommonsPlace& c);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_Qvv_q"; }
    void update(double, const P*, const P*, const P*, const C*) override;
};

/// Derivative of the quadratic velocity vector with respect to qd at constant q.
class MBS_RigidBody_EulerP_PAI_Qvv_qd : public MBS_RigidBody_EulerP_PAI_Matrix {
  public:
    MBS_RigidBody_EulerP_PAI_Qvv_qd(const MBS_BodyShape& shape, const CommonsPlace& c);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_Qvv_qd"; }
    void update(double, const P*, const P*, const P*, const C*) override;
};

/// d(Cq' lambda)/dq of the norm constraint: rr = 2 lambda 1 (diagonal).
class MBS_RigidBody_EulerP_PAI_CqLi_q : public MBS_RigidBody_EulerP_PAI_Matrix {
  public:
    MBS_RigidBody_EulerP_PAI_CqLi_q(const MBS_BodyShape& shape, const CommonsPlace& c);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_CqLi_q"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override;
};

/// Matrix of the position-level solve: diag(s_t, s_t, s_t, s_r, s_r, s_r, s_r) + sum over active actors of
/// J' W J with J = [1, d(A u)/dp]. The scales are those of the body's first actor, 1.0 without actors.
class MBS_RigidBody_EulerP_PAI_ABar4KinSolver : public MBS_RigidBody_EulerP_PAI_Matrix {
  public:
    MBS_RigidBody_EulerP_PAI_ABar4KinSolver(const MBS_BodyShape& shape, const CommonsPlace& c,
                                            const std::vector<MBS_ActorPull*>& bodyActors);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_ABar4KinSolver"; }
    /// Turns the acting point of an actor into a body-frame point where that hasn't been done.
    void update(double, const P* q, const P*, const P*, const C*) override;

  private:
    void addActor(MBS_ActorPull& actor, const Vec3& r, const Vec4& p);

    const std::vector<MBS_ActorPull*>* actors; // of the body, not owned
};

} // namespace velmora
