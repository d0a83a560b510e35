#include "velmora/results/MBS_ConstraintResultFileWriters.h"

#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

std::vector<std::string> MBS_ConstraintsResultFileWriter::topology() const {
    std::vector<std::string> uuids;
    for (const auto& constraint : model->getConstraints())
        uuids.push_back(constraint->uuid);
    return uuids;
}

void MBS_ConstraintsResultFileWriter::writeResults(double t, const P* q, const P* qd, const P* qdd,
                                                   const C* multipliers) {
    writeDouble(t);
    writeLineEnd();
    for (const auto& constraint : model->getConstraints()) {
        writeConstraint(*constraint, q, qd, qdd, multipliers);
        writeLineEnd();
    }
}

void MBS_ConstraintResultFileWriter::writeConstraint(MBS_ExtConstraint& constraint, const P* q, const P* qd,
                                                     const P* qdd, const C* multipliers) {
    MBS_ExtConstraint::ResultData data;
    constraint.getConstraintResultData(q, qd, qdd, multipliers, data);
    const unsigned numOfVectors = constraint.isSingleBodyConstraint() ? 4 : 8;
    for (unsigned k = 0; k < numOfVectors; ++k)
        writeNumbers(data[k].data.data(), 3);
}

void MBS_ExtConstraintsLagrangeResultFileWriter::writeConstraint(MBS_ExtConstraint& constraint, const P*,
                                                                 const P*, const P*, const C* multipliers) {
    writeNumbers(multipliers->equationsOfConstraint(constraint.constraintIndex),
                 constraint.numOfConstraintDof);
}

} // namespace velmora
