#include "velmora/constraints/MBS_ExtConstraint.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>

namespace velmora {

MBS_ExtConstraint::MBS_ExtConstraint(IO_DataModelBlock* block, MBS_Model* owner,
                                     const MBS_ModelLookUp& lookUp, unsigned index, unsigned numOfEquations)
    : MBS_ModelObject(block, owner),
      numOfConstraintDof(numOfEquations),
      constraintIndex(index) {
    readFrame(*block);
    std::vector<std::string> ids;
    block->getValue("BodyIDs", &ids);
    if (reportBlockErrors(*block))
        return;
    ids.resize(std::max<std::size_t>(ids.size(), 2));
    for (std::size_t k = 0; k < 2; ++k) {
        if (k == 1 && ids[k] == "0")
            continue;
        constraintBodies[k] = lookUp.getBodyByUUID(ids[k]);
        if (constraintBodies[k])
            continue;
        std::string prefix;
        block->getErrorString(&prefix);
        appendErrorString(prefix + "ERROR: Body" + std::to_string(k + 1) +
                          " not found using bodyID: " + ids[k] + "!\n");
        return;
    }
    localLocation = toLocalPoint(*constraintBodies[0], location);
    localOrientation = transposeTimes(constraintBodies[0]->rotationMatrix, constraintOrientation);
}

MBS_ExtConstraint::~MBS_ExtConstraint() = default;

void MBS_ExtConstraint::refuse(const IO_DataModelBlock& block, const std::string& message) {
    std::string prefix;
    block.getErrorString(&prefix);
    appendErrorString(prefix + message);
}

void MBS_ExtConstraint::readFrame(IO_DataModelBlock& block) {
    if (block.isKeyInBlock("Location"))
        block.getValue("Location", location.data.data(), IO_ValueCode::DoubleVector3);
    MBM_GeneralDenseMatrix orientation(3, 3, 0.0);
    if (block.isKeyInBlock("ConstraintOrientation")) {
        block.getValue("ConstraintOrientation", orientation.data, IO_ValueCode::DoubleMatrix3x3);
        MBS_Math::performOrthonormalization(&orientation);
    } else {
        orientation.fillWithPattern("Unit");
    }
    constraintOrientation = Mat3::from(orientation.data);
}

Vec3 MBS_ExtConstraint::toLocalPoint(const MBS_Body& body, const Vec3& point) {
    return toLocalAxis(body, point - body.position);
}

Vec3 MBS_ExtConstraint::toLocalAxis(const MBS_Body& body, const Vec3& axis) {
    return transposeTimes(body.rotationMatrix, axis);
}

void MBS_ExtConstraint::addCqTLe_q(unsigned rowBody, unsigned colBody,
                                   std::unique_ptr<MBS_GeneralBodyBodyMatrix> block) {
    cqTLe_qRowBodies.push_back(rowBody);
    cqTLe_qColBodies.push_back(colBody);
    cqTLe_qBlocks.push_back(std::move(block));
}

void MBS_ExtConstraint::addCqT(unsigned body, std::unique_ptr<MBS_General_CqT> cqT) {
    cqTBodies.push_back(body);
    cqTObjects.push_back(std::move(cqT));
}

void MBS_ExtConstraint::getConstraintForces(const C* multipliers, P* out) const {
    const double* lambda = multipliers->equationsOfConstraint(constraintIndex);
    for (std::size_t k = 0; k < cqTObjects.size(); ++k)
        addProduct(*cqTObjects[k], lambda, out->bodyData(cqTBodies[k]));
}

void MBS_ExtConstraint::getAndUpdateConstraints(double, const P* q, const P* qd, const P* qdd, C*) {
    if (constraintCommons)
        constraintCommons->update(q, qd, qdd, nullptr);
}

void MBS_ExtConstraint::getCqdT_Mult_Qd(const P* q, const P* qd, const P* qdd, C* out) {
    double* result = out->equationsOfConstraint(constraintIndex);
    std::fill_n(result, numOfConstraintDof, 0.0);
    for (std::size_t k = 0; k < cqTdTObjects.size(); ++k) {
        if (!cqTdTObjects[k])
            continue;
        cqTdTObjects[k]->update(0.0, q, qd, qdd);
        addTransposedProduct(*cqTdTObjects[k], qd->bodyData(cqTBodies[k]), result);
    }
}

void MBS_ExtConstraint::updateForMotion(double t, const P* q, const P* qd, const P* qdd, C* out) {
    getAndUpdateConstraints(t, q, qd, qdd, out);
    for (const auto& cqT : cqTObjects)
        cqT->update(t, q, qd, qdd);
}

void MBS_ExtConstraint::updateForJacobian(double t, const P* q, const P* qd, const P* qdd,
                                          const C* multipliers) {
    if (constraintCommons)
        constraintCommons->updateForJacobian(t, q, qd, qdd, nullptr);
    for (const auto& block : cqTLe_qBlocks)
        if (block)
            block->update(t, q, qd, qdd, multipliers);
    for (const auto& cqTdT : cqTdTObjects)
        if (cqTdT)
            cqTdT->update(t, q, qd, qdd);
}

// With F = -t lambda at the point P = r + A u, the rotational part of the joint's generalised force,
// -rr lambda, is J(e; u)' F + G' M. From G G' = 4 1 and J = -(P - r) x G follows M = G (J' t - rr) lambda
// / 4.
void MBS_ExtConstraint::computeReaction(unsigned body, const Vec3& localPoint, const P* q,
                                        const C* multipliers, Vec3* result) {
    const MBS_General_CqT& cqT = *cqTObjects[body];
    const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
    const double* coordinates = q->bodyData(cqTBodies[body]);
    const Vec4 e = Vec4::from(coordinates + 3);
    const Vec3 t = cqT.tPart ? Vec3::from(cqT.tPart->data) : Vec3();
    Vec4 perLambda = transposeTimes(J(e, localPoint), t);
    if (cqT.rPart)
        perLambda -= Vec4::from(cqT.rPart->data);
    location = Vec3::from(coordinates) + A(e) * localPoint;
    result[0] = result[2] = location;
    result[1] = -lambda * t;
    result[3] = (0.25 * lambda) * (constraintBodies[body]->commons->G() * perLambda);
}

} // namespace velmora
