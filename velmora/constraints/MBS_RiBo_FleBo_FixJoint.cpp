#include "velmora/constraints/MBS_RiBo_FleBo_FixJoint.h"

#include "velmora/bodies/MBS_FlexBody_Full.h"
#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_FeNodeMappers.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/io/IO_DataModelBlock.h"

// Notation: r, A, p = place, rotation matrix, Euler parameters of body 1 or 2; eta = modal coordinates;
// phi_j, psi_j = mode shapes at the node; u2 = u0 + sum of phi_j eta_j; X = 1 + tilde(sum of psi_j eta_j);
// D(p; u) = d(A u)/dp, D(dp; u) its rate; dA = rate of A by dp.
//
// (1) C       rows 0 to 2: r1 + A1 u1 - r2 - A2 u2
//             row 3: A1 y1 . A2 X z2
//             row 4: A1 x1 . A2 X z2
//             row 5: A1 x1 . A2 X y2
// (2) CqT_1   t: [1, 0]
//             r: [D(p1; u1)', D(p1; y1)' A2 X z2, D(p1; x1)' A2 X z2, D(p1; x1)' A2 X y2]
// (3) CqT_2   t: [-1, 0]
//             r: [-D(p2; u2)', D(p2; X z2)' A1 y1, D(p2; X z2)' A1 x1, D(p2; X y2)' A1 x1]
//             f, row j: -(A2 phi_j)', psi_j . (z2 x A2'A1 y1), psi_j . (z2 x A2'A1 x1),
//             psi_j . (y2 x A2'A1 x1), since A2 tilde(psi_j) z2 . a = psi_j . (z2 x A2'a)
// (4) CqTdT   the rates of (2) and (3) while body 2 moves undeformed: u2 = u0 and X = 1 in what is a rate

