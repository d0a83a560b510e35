#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/bodies/MBS_FlexBody_Full_W_Matrices.h"

#include <optional>

namespace velmora {

class MBS_FlexBody_Full_Parameter;

/// Everything of a flexible body that depends on the state and is read by more than one block. The notation
/// is that of MBS_FlexBody_Full.
class MBS_FlexBody_Full_Commons : public MBS_BodyCommons {
  public:
    /// The parameter must outlive the commons.
    MBS_FlexBody_Full_Commons(unsigned index, const MBS_FlexBody_Full_Parameter& bodyParameter);
    std::string getClassName() const override { return "MBS_FlexBody_Full_Commons"; }

    void update(double time, const P* q, const P* qd, const P* qdd) override;
    /// Requires an `update` at the same q and qd.
    void updateForAcceleration(double time, const P* q, const P* qd, const P* qdd) override;

    bool isItfActive() const { return Wtf.has_value(); }
    bool isQuadraticTermOfIttActive() const { return Wff.has_value(); }

    MBS_FlexBody_Full_Wrf_Matrix Wrf;
    std::optional<MBS_FlexBody_Full_Wtf_Matrix> Wtf; ///< empty without the coupling T
    std::optional<MBS_FlexBody_Full_Wff_Matrix> Wff; ///< empty without the quadratic term

    // After `update`
    Mat3 Ibar, IbarDot;        ///< inertia of the deformed body about its reference point, and its rate
    Mat34 IbarGbar;            ///< Ibar Gbar
    Vec3 IbarOmegaBar;         ///< Ibar w
    Vec3 IbarDotOmegaBar;      ///< dIbar/dt w
    Vec3 WtfTimesFlexVelocity; ///< T(eta) deta; zero without the coupling
    ModalRows rowsWithOmega;   ///< D(w): column j = dIbar/deta_j w

    // After `updateForAcceleration`
    Vec3 alpha;                 ///< Gbar a, with a = d^2 p/dt^2
    Mat34 accelerationMatrix;   ///< Gbar(a)
    ModalRows rowsWithAlpha;    ///< D(alpha)
    ModalRows rowsWithOmegaDot; ///< rate of D(w) at constant w; zero without the quadratic term

    const MBS_FlexBody_Full_Parameter* flexParameter; ///< not owned
};

} // namespace velmora
