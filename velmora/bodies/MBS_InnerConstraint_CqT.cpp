#include "velmora/bodies/MBS_InnerConstraint_CqT.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/matrix/FixedSize.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_InnerConstraint_CqT::MBS_InnerConstraint_CqT(const MBS_Body& owner)
    : MBS_General_CqT(owner.numTransDof, owner.numRotDof, owner.numFlexDof, owner.numInnerConstraintDof),
      bodyIndex(owner.bodyIndex) {
    tPart.reset();
    fPart.reset();
}

void MBS_InnerConstraint_CqT::setTwice(const P* vector) {
    (2.0 * Vec4::from(vector->bodyData(bodyIndex) + 3)).to(rPart->data);
}

} // namespace velmora