namespace velmora {

void MBS_RiBo_FleBo_ConstraintCommons::update(const P* q, const P*, const P*, const C*) {
    const double* eta = joint->modalCoordinates(q);
    Vec3 angles;
    for (std::size_t j = 0; j < joint->rotationShapes.size(); ++j)
        angles += eta[j] * joint->rotationShapes[j];
    X = skew(angles);
    for (int i = 0; i < 3; ++i)
        X(i, i) = 1.0;
    const Mat3 &A1 = joint->rotationOfBody(0), &A2 = joint->rotationOfBody(1);
    rotationOfNode = A2 * X;
    Xy2 = X * joint->y2;
    Xz2 = X * joint->z2;
    A2Xy2 = A2 * Xy2;
    A2Xz2 = A2 * Xz2;
    A1x1 = A1 * joint->x1;
    A1y1 = A1 * joint->y1;
    const Vec4 p1 = joint->eulerParameters(0, q), p2 = joint->eulerParameters(1, q);
    Dofx1 = J(p1, joint->x1);
    Dofy1 = J(p1, joint->y1);
    DofXy2 = J(p2, Xy2);
    DofXz2 = J(p2, Xz2);
}

MBS_RiBo_FleBo_FixJoint::MBS_RiBo_FleBo_FixJoint(IO_DataModelBlock* block, MBS_Model* owner,
                                                 const MBS_ModelLookUp& lookUp, unsigned index)
    : MBS_BodyBodyConstraint(block, owner, lookUp, index, 6) {
    if (isErrorOccured())
        return;
    readKeys(*block);
    if (isErrorOccured())
        return;
    setConstants();
    auto newCommons = std::make_unique<MBS_RiBo_FleBo_ConstraintCommons>(*this);
    ownCommons = newCommons.get();
    constraintCommons = std::move(newCommons);
    addCqT(body1Index, std::make_unique<MBS_RiBo_FleBo_FixJoint_CqT_1>(*this));
    addCqT(body2Index, std::make_unique<MBS_RiBo_FleBo_FixJoint_CqT_2>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_FleBo_FixJoint_CqTdT_1>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_FleBo_FixJoint_CqTdT_2>(*this));
}

// A location that was there has been read by the root already.
void MBS_RiBo_FleBo_FixJoint::readKeys(IO_DataModelBlock& block) {
    unsigned node = 0;
    block.getValue("Location", location.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("InterfaceNode", &node);
    if (!reportBlockErrors(block))
        readShapes(block, node);
}

void MBS_RiBo_FleBo_FixJoint::readShapes(const IO_DataModelBlock& block, unsigned node) {
    const auto& body2 = dynamic_cast<const MBS_FlexBody_Full&>(*constraintBodies[1]);
    const FeLib_FeModes& modes = *body2.flexParameter->mtxContent->modes;
    MBM_GeneralDenseMatrix nodeModeShapes(6, 1, 0.0);
    modes.addNodeShapes(node, nodeModeShapes);
    const bool isFound = modes.dofMapper && modes.dofMapper->findRecord(node) && modes.shapes;
    if (!isFound || nodeModeShapes.rows != 6 || nodeModeShapes.cols != body2.numFlexDof)
        return refuse(block, "ERROR: InterfaceNode <" + std::to_string(node) + "> not found in mtx-file!\n");
    for (unsigned j = 0; j < body2.numFlexDof; ++j) {
        translationShapes.push_back(Vec3::from(nodeModeShapes.data + std::size_t{6} * j));
        rotationShapes.push_back(Vec3::from(nodeModeShapes.data + std::size_t{6} * j + 3));
    }
}

void MBS_RiBo_FleBo_FixJoint::setConstants() {
    const MBS_Body &body1 = *constraintBodies[0], &body2 = *constraintBodies[1];
    const Vec3 x{{1, 0, 0}}, y{{0, 1, 0}}, z{{0, 0, 1}};
    u1 = toLocalPoint(body1, location);
    x1 = toLocalAxis(body1, x);
    y1 = toLocalAxis(body1, y);
    u0 = deformedLocalPoint = toLocalPoint(body2, location);
    y2 = toLocalAxis(body2, y);
    z2 = toLocalAxis(body2, z);
    jointPointOnBody1 = location;
}

// (1)
void MBS_RiBo_FleBo_FixJoint::getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd,
                                                      C* out) {
    MBS_BodyBodyConstraint::getAndUpdateConstraints(t, q, qd, qdd, out);
    const auto& c = shared();
    const Mat3 &A1 = rotationOfBody(0), &A2 = rotationOfBody(1);
    const double* eta = modalCoordinates(q);
    deformedLocalPoint = u0;
    for (std::size_t j = 0; j < translationShapes.size(); ++j)
        deformedLocalPoint += eta[j] * translationShapes[j];
    jointPointOnBody1 = Vec3::from(q->bodyData(body1Index)) + A1 * u1;
    const Vec3 pointOnBody2 = Vec3::from(q->bodyData(body2Index)) + A2 * deformedLocalPoint;
    double* residual = out->equationsOfConstraint(constraintIndex);
    (jointPointOnBody1 - pointOnBody2).to(residual);
    residual[3] = dot(c.A1y1, c.A2Xz2);
    residual[4] = dot(c.A1x1, c.A2Xz2);
    residual[5] = dot(c.A1x1, c.A2Xy2);
}

void MBS_RiBo_FleBo_FixJoint::getConstraintResultData(const P*, const P*, const P*, const C* multipliers,
                                                      ResultData& data) {
    const Vec3 force = Vec3::from(multipliers->equationsOfConstraint(constraintIndex));
    data = {jointPointOnBody1, -force, Vec3(), Vec3(), jointPointOnBody1, force, Vec3(), Vec3()};
}

MBS_RiBo_FleBo_FixJoint_Block::MBS_RiBo_FleBo_FixJoint_Block(const MBS_RiBo_FleBo_FixJoint& owner,
                                                             unsigned body, bool hasTransPart)
    : MBS_BodyBody_CqT(owner, body, hasTransPart, true),
      joint(&owner) {}

void MBS_RiBo_FleBo_FixJoint_Block::setTransPart(double sign) {
    for (unsigned i = 0; i < 3; ++i)
        tPart->setValue(i, i, sign);
}

void MBS_RiBo_FleBo_FixJoint_Block::setRotPart(const Mat34& point, const Vec4& column3, const Vec4& column4,
                                               const Vec4& column5) {
    transpose(point).to(rPart->data);
    column3.to(rPart->data + 12);
    column4.to(rPart->data + 16);
    column5.to(rPart->data + 20);
}

void MBS_RiBo_FleBo_FixJoint_Block::setFlexPart(const Mat3& point, const Vec3& c3, const Vec3& c4,
                                                const Vec3& c5) {
    const std::size_t M = joint->translationShapes.size();
    for (std::size_t j = 0; j < M; ++j) {
        const Vec3 translation = point * joint->translationShapes[j];
        const Vec3& psi = joint->rotationShapes[j];
        const double row[6] = {translation(0), translation(1), translation(2),
                               dot(psi, c3),   dot(psi, c4),   dot(psi, c5)};
        for (std::size_t k = 0; k < 6; ++k)
            fPart->data[k * M + j] = row[k];
    }
}

MBS_RiBo_FleBo_FixJoint_CqT_1::MBS_RiBo_FleBo_FixJoint_CqT_1(const MBS_RiBo_FleBo_FixJoint& owner)
    : MBS_RiBo_FleBo_FixJoint_Block(owner, 0, true) {
    setTransPart(1.0);
}

// (2)
void MBS_RiBo_FleBo_FixJoint_CqT_1::update(double, const P* q, const P*, const P*) {
    const auto& c = joint->shared();
    setRotPart(J(joint->eulerParameters(0, q), joint->u1), transposeTimes(c.Dofy1, c.A2Xz2),
               transposeTimes(c.Dofx1, c.A2Xz2), transposeTimes(c.Dofx1, c.A2Xy2));
}

MBS_RiBo_FleBo_FixJoint_CqT_2::MBS_RiBo_FleBo_FixJoint_CqT_2(const MBS_RiBo_FleBo_FixJoint& owner)
    : MBS_RiBo_FleBo_FixJoint_Block(owner, 1, true) {
    setTransPart(-1.0);
}

// (3)
void MBS_RiBo_FleBo_FixJoint_CqT_2::update(double, const P* q, const P*, const P*) {
    const auto& c = joint->shared();
    const Mat3& A2 = joint->rotationOfBody(1);
    setRotPart(-J(joint->eulerParameters(1, q), joint->deformedLocalPoint), transposeTimes(c.DofXz2, c.A1y1),
               transposeTimes(c.DofXz2, c.A1x1), transposeTimes(c.DofXy2, c.A1x1));
    const Vec3 y1In2 = transposeTimes(A2, c.A1y1), x1In2 = transposeTimes(A2, c.A1x1);
    setFlexPart(-A2, cross(joint->z2, y1In2), cross(joint->z2, x1In2), cross(joint->y2, x1In2));
}

MBS_RiBo_FleBo_FixJoint_CqTdT_1::MBS_RiBo_FleBo_FixJoint_CqTdT_1(const MBS_RiBo_FleBo_FixJoint& owner)
    : MBS_RiBo_FleBo_FixJoint_Block(owner, 0, false) {}

// (4)
void MBS_RiBo_FleBo_FixJoint_CqTdT_1::update(double, const P* q, const P* qd, const P*) {
    const auto& c = joint->shared();
    const Vec4 dp1 = joint->eulerParameters(0, qd);
    const Mat3 dA2 = rateOfA(joint->eulerParameters(1, q), joint->eulerParameters(1, qd));
    const Mat34 rateOfDofx1 = J(dp1, joint->x1), rateOfDofy1 = J(dp1, joint->y1);
    const Vec3 dz2 = dA2 * joint->z2, dy2 = dA2 * joint->y2;
    setRotPart(J(dp1, joint->u1), transposeTimes(rateOfDofy1, c.A2Xz2) + transposeTimes(c.Dofy1, dz2),
               transposeTimes(rateOfDofx1, c.A2Xz2) + transposeTimes(c.Dofx1, dz2),
               transposeTimes(rateOfDofx1, c.A2Xy2) + transposeTimes(c.Dofx1, dy2));
}

MBS_RiBo_FleBo_FixJoint_CqTdT_2::MBS_RiBo_FleBo_FixJoint_CqTdT_2(const MBS_RiBo_FleBo_FixJoint& owner)
    : MBS_RiBo_FleBo_FixJoint_Block(owner, 1, false) {}

// (4)
void MBS_RiBo_FleBo_FixJoint_CqTdT_2::update(double, const P* q, const P* qd, const P*) {
    const auto& c = joint->shared();
    const Vec4 dp2 = joint->eulerParameters(1, qd);
    const Mat3 dA1 = rateOfA(joint->eulerParameters(0, q), joint->eulerParameters(0, qd));
    const Mat3 &A2 = joint->rotationOfBody(1), dA2 = rateOfA(joint->eulerParameters(1, q), dp2);
    const Vec3 dx1 = dA1 * joint->x1, dy1 = dA1 * joint->y1;
    const Mat34 rateOfDofy2 = J(dp2, joint->y2), rateOfDofz2 = J(dp2, joint->z2);
    setRotPart(-J(dp2, joint->u0), transposeTimes(rateOfDofz2, c.A1y1) + transposeTimes(c.DofXz2, dy1),
               transposeTimes(rateOfDofz2, c.A1x1) + transposeTimes(c.DofXz2, dx1),
               transposeTimes(rateOfDofy2, c.A1x1) + transposeTimes(c.DofXy2, dx1));
    const Vec3 y1In2 = transposeTimes(dA2, c.A1y1) + transposeTimes(A2, dy1);
    const Vec3 x1In2 = transposeTimes(dA2, c.A1x1) + transposeTimes(A2, dx1);
    setFlexPart(-dA2, cross(joint->z2, y1In2), cross(joint->z2, x1In2), cross(joint->y2, x1In2));
}

} // namespace velmora
