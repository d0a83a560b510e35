#include "velmora/measures/MBS_Actor.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace velmora {

namespace {

constexpr double shortestMove = 1e-10; // below it a move isn't split

constexpr MBS_KeyInfo keys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyID4Actor", IO_ValueCode::String, true, MBS_KeyRole::BodyID},
    {"ScaleA_t", IO_ValueCode::Double},
    {"ScaleA_r", IO_ValueCode::Double},
    {"ScaleB", IO_ValueCode::Double},
    {"MaxUpdateOfActorTargets", IO_ValueCode::Double, false},
    {"ActingPointIRF", IO_ValueCode::DoubleVector3},
    {"TargetPointIRF", IO_ValueCode::DoubleVector3},
};

/// Number of steps of at most this length; as many as can be counted at most.
std::uint32_t countSteps(double length, double longest) {
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    const double number = std::ceil(length / longest);
    return number < most ? static_cast<std::uint32_t>(number) : most;
}

} // namespace

std::span<const MBS_KeyInfo> MBS_actorKeys() {
    return keys;
}

MBS_Actor::MBS_Actor(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
    : MBS_ModelObject(block, owner) {
    std::string id;
    block->getValue("BodyID4Actor", &id, IO_ValueCode::String);
    if (!reportWithLineFeed(*block))
        return;
    MBS_Body* body = lookUp.getBodyByUUID(id);
    if (!body || !body->aBar4KinSolver) {
        appendErrorString("Body with ID " + id +
                          (body ? " is not of type MBS_RigidBody_EulerP_PAI!\n" : " does not exist!\n"));
        return;
    }
    bodyIndex = body->bodyIndex;
    double scaleB = 1.0;
    if (!readScale(*block, "ScaleA_t", pull.scaleA_t) || !readScale(*block, "ScaleA_r", pull.scaleA_r) ||
        !readScale(*block, "ScaleB", scaleB))
        return;
    setWeight(scaleB);
    if (block->isKeyInBlock("MaxUpdateOfActorTargets") &&
        !readScale(*block, "MaxUpdateOfActorTargets", maxUpdateOfActorTargets))
        return;
    if (!readPoint(*block, "ActingPointIRF", pull.actingPoint))
        return;
    pull.targetPoint = pull.actingPoint;
    setTargetFromBlock(*block);
    pull.isActive = active;
    if (!isErrorOccured()) // a body keeps no actor that failed
        body->actors.push_back(&pull);
}

void MBS_Actor::modifyModelElement(IO_DataModelBlock* block) {
    if (!block)
        return;
    MBS_ModelObject::modifyModelElement(block);
    pull.isActive = active;
    double scaleB = pull.weight(0, 0);
    for (const auto& [key, scale] :
         {std::pair("ScaleA_t", &pull.scaleA_t), {"ScaleA_r", &pull.scaleA_r}, {"ScaleB", &scaleB}})
        if (block->isKeyInBlock(key) && !readScale(*block, key, *scale))
            return;
    setWeight(scaleB);
    if (block->isKeyInBlock("ActingPointIRF")) {
        pull.isLocalPointValid = false;
        if (!readPoint(*block, "ActingPointIRF", pull.actingPoint))
            return;
    }
    if (block->isKeyInBlock("TargetPointIRF"))
        setTargetFromBlock(*block);
}

void MBS_Actor::setTargetFromBlock(IO_DataModelBlock& block) {
    Vec3 target;
    if (!readPoint(block, "TargetPointIRF", target))
        return;
    previousTargetPoint = pull.targetPoint;
    pull.targetPoint = target;
    targetUpdateCounter = 1;
    targetIncrement = target - previousTargetPoint;
    const double length = norm(targetIncrement);
    numOfTargetUpdates = 0;
    if (length < shortestMove || !(maxUpdateOfActorTargets > 0.0))
        return;
    numOfTargetUpdates = countSteps(length, maxUpdateOfActorTargets);
    targetIncrement *= 1.0 / numOfTargetUpdates;
    pull.targetPoint = previousTargetPoint + targetIncrement;
}

bool MBS_Actor::isFinalStateReached() {
    if (!active || targetUpdateCounter >= numOfTargetUpdates)
        return true;
    ++targetUpdateCounter;
    pull.targetPoint = previousTargetPoint + static_cast<double>(targetUpdateCounter) * targetIncrement;
    return false;
}

void MBS_Actor::getDataModelOfObject(MBS_ModelPhysicalDofVector* q, IO_DataModelBlock* block) {
    if (!q || !block || !block->isKeyInBlock("ActingPointIRF"))
        return;
    const double* place = q->bodyData(bodyIndex);
    const Vec3 x = pull.isLocalPointValid ? Vec3::from(place) + A(Vec4::from(place + 3)) * pull.actingPoint
                                          : pull.actingPoint; // no solve has seen it yet
    std::string text;
    for (unsigned i = 0; i < 3; ++i) {
        std::array<char, 400> number{}; // the longest double has 309 digits before the point
        std::snprintf(number.data(), number.size(), "%f", x(i));
        text.append(i > 0 ? ", " : "").append(number.data());
    }
    block->replaceValue("ActingPointIRF", text);
}

bool MBS_Actor::readScale(IO_DataModelBlock& block, const char* key, double& scale) {
    double value = scale;
    block.getValue(key, &value, IO_ValueCode::Double);
    if (!reportWithLineFeed(block))
        return false;
    scale = value;
    return true;
}

bool MBS_Actor::readPoint(IO_DataModelBlock& block, const char* key, Vec3& point) {
    Vec3 value;
    block.getValue(key, value.data.data(), IO_ValueCode::DoubleVector3);
    if (!reportWithLineFeed(block))
        return false;
    point = value;
    return true;
}

bool MBS_Actor::reportWithLineFeed(const IO_DataModelBlock& block) {
    if (!block.isErrorOccured())
        return true;
    std::string text;
    block.getErrorString(&text);
    appendErrorString(text + "\n");
    return false;
}

void MBS_Actor::setWeight(double scaleB) {
    pull.weight = Mat3{{scaleB, 0, 0, 0, scaleB, 0, 0, 0, scaleB}};
}

} // namespace velmora
