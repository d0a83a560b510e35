#pragma once

#include "velmora/forces/MBS_Force.h"

#include <memory>

namespace velmora {

/// What a contact library is told of the two bodies and their surfaces, in the units of the model.
struct MBS_ContactKeys {
    /// Reads "Path2ContactSurface1", "Path2ContactSurface2" (texts, taken as they stand); "YoungsModulus1",
    /// "PoissonsRatio1", "LayerThickness1" (2 alike), "MaxPenetration", "DampingCompression",
    /// "DampingExpansion", "DepthOfDampingTransition", "SlidingFrictionCoeff",
    /// "FrictionRegularizationVelocity" (numbers); "Task", "ModeOfDampingTransition" (int);
    /// "IsNumericJacobiRequired" (bool); and, optional, "PositionContactGraphics1" (3),
    /// "OrientationContactGraphics1" (3x3; 2 alike). Read errors stand on the block.
    explicit MBS_ContactKeys(IO_DataModelBlock& block);

    /// One of the two surfaces.
    struct Surface {
        std::string path;
        double youngsModulus = 0.0, poissonsRatio = 0.0, layerThickness = 0.0;
        Vec3 positionContactGraphics;
        Mat3 orientationContactGraphics{{1, 0, 0, 0, 1, 0, 0, 0, 1}};
    };
    Surface surface1, surface2;
    double maxPenetration = 0.0;
    double dampingCompression = 0.0, dampingExpansion = 0.0, depthOfDampingTransition = 0.0;
    double slidingFrictionCoeff = 0.0, frictionRegularizationVelocity = 0.0;
    int modeOfDampingTransition = 0, task = 0;
    bool isNumericJacobiRequired = false;

  private:
    static void readGraphics(IO_DataModelBlock& block, const std::string& number, Surface& surface);
};

/// Contact of two rigid bodies. Shapes and law are the affair of a contact library behind the eleven
/// functions of PCM_Contact.h: it gives the force F on body 1 (-F on body 2) and the torques on both about
/// their positions, with their derivatives.
class MBS_RiBo_RiBo_Contact final : public MBS_BodyBodyForce {
  public:
    /// Reads the keys of MBS_ContactKeys. Errors beside those of the roots: "ERROR: Path2ContactSurface1 is
    /// longer than 1023 characters!" (2 alike); "ERROR: definition of contact not possible!" if the library
    /// makes no contact. Without "IsNumericJacobiRequired" the contact adds nothing to any matrix.
    MBS_RiBo_RiBo_Contact(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);

    std::string getClassName() const override { return "MBS_RiBo_RiBo_Contact"; }
    void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q) override;
    void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd) override;
    /// Contact point, force and torque on each body; zeros out of contact.
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;

    bool isInContact() const; ///< at the last update
    /// Has the library compute all derivatives at this state.
    void updateDerivatives(const P* q, const P* qd) const;
    /// G of the first (0) or second (1) body, 3x4.
    Mat34 G(unsigned body) const;
    void* handle() const { return contactHandle.get(); }
    unsigned indexOf(unsigned body) const { return body == 0 ? body1Index : body2Index; }
    const MBS_Body& bodyAt(unsigned body) const { return body == 0 ? *body1 : *body2; }

  private:
    struct Release {
        void operator()(void* memory) const;
    };

    bool createContact(const MBS_ContactKeys& keys);
    void createBlocks();

    std::unique_ptr<void, Release> contactHandle;
    // Arrays of the library, 3 values each, global frame.
    const double* contactForce = nullptr;
    const double* contactTorqueE = nullptr;
    const double* contactTorqueF = nullptr;
    const double* weightedContactPosition = nullptr;
};

/// Root of the derivative blocks of a contact. With R = G and T of the row body, s = 1 for body 1 and -1 for
/// body 2: [tt tr] = s dF/dx, [rt rr] = R' dT/dx, and rr += d(R' T)/de at constant T within one body.
class MBS_RiBo_RiBo_Contact_Qe_X : public MBS_BodyBodyForce_Qe_X {
  public:
    /// `rowBody`, `colBody`: 0 or 1 for the first or the second; `kind`: 1 for q, 2 for qd.
    MBS_RiBo_RiBo_Contact_Qe_X(const MBS_RiBo_RiBo_Contact& owner, unsigned rowBody, unsigned colBody,
                               int kind);
    void update(double t, const P* q, const P* qd, const P* qdd, const C* lagrange) override;
    /// The same with the derivatives that the library holds.
    void takeDerivatives();

  protected:
    const MBS_RiBo_RiBo_Contact* contact; // not owned

  private:
    unsigned row;
    bool hasOwnRotation; // d(R' T)/de
    const double *torque, *forceJacobian, *torqueJacobian;
};

class MBS_RiBo_RiBo_Contact_Qe_q_1x : public MBS_RiBo_RiBo_Contact_Qe_X {
  public:
    MBS_RiBo_RiBo_Contact_Qe_q_1x(const MBS_RiBo_RiBo_Contact& owner, unsigned colBody)
        : MBS_RiBo_RiBo_Contact_Qe_X(owner, 0, colBody, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Contact_Qe_q_1x"; }
    /// Has the library compute all derivatives first.
    void update(double t, const P* q, const P* qd, const P* qdd, const C* lagrange) override;
};

class MBS_RiBo_RiBo_Contact_Qe_q_2x : public MBS_RiBo_RiBo_Contact_Qe_X {
  public:
    MBS_RiBo_RiBo_Contact_Qe_q_2x(const MBS_RiBo_RiBo_Contact& owner, unsigned colBody)
        : MBS_RiBo_RiBo_Contact_Qe_X(owner, 1, colBody, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Contact_Qe_q_2x"; }
};

class MBS_RiBo_RiBo_Contact_Qe_qd_1x : public MBS_RiBo_RiBo_Contact_Qe_X {
  public:
    MBS_RiBo_RiBo_Contact_Qe_qd_1x(const MBS_RiBo_RiBo_Contact& owner, unsigned colBody)
        : MBS_RiBo_RiBo_Contact_Qe_X(owner, 0, colBody, 2) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Contact_Qe_qd_1x"; }
};

class MBS_RiBo_RiBo_Contact_Qe_qd_2x : public MBS_RiBo_RiBo_Contact_Qe_X {
  public:
    MBS_RiBo_RiBo_Contact_Qe_qd_2x(const MBS_RiBo_RiBo_Contact& owner, unsigned colBody)
        : MBS_RiBo_RiBo_Contact_Qe_X(owner, 1, colBody, 2) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Contact_Qe_qd_2x"; }
};

} // namespace velmora
