#pragma once

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

class MBS_FlexBody_Full_Commons;
class MBS_FlexBody_Full_Parameter;

/// Flexible body in the floating-frame formulation: a reference frame that moves like a rigid body, and a
/// small deformation as a sum of M mode shapes times the modal coordinates eta (Shabana, "Dynamics of
/// Multibody Systems", chapter 5). Coordinates: r, p, eta. The inertia comes from the invariants of a modal
/// file. The reference point is the centre of mass, which the modes don't move; no node of the finite-element
/// mesh enters the equations. With w = Gbar dp the angular velocity in the body frame the kinetic energy is
///
///     T = 1/2 m r'r' + 1/2 w' Ibar(eta) w + w' T(eta) deta + 1/2 deta' Mred deta
///     Ibar(eta) = Itt_tt + sum of C_j eta_j + S(eta),   S_ab = eta' W_ab eta,   row c of T(eta) = eta' E_c
///
/// S is there with "Is_QuadraticTermOF_Itt_active" alone, T(eta) with "Is_Itf_active" alone. Of the modal
/// mass, stiffness and damping the diagonals enter. A mode of unit modal mass in the file is scaled: eta_j is
/// omega_j times its physical amplitude. Deformation starts at zero.
class MBS_FlexBody_Full : public MBS_Body {
  public:
    /// Reads the keys of MBS_FlexBody_Full_Parameter. Any error ends the construction.
    MBS_FlexBody_Full(IO_DataModelBlock* block, MBS_Model* owner, unsigned index);
    ~MBS_FlexBody_Full() override;

    std::string getClassName() const override { return "MBS_FlexBody_Full"; }
    void getVelInertiaForces(const P* q, const P* qd, P* Q) override;
    /// +K eta: a term of the left-hand side of the equations of motion.
    void getElasticForces(const P* q, P* Q) override;
    /// +D deta.
    void getDampingForces(const P* qd, P* Q) override;
    bool isRigidBody() const override { return false; }
    const std::vector<double>* getOmegaOfModes() const override;

    const MBS_FlexBody_Full_Parameter* flexParameter = nullptr; ///< of `parameter`

  private:
    void setInitialState();
    void createBlocks();

    std::unique_ptr<MBS_FlexBody_Full_Commons> flexCommons;
};

} // namespace velmora
