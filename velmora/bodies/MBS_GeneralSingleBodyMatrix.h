#pragma once

#include "velmora/bodies/MBS_BodyShape.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

namespace velmora {

/// Block object whose rows and columns belong to one body.
class MBS_GeneralSingleBodyMatrix : public MBS_GeneralBodyBodyMatrix {
  public:
    /// All blocks that the body's coordinates allow, as general matrices of zeros.
    explicit MBS_GeneralSingleBodyMatrix(const MBS_BodyShape& shape)
        : MBS_GeneralBodyBodyMatrix(shape.numTransDof, shape.numRotDof, shape.numFlexDof, shape.numTransDof,
                                    shape.numRotDof, shape.numFlexDof),
          bodyIndex(shape.bodyIndex) {}
    std::string getClassName() const override { return "MBS_GeneralSingleBodyMatrix"; }

  protected:
    unsigned bodyIndex;
};

} // namespace velmora
