#include "driver/Reactions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

// The forces of some multipliers on the coordinates of a body are Q = -Cq' lambda. Its part along the place
// is the force; its part along the Euler parameters is G' T with the torque T about the origin of the body,
// so that T = G Q_p / (4 p'p), as G G' = 4 p'p I and G p = 0 (Nikravesh, Computer-Aided Analysis of
// Mechanical Systems, 1988).

namespace velmora::driver {

namespace {

using Vector = std::array<double, 3>;

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// v turned by the Euler parameters p of norm 1, or back with `sign` -1.
Vector turn(const double* p, const Vector& v, double sign) {
    const Vector e{sign * p[1], sign * p[2], sign * p[3]};
    const Vector t = cross(e, v), tt = cross(e, t);
    return {v[0] + 2.0 * (p[0] * t[0] + tt[0]), v[1] + 2.0 * (p[0] * t[1] + tt[1]),
            v[2] + 2.0 * (p[0] * t[2] + tt[2])};
}

Vector getTorque(const double* p, const double* Qp) {
    const double scale = 0.5 / (p[0] * p[0] + p[1] * p[1] + p[2] * p[2] + p[3] * p[3]);
    return {scale * (-p[1] * Qp[0] + p[0] * Qp[1] - p[3] * Qp[2] + p[2] * Qp[3]),
            scale * (-p[2] * Qp[0] + p[3] * Qp[1] + p[0] * Qp[2] - p[1] * Qp[3]),
            scale * (-p[3] * Qp[0] - p[2] * Qp[1] + p[1] * Qp[2] + p[0] * Qp[3])};
}

/// Arm from the origin of a body, before, to the point that the block gives for it; zero without a point.
Vector getArm(IO_DataModelBlock& block, std::size_t number, const double* place) {
    for (const std::string& key : {std::string("Location"), fmt::format("LocationBody{}", number + 1),
                                   fmt::format("PointOfApplication_Body{}", number + 1)}) {
        if (!block.isKeyInBlock(key))
            continue;
        Vector point{};
        block.getValueArray(key, point.data(), 3);
        return {point[0] - place[0], point[1] - place[1], point[2] - place[2]};
    }
    return {};
}

Reaction makeReaction(const Vector& arm, const double* q, const double* minusQ) {
    Reaction reaction;
    reaction.force = {0.0 - minusQ[0], 0.0 - minusQ[1], 0.0 - minusQ[2]}; // no negative zeros
    const double Qp[] = {-minusQ[3], -minusQ[4], -minusQ[5], -minusQ[6]};
    const Vector torque = getTorque(q + 3, Qp), shifted = cross(arm, reaction.force);
    for (unsigned i = 0; i < 3; ++i) {
        reaction.point[i] = q[i] + arm[i];
        reaction.moment[i] = torque[i] - shifted[i];
    }
    return reaction;
}

} // namespace

std::vector<Reaction> computeReactions(MBS_Model& model, IO_DataModel& dataModel, const EquationNames& names,
                                       const HHTState& state) {
    std::vector<Reaction> reactions;
    MBS_ModelPhysicalDofVector q0(&model), qd0(&model), forces(&model);
    model.copyInitialDataIntoPhysicalDofVector(&q0, &qd0);
    MBS_ModelConstraintDofVector share(&model);
    const auto bodies = dataModel.getBlocksOfKind("Body");
    for (IO_DataModelBlock* block : dataModel.getBlocksOfKind("Constraint")) {
        std::fill_n(share.dofVector->data, share.getNumOfConstraints(), 0.0);
        for (unsigned i = 0; i < model.getNumOfExternalConstraints(); ++i)
            if (names.getConstraintBlock(i) == block)
                std::copy_n(state.lambda.equationsOfConstraint(i), model.getNumOfConstraintDofOfConstraint(i),
                            share.equationsOfConstraint(i));
        model.getConstraintForces(&share, &forces);
        std::vector<std::string> uuids;
        block->getValue("BodyIDs", &uuids);
        for (std::size_t number = 0; number < uuids.size(); ++number) {
            const auto found = std::ranges::find(bodies, uuids[number], &IO_DataModelBlock::uuid);
            if (found == bodies.end())
                continue;
            const auto body = static_cast<unsigned>(found - bodies.begin());
            const double *start = q0.bodyData(body), *q = state.q.bodyData(body);
            const Vector arm = turn(q + 3, turn(start + 3, getArm(*block, number, start), -1.0), 1.0);
            reactions.push_back(makeReaction(arm, q, forces.bodyData(body)));
            reactions.back().joint = block->label.empty() ? block->uuid : block->label;
            reactions.back().body = uuids[number];
        }
    }
    return reactions;
}

} // namespace velmora::driver
