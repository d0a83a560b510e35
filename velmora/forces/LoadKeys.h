#pragma once

#include "velmora/forces/MBS_3DUnitVector.h"

#include <memory>
#include <string>

namespace velmora {

class IO_DataModelBlock;

/// The keys of a force vector. Read errors stand on the block.
struct ForceVectorKeys {
    explicit ForceVectorKeys(IO_DataModelBlock& block);

    std::string expression, directionType;
    Vec3 point1, point2;      ///< global frame, at the start
    Vec3 direction;           ///< global frame, at the start; zero along a line of sight
    bool isTypeGiven = false; ///< without it neither type nor direction is read
};

/// The keys of a torque vector. Read errors stand on the block.
struct TorqueVectorKeys {
    explicit TorqueVectorKeys(IO_DataModelBlock& block);

    std::string expression, axisType;
    Vec3 axis; ///< global frame, at the start
};

/// Direction "BodyFixed" (to `body`) or "SpaceFixed"; null for any other type.
std::unique_ptr<MBS_3DUnitVector> makeGivenDirection(const std::string& type, const Vec3& given,
                                                     MBS_Body* body);

} // namespace velmora
