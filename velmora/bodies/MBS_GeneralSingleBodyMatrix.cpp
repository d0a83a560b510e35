#include "velmora/bodies/MBS_GeneralSingleBodyMatrix.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_GeneralSingleBodyMatrix::MBS_GeneralSingleBodyMatrix(const MBS_Body& owner)
    : MBS_GeneralBodyBodyMatrix(owner.numTransDof, owner.numRotDof, owner.numFlexDof, owner.numTransDof,
                                owner.numRotDof, owner.numFlexDof),
      body(&owner),
      bodyIndex(owner.bodyIndex) {}

} // namespace velmora
