// Notation: r_i, e_i = translations and Euler parameters; J_i = J(e_i; u_i); a = A1 c; s = L2 - r1;
// s' = r2' - r1' + J2 e2'.
//
// Difference, with A1' A1 = 1 in its derivatives, so that m = a . s - c . (u1 + offset):
// (1) m = c . (A1' (L2 - L1) - offset)
// (2) dm/dq = [-a, J(e1; c)' s | a, J2' a]
// (3) m' = a . s' + s . J(e1; c) e1', so with h = J(e1; c) e1'
//     dm'/dq = [-h, J(e1; c)' s' + E(s; c) e1' | h, J(e2'; u2)' a + J2' h]
// (4) d(lambda dm/dq')/dq with Jc = lambda J(e1; c); the places (trans, trans) are zero:
//     (1, 1) tr = -Jc, rt = -Jc', rr = lambda E(s; c)     (1, 2) rt = Jc', rr = Jc' J2
//     (2, 1) tr = Jc, rr = J2' Jc                         (2, 2) rr = lambda E(a; u2)
// Velocity, with w = v2 - v1:
// (5) m = a . w
// (6) dm/dq = [0, J(e1; c)' w - J(e1'; u1)' a | 0, J(e2'; u2)' a]
// (7) dm/dqd = [-a, -J1' a | a, J2' a]

#include "velmora/measures/MBS_RiBoRiBoMeasure_Diff_x.h"

#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_RiBoRiBoMeasure_Diff_x::MBS_RiBoRiBoMeasure_Diff_x(IO_DataModelBlock* block, MBS_Model* owner,
                                                       const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure_Difference(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    coordinateIndex = readComponent(*block, "");
    if (isErrorOccured() || !readPoints(*block))
        return;
    useInitialValueAsOffset = readFlag(*block, "UseInitialValueAsOffset");
    if (reportBlockErrors(*block))
        return;
    axis = unitVector(coordinateIndex);
    if (useInitialValueAsOffset)
        offsetVector = measureLocation2 - measureLocation1;
    const Vec3 w = toLocalAxis(*measureBodies[0], measureLocation2 - measureLocation1) - offsetVector;
    measureValue = w.data[coordinateIndex]; // where a motion begins
}

Vec3 MBS_RiBoRiBoMeasure_Diff_x::lever(const P* q) const {
    return pointOf(1, q) - transOf(0, q);
}

// (1)
void MBS_RiBoRiBoMeasure_Diff_x::updateMeasure(double, const P* q, const P*, const P*) {
    const Vec3 w = transposeTimes(rotation(0), pointOf(1, q) - pointOf(0, q)) - offsetVector;
    measureValue = w.data[coordinateIndex];
}

// (2)
void MBS_RiBoRiBoMeasure_Diff_x::getMeasure_q(double, const P* q, const P*, const P*, const C*, unsigned body,
                                              Row row) {
    const auto place = startRow(body, row);
    if (!place)
        return;
    const Vec3 a = rotation(0) * axis;
    if (*place == 0)
        setRow(row, -a, transposeTimes(J(rotOf(0, q), axis), lever(q)));
    else
        setRow(row, a, transposeTimes(pointJ(1, q), a));
}

// (3)
void MBS_RiBoRiBoMeasure_Diff_x::getMeasureDot_q(double, const P* q, const P* qd, const P*, const C*,
                                                 unsigned body, Row row) {
    const auto place = startRow(body, row);
    if (!place)
        return;
    const Mat34 Jc = J(rotOf(0, q), axis), J2 = pointJ(1, q);
    const Vec4 rates = rotOf(0, qd);
    const Vec3 h = Jc * rates;
    if (*place == 0) {
        const Vec3 leverRate = velocityOf(1, q, qd) - transOf(0, qd);
        setRow(row, -h, transposeTimes(Jc, leverRate) + E(lever(q), axis) * rates);
    } else {
        setRow(row, h, transposeTimes(pointJ(1, qd), rotation(0) * axis) + transposeTimes(J2, h));
    }
}

// (4)
void MBS_RiBoRiBoMeasure_Diff_x::getMeasureLe_q(double, const P* q, const P*, const P*, const C* L,
                                                unsigned constraint, MBS_GeneralBodyBodyMatrix& block,
                                                unsigned rowBody, unsigned colBody) {
    const double lambda = *L->equationsOfConstraint(constraint);
    const Mat34 Jc = lambda * J(rotOf(0, q), axis), J2 = pointJ(1, q);
    const Body i = bodyOf(rowBody), j = bodyOf(colBody);
    const double rowSign = -signOf(i), colSign = -signOf(j);
    Mat34 tr;
    Mat43 rt;
    Mat4 rr;
    if (j == 0)
        tr = rowSign * Jc;
    if (i == 0)
        rt = colSign * transpose(Jc);
    if (i == j)
        rr = lambda * (i == 0 ? E(lever(q), axis) : E(rotation(0) * axis, localPoint2));
    else
        rr = i == 0 ? transposeTimes(Jc, J2) : transposeTimes(J2, Jc);
    Mat3().to(block.block[Trans][Trans]->data);
    tr.to(block.block[Trans][Rot]->data);
    rt.to(block.block[Rot][Trans]->data);
    rr.to(block.block[Rot][Rot]->data);
}

MBS_RiBoRiBoMeasure_Vel_x::MBS_RiBoRiBoMeasure_Vel_x(IO_DataModelBlock* block, MBS_Model* owner,
                                                     const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure_Difference(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    measureOrder = 1;
    localAxis = unitVector(readComponent(*block, "ERROR: "));
    if (!isErrorOccured())
        readPoints(*block);
}

// (5)
void MBS_RiBoRiBoMeasure_Vel_x::updateMeasure(double, const P* q, const P* qd, const P*) {
    measureValue = dot(rotation(0) * localAxis, velocityOf(1, q, qd) - velocityOf(0, q, qd));
}

// (6)
void MBS_RiBoRiBoMeasure_Vel_x::getMeasure_q(double, const P* q, const P* qd, const P*, const C*,
                                             unsigned body, Row row) {
    const auto place = startRow(body, row);
    if (!place)
        return;
    const Vec3 a = rotation(0) * localAxis;
    Vec4 rot = -signOf(*place) * transposeTimes(pointJ(*place, qd), a);
    if (*place == 0)
        rot += transposeTimes(J(rotOf(0, q), localAxis), velocityOf(1, q, qd) - velocityOf(0, q, qd));
    setRow(row, Vec3(), rot);
}

// (7)
void MBS_RiBoRiBoMeasure_Vel_x::getMeasure_qd(double, const P* q, const P*, const P*, const C*, unsigned body,
                                              Row row) {
    const auto place = startRow(body, row);
    if (!place)
        return;
    const Vec3 a = -signOf(*place) * (rotation(0) * localAxis);
    setRow(row, a, transposeTimes(pointJ(*place, q), a));
}

} // namespace velmora
