// Notation: d = L1 - L2, n = d / |d|, P = dn/dd = (1 - n n') / |d|, w = v1 - v2; s_i = 1 for body 1 and -1
// for body 2; J_i = J(e_i; u_i), K_i = [1 | J_i].
//
// Distance:
// (1) m = |d| - offset
// (2) dm/dq_i = s_i [n, J_i' n]
// (3) m' = n . w: dm'/dq_i = s_i [P w, J_i' P w + J(e_i'; u_i)' n]
// (4) d(lambda dm/dq_i')/dq_j = lambda s_i s_j K_i' P K_j, and lambda s_i E(n; u_i) in (rot, rot) for i = j
// Rate:
// (5) m = n . w
// (6) dm/dq_i as (3)
// (7) dm/dqd_i as (2)

#include "velmora/measures/MBS_RiBoRiBoMeasure_Diff_Global.h"

#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_History.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

namespace {

constexpr double smallestDistance = 1e-10;        // below it two points coincide
constexpr double smallestDirectedDistance = 1e-6; // below it the rate keeps the last direction

} // namespace

MBS_RiBoRiBoMeasure_Diff_GlobalDistance::MBS_RiBoRiBoMeasure_Diff_GlobalDistance(
    IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure_Difference(block, owner, lookUp) {
    if (isErrorOccured() || !readPoints(*block))
        return;
    useInitialValueAsOffset = readFlag(*block, "UseInitialValueAsOffset");
    if (reportBlockErrors(*block))
        return;
    distance = norm(measureLocation1 - measureLocation2);
    (useInitialValueAsOffset ? offset : measureValue) = distance;
}

MBS_RiBoRiBoMeasure_Diff_GlobalDistance::Line
MBS_RiBoRiBoMeasure_Diff_GlobalDistance::lineOf(const P* q) const {
    const Vec3 d = pointOf(0, q) - pointOf(1, q);
    const double length = norm(d);
    if (length < smallestDistance)
        return {};
    return {(1.0 / length) * d, 1.0 / length};
}

// (1)
void MBS_RiBoRiBoMeasure_Diff_GlobalDistance::updateMeasure(double, const P* q, const P*, const P*) {
    distance = norm(pointOf(0, q) - pointOf(1, q));
    measureValue = distance - offset;
}

// (2)
void MBS_RiBoRiBoMeasure_Diff_GlobalDistance::getMeasure_q(double, const P* q, const P*, const P*, const C*,
                                                           unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    const Vec3 n = signOf(*i) * lineOf(q).n;
    setRow(row, n, transposeTimes(pointJ(*i, q), n));
}

// (3)
void MBS_RiBoRiBoMeasure_Diff_GlobalDistance::getMeasureDot_q(double, const P* q, const P* qd, const P*,
                                                              const C*, unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    const Line line = lineOf(q);
    const Vec3 turn = signOf(*i) * line.turn(velocityOf(0, q, qd) - velocityOf(1, q, qd));
    setRow(row, turn,
           transposeTimes(pointJ(*i, q), turn) + signOf(*i) * transposeTimes(pointJ(*i, qd), line.n));
}

// (4)
void MBS_RiBoRiBoMeasure_Diff_GlobalDistance::getMeasureLe_q(double, const P* q, const P*, const P*,
                                                             const C* L, unsigned constraint,
                                                             MBS_GeneralBodyBodyMatrix& block,
                                                             unsigned rowBody, unsigned colBody) {
    const double lambda = *L->equationsOfConstraint(constraint);
    const Body i = bodyOf(rowBody), j = bodyOf(colBody);
    const Line line = lineOf(q);
    Mat3 tt;
    for (unsigned c : {0u, 1u, 2u})
        ((lambda * signOf(i) * signOf(j)) * line.turn(unitVector(c))).to(&tt.data[3 * c]);
    const Mat34 tr = tt * pointJ(j, q);
    const Mat34 Ji = pointJ(i, q);
    Mat4 rr = transposeTimes(Ji, tr);
    if (i == j)
        rr += (lambda * signOf(i)) * E(line.n, localPoint(i));
    tt.to(block.block[Trans][Trans]->data);
    tr.to(block.block[Trans][Rot]->data);
    transposeTimes(Ji, tt).to(block.block[Rot][Trans]->data);
    rr.to(block.block[Rot][Rot]->data);
}

MBS_RiBoRiBoMeasure_Diff_GlobalVel::MBS_RiBoRiBoMeasure_Diff_GlobalVel(IO_DataModelBlock* block,
                                                                       MBS_Model* owner,
                                                                       const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure_Difference(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    measureOrder = 1;
    readPoints(*block);
}

void MBS_RiBoRiBoMeasure_Diff_GlobalVel::updateDirection(const P* q) {
    const Vec3 d = pointOf(0, q) - pointOf(1, q);
    distance = norm(d);
    if (distance >= smallestDirectedDistance)
        direction = (1.0 / distance) * d;
}

// (5)
void MBS_RiBoRiBoMeasure_Diff_GlobalVel::updateMeasure(double, const P* q, const P* qd, const P*) {
    updateDirection(q);
    measureValue = dot(direction, velocityOf(0, q, qd) - velocityOf(1, q, qd));
}

// (6)
void MBS_RiBoRiBoMeasure_Diff_GlobalVel::getMeasure_q(double, const P* q, const P* qd, const P*, const C*,
                                                      unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    updateDirection(q);
    const Vec3 w = velocityOf(0, q, qd) - velocityOf(1, q, qd);
    Vec3 turn;
    if (distance >= smallestDirectedDistance)
        turn = (signOf(*i) / distance) * (w - dot(direction, w) * direction);
    setRow(row, turn,
           transposeTimes(pointJ(*i, q), turn) + signOf(*i) * transposeTimes(pointJ(*i, qd), direction));
}

// (7)
void MBS_RiBoRiBoMeasure_Diff_GlobalVel::getMeasure_qd(double, const P* q, const P*, const P*, const C*,
                                                       unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    updateDirection(q);
    const Vec3 n = signOf(*i) * direction;
    setRow(row, n, transposeTimes(pointJ(*i, q), n));
}

void MBS_RiBoRiBoMeasure_Diff_GlobalVel::exchangeHistory(MBS_History& history) {
    history.exchange(direction.data);
}

} // namespace velmora
