#pragma once

#include "velmora/forces/MBS_Force.h"

namespace velmora {

/// Uniform gravity on every body: Q_trans += s(t) m g.
///
/// With an activation time T > 0 the weight rises smoothly, s = 1/2 - cos(pi t / T) / 2 for t < T, and is
/// full from T on. Gravity depends on no coordinate, so it has no derivative blocks.
class MBS_GravityForce : public MBS_Force {
  public:
    /// Reads "GravityAccVector" (3, global frame) and, optional, "ActivationTime" (default 0.0: full weight
    /// at any time). All bodies exist already.
    MBS_GravityForce(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_GravityForce"; }
    void addExternalForces(double t, const P* q, const P* qd, const P* qdd, P* Q) override;
    bool isGravityForce() const override { return true; }
    bool isSingleBodyForce() const override { return true; }

    Vec3 gravityAcc; ///< g, global frame

  private:
    double weightFactor(double t) const;

    std::vector<Vec3> bodyWeights; // per body m g, global frame
    double activationTime = 0.0;
    double rampOmega = 0.0; // pi / T
};

} // namespace velmora
