#pragma once

#include "velmora/bodies/MBS_ActorPull.h"
#include "velmora/model/MBS_BlockVocabulary.h"
#include "velmora/model/MBS_ModelObject.h"

#include <cstdint>
#include <span>

namespace velmora {

class MBS_ModelLookUp;

/// A handle by which a solver drags a rigid body in the position-level solve: a point of the body, the acting
/// point, is pulled towards a target, with the weighted least-squares term
///
///     sB / 2 | x_T - (r + A u) |^2,  and the hold  sA_t / 2 | dr |^2 + sA_r / 2 | de |^2
///
/// A long move can be split into short ones; `isFinalStateReached` tells when all are done.
class MBS_Actor final : public MBS_ModelObject {
  public:
    /// Reads "BodyID4Actor" (text), "ScaleA_t", "ScaleA_r", "ScaleB" (numbers), optional
    /// "MaxUpdateOfActorTargets" (longest step of the target; not positive: no limit), "ActingPointIRF" and
    /// "TargetPointIRF" (3 each, global frame), and enters the list of its body. Errors: those of the block;
    /// "Body with ID " + id + " does not exist!\n", or " is not of type MBS_RigidBody_EulerP_PAI!\n".
    MBS_Actor(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_Actor"; }

    /// Takes over label and "active", and those of the scales, "ActingPointIRF" and "TargetPointIRF" that the
    /// block holds. An acting point counts from where the body is at the next solve; a target begins a new
    /// move from the target reached so far. Nothing for a null block.
    void modifyModelElement(IO_DataModelBlock* block) override;
    /// Writes the present place of the acting point as "%f, %f, %f" into the block's "ActingPointIRF".
    void getDataModelOfObject(MBS_ModelPhysicalDofVector* q, IO_DataModelBlock* block) override;

    /// True when the move is done, or the actor isn't active. Otherwise takes the next step of the target.
    bool isFinalStateReached();
    /// Reads "TargetPointIRF" and begins a move to it.
    void setTargetFromBlock(IO_DataModelBlock& block);

    unsigned bodyIndex = 0;
    MBS_ActorPull pull; ///< acting point, present target, weights: what the body reads
    Vec3 previousTargetPoint, targetIncrement;
    std::uint32_t numOfTargetUpdates = 0; ///< steps of the present move; 0 if it isn't split
    std::uint32_t targetUpdateCounter = 0;
    double maxUpdateOfActorTargets = -1.0;

  private:
    /// False, and reported, if the block has an error.
    bool readScale(IO_DataModelBlock& block, const char* key, double& scale);
    bool readPoint(IO_DataModelBlock& block, const char* key, Vec3& point);
    bool reportWithLineFeed(const IO_DataModelBlock& block);
    void setWeight(double scaleB);
};

/// Keys of the type "KinematicActor".
std::span<const MBS_KeyInfo> MBS_actorKeys();

} // namespace velmora
