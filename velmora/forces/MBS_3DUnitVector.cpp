#include "velmora/forces/MBS_3DUnitVector.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/LoadPoints.h"
#include "velmora/model/MBS_ModelDofVector.h"

// Notation: r, p place and Euler parameters of a body, A(p) its rotation, u a point and l a direction in the
// body frame.
//
// (1) e = A l                de/dp = J(p, l)
// (2) e = d / |d|            de/dq = N dd/dq,  N = I / |d| - d d' / |d|^3
// (3) d = r + A(p) u         dd/dr = I,  dd/dp = J(p, u)

namespace velmora {

namespace {

using P = MBS_ModelPhysicalDofVector;
using Mat37 = Mat<3, 7>;

constexpr double groundDistanceLimit = 1e-10, bodyDistanceLimit = 1e-6;

// (3)
Vec3 pointOf(const P* q, unsigned body, const Vec3& u) {
    const double* x = q->bodyData(body);
    return Vec3::from(x) + A(Vec4::from(x + 3)) * u;
}

bool writeUnit(const Vec3& d, double limit, Vec3& e) {
    const double distance = norm(d);
    if (!(distance > limit))
        return false;
    e = (1.0 / distance) * d;
    return true;
}

// (2), with N applied as (v - e e'v) / |d|
void addDerivative(const P* q, unsigned body, const Vec3& u, const Vec3& d, double sign, Mat37& derivative) {
    const double inverse = 1.0 / norm(d);
    const Vec3 e = inverse * d;
    const Mat34 Jr = J(Vec4::from(q->bodyData(body) + 3), u);
    const Mat<1, 4> along = transposeTimes(e, Jr);
    for (int i = 0; i < 3; ++i) {
        derivative(i, i) += sign * inverse;
        for (int j = 0; j < 3; ++j)
            derivative(i, j) -= sign * inverse * e(i) * e(j);
        for (int j = 0; j < 4; ++j)
            derivative(i, 3 + j) += sign * inverse * (Jr(i, j) - e(i) * along(j));
    }
}

} // namespace

bool MBS_3DUnitVector_SpaceFixed::getUnitVector(const P*, const P*, Vec3& e) const {
    if (isUnit())
        e = direction;
    return isUnit();
}

MBS_3DUnitVector_BodyFixed::MBS_3DUnitVector_BodyFixed(const Vec3& given, MBS_Body* body)
    : MBS_3DUnitVector(given),
      localDirection(toLocalAxis(*body, given)) {
    bodies = {body};
}

// (1)
bool MBS_3DUnitVector_BodyFixed::getUnitVector(const P*, const P*, Vec3& e) const {
    if (isUnit())
        e = bodies[0]->commons->A * localDirection;
    return isUnit();
}

void MBS_3DUnitVector_BodyFixed::getUnitVector_q(const P* q, const P*, unsigned bodyIndex,
                                                 Mat37& derivative) const {
    derivative = {};
    if (bodyIndex == bodies[0]->bodyIndex && isUnit())
        J(Vec4::from(q->bodyData(bodyIndex) + 3), localDirection).to(&derivative(0, 3));
}

MBS_3DUnitVector_GroundBody::MBS_3DUnitVector_GroundBody(const Vec3& fixedPoint, const Vec3& bodyPoint,
                                                         MBS_Body* body)
    : groundPoint(fixedPoint),
      localPoint(toLocalPoint(*body, bodyPoint)) {
    bodies = {body};
}

Vec3 MBS_3DUnitVector_GroundBody::pointDifference(const P* q) const {
    return pointOf(q, bodies[0]->bodyIndex, localPoint) - groundPoint;
}

bool MBS_3DUnitVector_GroundBody::getUnitVector(const P* q, const P*, Vec3& e) const {
    return writeUnit(pointDifference(q), groundDistanceLimit, e);
}

void MBS_3DUnitVector_GroundBody::getUnitVector_q(const P* q, const P*, unsigned bodyIndex,
                                                  Mat37& derivative) const {
    derivative = {};
    if (bodyIndex != bodies[0]->bodyIndex)
        return;
    const Vec3 d = pointDifference(q);
    if (norm(d) > groundDistanceLimit)
        addDerivative(q, bodyIndex, localPoint, d, 1.0, derivative);
}

MBS_3DUnitVector_BodyBody::MBS_3DUnitVector_BodyBody(const Vec3& point1, MBS_Body* body1, const Vec3& point2,
                                                     MBS_Body* body2)
    : localPoint1(toLocalPoint(*body1, point1)),
      localPoint2(toLocalPoint(*body2, point2)) {
    bodies = {body1, body2};
}

Vec3 MBS_3DUnitVector_BodyBody::pointDifference(const P* q) const {
    return pointOf(q, bodies[1]->bodyIndex, localPoint2) - pointOf(q, bodies[0]->bodyIndex, localPoint1);
}

bool MBS_3DUnitVector_BodyBody::getUnitVector(const P* q, const P*, Vec3& e) const {
    return writeUnit(pointDifference(q), bodyDistanceLimit, e);
}

// Two points of one body both count.
void MBS_3DUnitVector_BodyBody::getUnitVector_q(const P* q, const P*, unsigned bodyIndex,
                                                Mat37& derivative) const {
    derivative = {};
    const bool isFirst = bodyIndex == bodies[0]->bodyIndex, isSecond = bodyIndex == bodies[1]->bodyIndex;
    if (!isFirst && !isSecond)
        return;
    const Vec3 d = pointDifference(q);
    if (!(norm(d) > bodyDistanceLimit))
        return;
    if (isFirst)
        addDerivative(q, bodyIndex, localPoint1, d, -1.0, derivative);
    if (isSecond)
        addDerivative(q, bodyIndex, localPoint2, d, 1.0, derivative);
}

} // namespace velmora
