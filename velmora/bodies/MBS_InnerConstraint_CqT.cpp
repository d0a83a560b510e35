#include "velmora/bodies/MBS_InnerConstraint_CqT.h"

#include "velmora/matrix/FixedSize.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_InnerConstraint_CqT::MBS_InnerConstraint_CqT(const MBS_BodyShape& shape)
    : MBS_General_CqT(shape.numTransDof, shape.numRotDof, shape.numFlexDof, shape.numInnerConstraintDof),
      bodyIndex(shape.bodyIndex) {
    tPart.reset();
    fPart.reset();
}

void MBS_InnerConstraint_CqT::setTwice(const P* vector) {
    (2.0 * Vec4::from(vector->bodyData(bodyIndex) + 3)).to(rPart->data);
}

} // namespace velmora
