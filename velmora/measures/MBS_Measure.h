#pragma once

#include "velmora/matrix/FixedSize.h"
#include "velmora/model/MBS_ModelObject.h"

#include <span>
#include <vector>

namespace velmora {

class MBS_Body;
class MBS_BodyCommons;
class MBS_GeneralBodyBodyMatrix;
class MBS_ModelConstraintDofVector;

/// Root of all measures: named scalars of the state, with their derivatives.
///
/// A derivative row has one entry for each coordinate of a body: 3 translations, 4 Euler parameters, then the
/// modal coordinates. A row for a body that isn't measured is all zero. A measure that doesn't define an
/// operation leaves the row as it is, so that a caller clears it first. Body commons are current at every
/// call, and derivatives belong to the state of the last `updateMeasure`.
class MBS_Measure : public MBS_ModelObject {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    using Row = std::span<double>;

    /// Forwards read errors that stand on the block.
    MBS_Measure(IO_DataModelBlock* block, MBS_Model* owner);
    std::string getClassName() const override { return "MBS_Measure"; }

    /// Computes `measureValue` at the state. A measure of order 0 reads q alone.
    virtual void updateMeasure(double, const P*, const P*, const P*) {}
    /// dm/dq for the coordinates of the body with this index.
    virtual void getMeasure_q(double, const P*, const P*, const P*, const C*, unsigned, Row) {}
    /// dm/dqd.
    virtual void getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned, Row) {}
    /// dm/dqdd.
    virtual void getMeasure_qdd(double, const P*, const P*, const P*, const C*, unsigned, Row) {}
    unsigned getNumOfMeasureValues() const { return numOfMeasureValues; }
    /// d(dm/dt)/dq at constant qd, where dm/dt = dm/dq qd.
    virtual void getMeasureDot_q(double, const P*, const P*, const P*, const C*, unsigned, Row) {}
    /// d(lambda dm/dq')/dq: rows of `rowBody`, columns of `colBody`, with lambda the first multiplier of the
    /// constraint with this index. Measures of one body have only the block (rot, rot), and don't read the
    /// bodies. Places of `block` that aren't written stay as they are.
    virtual void getMeasureLe_q(double, const P*, const P*, const P*, const C*, unsigned,
                                MBS_GeneralBodyBodyMatrix&, unsigned, unsigned) {}
    /// Takes counted turns out of the value. The next update takes its angle over without counting.
    virtual void resetCount() {}

    /// Highest derivative of the state that the value depends on: 0 position, 1 velocity, 2 acceleration.
    unsigned measureOrder = 0;
    double measureValue = 0.0;                        ///< at the last update
    std::vector<MBS_Body*> measureBodies;             ///< not owned
    std::vector<MBS_BodyCommons*> measureBodyCommons; ///< of these bodies, in their order; not owned
    unsigned numOfMeasureValues = 1;

  protected:
    /// Appends a body and its commons.
    void addBody(MBS_Body& body);
    /// Reports the block's text with the message behind it.
    void refuse(const IO_DataModelBlock& block, const std::string& message);
    /// Reads an optional flag; false without it.
    static bool readFlag(IO_DataModelBlock& block, const std::string& key);

    /// Point of the initial configuration in the frame of a body.
    static Vec3 toLocalPoint(const MBS_Body& body, const Vec3& point);
    /// Direction of the initial configuration in the frame of a body.
    static Vec3 toLocalAxis(const MBS_Body& body, const Vec3& axis);
};

/// Unit vector along the axis c = 0, 1, 2.
inline Vec3 unitVector(unsigned c) {
    Vec3 axis;
    axis.data[c] = 1.0;
    return axis;
}

} // namespace velmora
