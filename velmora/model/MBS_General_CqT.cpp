#include "velmora/model/MBS_General_CqT.h"

namespace velmora {

namespace {

// Pairs of one part whose element (0, 0) has the one-based place (dof, equation).
void addPatternOfPart(const MBM_DenseMatrix* part, unsigned dof, unsigned equation,
                      std::vector<unsigned>& dofs, std::vector<unsigned>& equations) {
    if (!part)
        return;
    for (unsigned j = 0; j < part->cols; ++j)
        for (unsigned i = 0; i < part->rows; ++i) {
            if (part->isDiagonal() && i != j)
                continue;
            dofs.push_back(dof + i);
            equations.push_back(equation + j);
        }
}

void addPattern(const MBS_General_CqT& cqT, unsigned dofOffset, unsigned equationOffset,
                std::vector<unsigned>& dofs, std::vector<unsigned>& equations) {
    const unsigned first = dofOffset + 1;
    addPatternOfPart(cqT.tPart.get(), first, equationOffset + 1, dofs, equations);
    addPatternOfPart(cqT.rPart.get(), first + cqT.transDof, equationOffset + 1, dofs, equations);
    addPatternOfPart(cqT.fPart.get(), first + cqT.transDof + cqT.rotDof, equationOffset + 1, dofs, equations);
}

} // namespace

MBS_General_CqT::MBS_General_CqT(unsigned numTrans, unsigned numRot, unsigned numFlex, unsigned numEquations)
    : transDof(numTrans),
      rotDof(numRot),
      flexDof(numFlex),
      constraintDof(numEquations) {
    const auto make = [this](unsigned dof) -> Part {
        if (dof == 0 || constraintDof == 0)
            return nullptr;
        auto part = std::make_unique<MBM_GeneralDenseMatrix>(dof, constraintDof, 0.0);
        if (part->errorCode != 0)
            errorString = "Error: No allocation of memory possible, not in Excel";
        return part;
    };
    tPart = make(transDof);
    rPart = make(rotDof);
    fPart = make(flexDof);
}

MBS_General_CqT::~MBS_General_CqT() = default;

void MBS_General_CqT::update(double, const P*, const P*, const P*) {}

void MBS_General_CqT::addPatternOfCqT(std::vector<unsigned>& rows, std::vector<unsigned>& cols,
                                      unsigned rowOffset, unsigned colOffset) const {
    addPattern(*this, rowOffset, colOffset, rows, cols);
}

void MBS_General_CqT::addPatternOfCq(std::vector<unsigned>& rows, std::vector<unsigned>& cols,
                                     unsigned rowOffset, unsigned colOffset) const {
    addPattern(*this, colOffset, rowOffset, cols, rows);
}

} // namespace velmora
