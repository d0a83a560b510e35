#pragma once

#include "velmora/matrix/FixedSize.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace velmora {

class IO_DataModelBlock;
class MBS_Body;
class MBS_FunctionExpression;
class MBS_GeneralBodyBodyMatrix;
class MBS_General_CqT;
class MBS_History;
class MBS_Measure;
class MBS_Model;
class MBS_ModelLookUp;
class MBS_ModelPhysicalDofVector;

/// The function of time g that a motion prescribes to its measure: an expression f and, before the end T of
/// the start phase, a polynomial that leads from the measure's present value m0, at rest, to f. With s = t /
/// T
///
///     P(t) = m0 + c4 s^5 + c5 s^6 + c6 s^7,    P(T) = f(T), P'(T) = f'(T), P''(T) = f''(T);
///
/// at t = 0 its first four derivatives vanish. g = P for t < T, otherwise f.
class TimeMotion {
  public:
    /// What the block of a motion holds. Read errors stand on the block.
    struct Keys {
        /// Reads "PointOfApplication_Body1" (3), for two bodies "PointOfApplication_Body2" (3), "Measure" and
        /// "MotionExpression" (texts), and the optional "ActivationPeriod" (seconds, default 0.1).
        Keys(IO_DataModelBlock& block, bool isOfTwoBodies);
        Vec3 point1, point2; ///< global frame, initial configuration
        std::string measure, expression;
        double activationPeriod = 0.1;
    };
    /// What a motion of some class may be driven by.
    struct Rules {
        std::span<const char* const> measureClasses;
        std::span<MBS_Body* const> bodies; ///< those that the measure must be on, in their order
        const char* wrongBodies;           ///< message if it isn't
    };

    TimeMotion();
    ~TimeMotion();

    /// Finds the measure, compiles the expression and computes the polynomial; what is wrong, or nothing.
    std::string set(const Keys& keys, const Rules& rules, MBS_Model* model, const MBS_ModelLookUp& lookUp);
    /// Computes the polynomial from the present value of the measure.
    void resetStartPolynomial();
    void exchangeHistory(MBS_History& history);

    double value(double t);        ///< g
    double rate(double t);         ///< g'
    double acceleration(double t); ///< g''

    double startValue = 0.0; ///< m0
    double c4 = 0.0, c5 = 0.0, c6 = 0.0;
    double activationPeriod = 0.0;        ///< T
    MBS_Measure* motionMeasure = nullptr; ///< not owned
    std::unique_ptr<MBS_FunctionExpression> motionExpression;
};

/// Row of a motion's measure for one body, as a CqT or CqTdT object of the motion takes it.
class MeasureRow {
  public:
    using P = MBS_ModelPhysicalDofVector;

    MeasureRow(MBS_Measure& drivingMeasure, const MBS_Body& measuredBody);
    /// dm/dq into the parts of `target`.
    void writeRow(double t, const P* q, const P* qd, const P* qdd, MBS_General_CqT& target);
    /// d(dm/dt)/dq into the parts of `target`, after an update of the measure, which an angle calls for.
    void writeRateRow(double t, const P* q, const P* qd, const P* qdd, MBS_General_CqT& target);

  private:
    void copyTo(MBS_General_CqT& target) const;

    MBS_Measure* measure; // not owned
    unsigned bodyIndex;
    std::vector<double> row; // work space
};

/// Makes a general matrix of zeros in each place that the bodies allow: a measure fills what it needs.
void makeAllPlaces(MBS_GeneralBodyBodyMatrix& matrix);

} // namespace velmora
