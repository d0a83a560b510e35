#pragma once

namespace velmora {

/// Place of a body in its model and numbers of its coordinates and inner equations: all that the blocks of a
/// body need to know of it at construction.
struct MBS_BodyShape {
    unsigned bodyIndex;
    unsigned numTransDof;
    unsigned numRotDof;
    unsigned numFlexDof;
    unsigned numInnerConstraintDof;
};

} // namespace velmora
