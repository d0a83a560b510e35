#pragma once

#include "velmora/matrix/FixedSize.h"

namespace velmora {

/// How an actor acts on its body in a position-level solve: a spring of weight W from a point of the body to
/// a target. The actor owns and fills it; the body reads it.
struct MBS_ActorPull {
    bool isActive = true;
    double scaleA_t = 1.0;          ///< how strongly translations hold their place
    double scaleA_r = 1.0;          ///< how strongly Euler parameters hold their place
    Mat3 weight;                    ///< W, 3x3, global frame
    Vec3 actingPoint;               ///< global frame until the first solve turns it into a body-frame point
    bool isLocalPointValid = false; ///< `actingPoint` is a body-frame point
    Vec3 targetPoint;               ///< global frame
};

} // namespace velmora
