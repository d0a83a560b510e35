#pragma once

#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

namespace velmora {

class MBS_Body;

/// Block object whose rows and columns belong to one body.
class MBS_GeneralSingleBodyMatrix : public MBS_GeneralBodyBodyMatrix {
  public:
    /// All blocks that the body's coordinates allow, as general matrices of zeros.
    explicit MBS_GeneralSingleBodyMatrix(const MBS_Body& owner);
    std::string getClassName() const override { return "MBS_GeneralSingleBodyMatrix"; }

  protected:
    const MBS_Body* body; // not owned
    unsigned bodyIndex;
};

} // namespace velmora
