#pragma once

#include "velmora/bodies/RotationAlgebra.h"

#include <string>

namespace velmora {

class MBS_ModelPhysicalDofVector;

/// Kinematic products of one body at the state of the last update, computed once and read by everybody else.
class MBS_BodyCommons {
  public:
    using P = MBS_ModelPhysicalDofVector;

    explicit MBS_BodyCommons(unsigned index) : bodyIndex(index) {}
    virtual ~MBS_BodyCommons() = default;

    virtual std::string getClassName() const { return "MBS_BodyCommons"; }

    /// Refreshes everything at (q, qd). On a position-level solve q stands in the place of qd too.
    virtual void update(double time, const P* q, const P* qd, const P* qdd);
    /// Refreshes A alone.
    virtual void updateRotationMatrix(const P* q);
    /// Refreshes what needs accelerations; nothing for most bodies.
    virtual void updateForAcceleration(double time, const P* q, const P* qd, const P* qdd);

    /// 3x4, omega in the body frame = Gbar dp; holds the factor 2. These three are cheaper made than fetched.
    Mat34 Gbar() const { return velmora::Gbar(p); }
    /// 3x4, omega in the global frame = G dp; holds the factor 2.
    Mat34 G() const { return velmora::G(p); }
    /// 3x4, time derivative of Gbar.
    Mat34 GbarDot() const { return velmora::Gbar(dp); }

    unsigned bodyIndex;
    Mat3 A;        ///< body frame to global frame
    Vec4 dp, p;    ///< Euler parameters and their rates
    Vec3 omegaBar; ///< angular velocity, body frame

  protected:
    MBS_BodyCommons(const MBS_BodyCommons&) = default;
    MBS_BodyCommons& operator=(const MBS_BodyCommons&) = default;

    void setState(const Vec4& eulerParameters, const Vec4& rates) {
        p = eulerParameters;
        dp = rates;
        omegaBar = Gbar() * dp;
        A = velmora::A(p);
    }
};

} // namespace velmora
