#pragma once

#include "velmora/matrix/FixedSize.h"

#include <string>
#include <vector>

namespace velmora {

class MBS_Body;
class MBS_ModelPhysicalDofVector;

/// Direction e of a load, a unit vector in the global frame that the state may turn.
///
/// A direction that can't be told (a given vector whose norm isn't 1, points that coincide) is refused: its
/// value isn't written, and its derivative is zero.
class MBS_3DUnitVector {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using Mat37 = Mat<3, 7>;

    virtual ~MBS_3DUnitVector() = default;
    virtual std::string getClassName() const { return "MBS_3DUnitVector"; }

    /// Writes e; false, and e untouched, if the direction is refused.
    virtual bool getUnitVector(const P*, const P*, Vec3&) const { return true; }
    /// Writes de/dq of the body with this index: columns 0 to 2 for its translations, 3 to 6 for its Euler
    /// parameters.
    virtual void getUnitVector_q(const P*, const P*, unsigned, Mat37& derivative) const { derivative = {}; }
    /// Writes de/dqd, which is zero.
    virtual void getUnitVector_qd(const P*, const P*, unsigned, Mat37& derivative) const { derivative = {}; }

    Vec3 direction;                ///< as given; zero if none is
    double directionNorm = 0.0;    ///< norm of `direction`
    std::vector<MBS_Body*> bodies; ///< that the direction depends on, in order; not owned

  protected:
    MBS_3DUnitVector() = default;
    explicit MBS_3DUnitVector(const Vec3& given) : direction(given), directionNorm(norm(given)) {}
    /// Whether the given direction's norm is 1 within 1e-5. The bound itself is inside, where rounding of the
    /// norm could decide otherwise.
    bool isUnit() const { return std::abs(1.0 - directionNorm) < 1.00001e-5; }
};

/// e = a constant vector.
class MBS_3DUnitVector_SpaceFixed : public MBS_3DUnitVector {
  public:
    /// `given`: global frame.
    explicit MBS_3DUnitVector_SpaceFixed(const Vec3& given) : MBS_3DUnitVector(given) {}
    std::string getClassName() const override { return "MBS_3DUnitVector_SpaceFixed"; }
    bool getUnitVector(const P*, const P*, Vec3& e) const override;
};

/// e = A l, with l fixed in a body.
class MBS_3DUnitVector_BodyFixed : public MBS_3DUnitVector {
  public:
    /// `given`: global frame, at the start.
    MBS_3DUnitVector_BodyFixed(const Vec3& given, MBS_Body* body);
    std::string getClassName() const override { return "MBS_3DUnitVector_BodyFixed"; }
    /// Reads A from the body's commons.
    bool getUnitVector(const P*, const P*, Vec3& e) const override;
    void getUnitVector_q(const P* q, const P*, unsigned bodyIndex, Mat37& derivative) const override;

    Vec3 localDirection; ///< l, body frame
};

/// Line of sight from a ground point to a body point: e = d / |d|, d = r + A u - g. Refused up to a distance
/// of 1e-10.
class MBS_3DUnitVector_GroundBody : public MBS_3DUnitVector {
  public:
    /// Both points in the global frame; `bodyPoint` at the start.
    MBS_3DUnitVector_GroundBody(const Vec3& groundPoint, const Vec3& bodyPoint, MBS_Body* body);
    std::string getClassName() const override { return "MBS_3DUnitVector_GroundBody"; }
    bool getUnitVector(const P* q, const P*, Vec3& e) const override;
    void getUnitVector_q(const P* q, const P*, unsigned bodyIndex, Mat37& derivative) const override;

    Vec3 groundPoint; ///< g, global frame
    Vec3 localPoint;  ///< u, body frame

  private:
    Vec3 pointDifference(const P* q) const;
};

/// Line of sight from a point of body 1 to a point of body 2: e = d / |d|, d = r2 + A2 u2 - r1 - A1 u1.
/// Refused up to a distance of 1e-6.
class MBS_3DUnitVector_BodyBody : public MBS_3DUnitVector {
  public:
    /// Both points in the global frame, at the start.
    MBS_3DUnitVector_BodyBody(const Vec3& point1, MBS_Body* body1, const Vec3& point2, MBS_Body* body2);
    std::string getClassName() const override { return "MBS_3DUnitVector_BodyBody"; }
    bool getUnitVector(const P* q, const P*, Vec3& e) const override;
    void getUnitVector_q(const P* q, const P*, unsigned bodyIndex, Mat37& derivative) const override;

    Vec3 localPoint1; ///< u1, frame of body 1
    Vec3 localPoint2; ///< u2, frame of body 2

  private:
    Vec3 pointDifference(const P* q) const;
};

} // namespace velmora
