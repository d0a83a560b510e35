#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/constraints/MBS_BodyBodyConstraint.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

class MBS_RiBo_FleBo_FixJoint;

/// What the blocks of a weld to a node of a flexible body share. D(p; u) = d(A(p) u)/dp, 3x4.
class MBS_RiBo_FleBo_ConstraintCommons : public MBS_ConstraintCommons {
  public:
    /// The joint must outlive its commons.
    explicit MBS_RiBo_FleBo_ConstraintCommons(const MBS_RiBo_FleBo_FixJoint& owner) : joint(&owner) {}
    std::string getClassName() const override { return "MBS_RiBo_FleBo_ConstraintCommons"; }
    void update(const P* q, const P* qd, const P* qdd, const C*) override;

    const MBS_RiBo_FleBo_FixJoint* joint; ///< not owned
    Mat3 X, rotationOfNode;               ///< small rotation of the node in the frame of body 2; A2 X
    Vec3 Xy2, Xz2;                        ///< X y2, X z2; frame of body 2
    Vec3 A2Xy2, A2Xz2;                    ///< global frame
    Vec3 A1x1, A1y1;                      ///< global frame
    Mat34 Dofx1, Dofy1;                   ///< D(p1; x1), D(p1; y1)
    Mat34 DofXy2, DofXz2;                 ///< D(p2; X y2), D(p2; X z2)
};

/// Welds a rigid body to a node of a flexible one: six equations. The joint point moves on body 2 with the
/// translational mode shapes of the node, and the node turns in the frame of body 2 by the small rotation
/// that the rotational mode shapes give.
class MBS_RiBo_FleBo_FixJoint final : public MBS_BodyBodyConstraint {
  public:
    /// Reads "Location" (3, global, in the initial configuration) and "InterfaceNode" (label of the node).
    /// Body 1 is rigid, body 2 flexible. Error beside those of the roots: the block's text + "ERROR:
    /// InterfaceNode <" + label + "> not found in mtx-file!\n".
    MBS_RiBo_FleBo_FixJoint(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                            unsigned index);
    std::string getClassName() const override { return "MBS_RiBo_FleBo_FixJoint"; }
    void getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    /// Joint point and force on each body; no moments.
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;

    const MBS_RiBo_FleBo_ConstraintCommons& shared() const { return *ownCommons; }
    const double* modalCoordinates(const P* v) const { return v->bodyData(body2Index) + 7; }
    Vec4 eulerParameters(unsigned body, const P* v) const {
        return Vec4::from(v->bodyData(body == 0 ? body1Index : body2Index) + 3);
    }
    const Mat3& rotationOfBody(unsigned body) const { return (body == 0 ? bodyCommons1 : bodyCommons2)->A; }

    Vec3 jointPointOnBody1;  ///< r1 + A1 u1 of the last residual, global frame
    Vec3 deformedLocalPoint; ///< u2 of the last residual, frame of body 2
    Vec3 u1, u0;             ///< joint point in the frames of body 1 and, undeformed, of body 2
    Vec3 x1, y1;             ///< global axes in the frame of body 1
    Vec3 y2, z2;             ///< global axes in the frame of body 2
    std::vector<Vec3> translationShapes, rotationShapes; ///< per mode, at the node: phi_j, psi_j

  private:
    void readKeys(IO_DataModelBlock& block);
    void readShapes(const IO_DataModelBlock& block, unsigned node);
    void setConstants();

    MBS_RiBo_FleBo_ConstraintCommons* ownCommons = nullptr; // of `constraintCommons`
};

/// Root of the CqT and CqTdT objects of the weld.
class MBS_RiBo_FleBo_FixJoint_Block : public MBS_BodyBody_CqT {
  public:
    /// All parts, without the translational one for CqTdT.
    MBS_RiBo_FleBo_FixJoint_Block(const MBS_RiBo_FleBo_FixJoint& owner, unsigned body, bool hasTransPart);

  protected:
    /// The translational part becomes [sign 1, 0].
    void setTransPart(double sign);
    /// Columns of the rotational part, 4x6.
    void setRotPart(const Mat34& point, const Vec4& column3, const Vec4& column4, const Vec4& column5);
    /// Row j of the flexible part, Mx6: (point phi_j)', then psi_j . c3, psi_j . c4, psi_j . c5 with c3 to c5
    /// in the frame of body 2.
    void setFlexPart(const Mat3& point, const Vec3& c3, const Vec3& c4, const Vec3& c5);

    const MBS_RiBo_FleBo_FixJoint* joint; // not owned
};

class MBS_RiBo_FleBo_FixJoint_CqT_1 : public MBS_RiBo_FleBo_FixJoint_Block {
  public:
    explicit MBS_RiBo_FleBo_FixJoint_CqT_1(const MBS_RiBo_FleBo_FixJoint& owner);
    std::string getClassName() const override { return "MBS_RiBo_FleBo_FixJoint_CqT_1"; }
    void update(double, const P* q, const P*, const P*) override;
};

class MBS_RiBo_FleBo_FixJoint_CqT_2 : public MBS_RiBo_FleBo_FixJoint_Block {
  public:
    explicit MBS_RiBo_FleBo_FixJoint_CqT_2(const MBS_RiBo_FleBo_FixJoint& owner);
    std::string getClassName() const override { return "MBS_RiBo_FleBo_FixJoint_CqT_2"; }
    void update(double, const P* q, const P*, const P*) override;
};

/// Takes the rates of node and joint point from the rigid motion of body 2 alone.
class MBS_RiBo_FleBo_FixJoint_CqTdT_1 : public MBS_RiBo_FleBo_FixJoint_Block {
  public:
    explicit MBS_RiBo_FleBo_FixJoint_CqTdT_1(const MBS_RiBo_FleBo_FixJoint& owner);
    std::string getClassName() const override { return "MBS_RiBo_FleBo_FixJoint_CqTdT_1"; }
    void update(double, const P* q, const P* qd, const P*) override;
};

/// As `MBS_RiBo_FleBo_FixJoint_CqTdT_1`.
class MBS_RiBo_FleBo_FixJoint_CqTdT_2 : public MBS_RiBo_FleBo_FixJoint_Block {
  public:
    explicit MBS_RiBo_FleBo_FixJoint_CqTdT_2(const MBS_RiBo_FleBo_FixJoint& owner);
    std::string getClassName() const override { return "MBS_RiBo_FleBo_FixJoint_CqTdT_2"; }
    void update(double, const P* q, const P* qd, const P*) override;
};

} // namespace velmora
