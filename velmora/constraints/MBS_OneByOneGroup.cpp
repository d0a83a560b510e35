#include "velmora/constraints/MBS_OneByOneGroup.h"

#include "velmora/constraints/MBS_ExtConstraint.h"

namespace velmora {

MBS_OneByOneGroup::MBS_OneByOneGroup(std::vector<MBS_ExtConstraint*> members)
    : constraints(std::move(members)) {
    for (const MBS_ExtConstraint* constraint : constraints)
        for (std::size_t k = 0; k < constraint->cqTLe_qBlocks.size(); ++k)
            if (const auto* block = constraint->cqTLe_qBlocks[k].get())
                cqTLe_q.push_back({constraint->cqTLe_qRowBodies[k], constraint->cqTLe_qColBodies[k], block});
}

void MBS_OneByOneGroup::updateForMotion(double t, const P* q, const P* qd, const P* qdd, C* out) {
    for (MBS_ExtConstraint* constraint : constraints)
        constraint->updateForMotion(t, q, qd, qdd, out);
}

void MBS_OneByOneGroup::updateForJacobian(double t, const P* q, const P* qd, const P* qdd,
                                          const C* multipliers) {
    for (MBS_ExtConstraint* constraint : constraints)
        constraint->updateForJacobian(t, q, qd, qdd, multipliers);
}

void MBS_OneByOneGroup::getConstraintForces(const C* multipliers, P* out) const {
    for (const MBS_ExtConstraint* constraint : constraints)
        constraint->getConstraintForces(multipliers, out);
}

} // namespace velmora
