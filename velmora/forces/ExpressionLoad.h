#pragma once

#include "velmora/forces/MBS_3DUnitVector.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace velmora {

class MBS_FunctionExpression;
class MBS_Measure;
class MBS_Model;
class MBS_ModelConstraintDofVector;
class MBS_ModelLookUp;

/// What all loads of an expression share: the vector F e, with the magnitude F an expression of time,
/// measures and parameters and e a direction, and its derivatives by the coordinates of each body it depends
/// on.
///
/// With m_j the measures of the expression:
///
///     d(F e)/dx = e sum_j dF/dm_j dm_j/dx + F de/dx,    x = q or qd of one body
class ExpressionLoad {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    using Mat37 = Mat<3, 7>;

    /// By what a derivative is taken.
    enum class By { Q, Qd };

    /// One body whose coordinates matter.
    struct Column {
        MBS_Body* body = nullptr;               ///< not owned
        unsigned bodyIndex = 0, numOfDof = 0;   ///< of the body
        bool needsQ = false, needsQd = false;   ///< which blocks it calls for
        unsigned firstBlock = 0;                ///< number of blocks of a row body that stand before it
        unsigned firstPart = 0, endOfParts = 0; ///< those of the measures on this body
    };

    /// `ownBodies` have a column for q in any case. Other columns come from the measures: a measure of order
    /// 0 or 1 calls for q, one of order 1 for qd too.
    ExpressionLoad(MBS_Model* model, const MBS_ModelLookUp& lookUp, const std::string& text,
                   std::span<MBS_Body* const> ownBodies);
    ~ExpressionLoad();

    /// Takes F and e at the state; the measures are current.
    void evaluate(double t, const P* q, const P* qd);
    /// F e of the last evaluation, global frame.
    Vec3 vector() const { return value * currentDirection; }
    /// d(F e)/dq or d(F e)/dqd for a body, at the state of the last evaluation.
    Mat37 derivative(By by, double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                     const Column& column);
    /// d(F e)/dp for the parameter with this label, in any case of letters. False if the expression doesn't
    /// hold it.
    bool parameterDerivative(double t, const P* q, const P* qd, const std::string& label, Vec3& result);
    const std::vector<MBS_Measure*>& measures() const;
    /// Asks for memory that the next evaluation or derivatives read: step 1 for what this object points to,
    /// step 2 for what that points to.
    void fetchAhead(unsigned step, bool isForBlocks) const;

    std::vector<Column> columns;                  ///< in body order
    unsigned numOfBlocks = 0;                     ///< of dQ/dq and dQ/dqd over all columns, for one row body
    std::unique_ptr<MBS_3DUnitVector> unitVector; ///< null until set
    double value = 0.0;                           ///< F of the last evaluation
    Vec3 currentDirection; ///< e of the last evaluation; keeps its value while the direction is refused

  private:
    /// What a measure of the expression contributes to the column of a body.
    struct Part {
        MBS_Body* body;       // not owned
        MBS_Measure* measure; // not owned
        unsigned j;           // of the measure
    };

    void collectColumns(std::span<MBS_Body* const> ownBodies);
    void numberColumns();
    Column& columnFor(MBS_Body* body);

    std::unique_ptr<MBS_FunctionExpression> expression;
    std::vector<Part> parts;                   // in the order of columns
    const double* measureDerivatives;          // dF/dm_j in the expression; null without measures
    std::vector<double> measureRow;            // dm_j/dx, work space for the largest body
    bool areMeasureDerivativesCurrent = false; // dF/dm_j, of the last evaluation
};

} // namespace velmora
