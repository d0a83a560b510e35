#pragma once

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

/// A direction given in the global frame at the start, in the body's frame.
inline Vec3 toLocalAxis(const MBS_Body& body, const Vec3& axis) {
    return transposeTimes(body.rotationMatrix, axis);
}

/// A point given in the global frame at the start, in the body's frame.
inline Vec3 toLocalPoint(const MBS_Body& body, const Vec3& point) {
    return toLocalAxis(body, point - body.position);
}

} // namespace velmora
