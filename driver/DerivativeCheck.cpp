#include "driver/DerivativeCheck.h"

#include "driver/EquationNames.h"
#include "driver/HHTSystem.h"
#include "driver/KnownDeviations.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>

namespace velmora::driver {

namespace {

using Vector = std::vector<double>;

// A central difference errs by rounding over the step and by the square of the step; at 1e-6 both stay below
// a millionth of a row's largest entry. Derivatives of expressions are differences themselves, to about
// 1e-10.
constexpr double step = 1e-6;
constexpr double tolerance = 2e-6;
constexpr double roundings = 8.0;
constexpr double roundingUnit = std::numeric_limits<double>::epsilon();

constexpr double nearby = 0.02;      // of the model's extent and of a radian
constexpr double smallestNorm = 0.9; // of Euler parameters
constexpr double largestNorm = 1.1;
constexpr double times[] = {0.0, 0.37, 0.83};
constexpr unsigned numOfRotDof = 4;

/// By what a vector is derived.
enum class By { Positions, Rates, Accelerations };

/// A kind of derivative that a solver asks for.
struct Kind {
    const char* name;
    unsigned code;
    By by;
};

constexpr Kind kinds[] = {
    {"inertia forces by accelerations", MassMatrix, By::Accelerations},
    {"inertia forces by positions", InertiaForce_q, By::Positions},
    {"velocity inertia forces by positions", VelInertiaForce_q, By::Positions},
    {"velocity inertia forces by rates", VelInertiaForce_qd, By::Rates},
    {"elastic forces by positions", ElasticForce_q, By::Positions},
    {"damping forces by rates", DampingForce_qd, By::Rates},
    {"applied forces by positions", ExternalForce_q, By::Positions},
    {"applied forces by rates", ExternalForce_qd, By::Rates},
    {"forces of norms by positions", InnerConstraintForce_q, By::Positions},
    {"forces of joints by positions", ExternalConstraintForce_q, By::Positions},
    {"constraints by positions", ConstraintJacobian, By::Positions},
    {"constraints by positions, transposed", ConstraintJacobianT, By::Positions},
};

bool isOfConstraints(const Kind& kind) {
    return kind.code == ConstraintJacobian || kind.code == ConstraintJacobianT;
}

/// The entries of a matrix that aren't zero, column after column.
struct Columns {
    std::vector<std::vector<std::pair<unsigned, double>>> entries; // row and value
    Vector largestOfRows;

    Columns(const MBM_SparseMat_CSR3& sparse, bool isTransposed, unsigned numOfRows, unsigned numOfColumns)
        : entries(numOfColumns),
          largestOfRows(numOfRows, 0.0) {
        for (unsigned i = 0; i < sparse.rows; ++i)
            for (unsigned k = sparse.rowIndex[i] - 1; k < sparse.rowIndex[i + 1] - 1; ++k) {
                const unsigned j = sparse.colIndices[k] - 1, row = isTransposed ? j : i;
                // A model without constraints has a matrix of one empty row.
                if (row >= numOfRows)
                    continue;
                entries[isTransposed ? i : j].emplace_back(row, sparse.values[k]);
                largestOfRows[row] = std::max(largestOfRows[row], std::fabs(sparse.values[k]));
            }
    }
};

/// Positions, orientation and modes of a body are blocks of their own.
enum Part : unsigned { Trans = 0, Rot = 3, Flex = 3 + numOfRotDof };

unsigned getPart(const EquationNames::Place& place) {
    if (place.kind != EquationNames::Place::Coordinate)
        return 0;
    return place.index < Rot ? Trans : place.index < Flex ? Rot : Flex;
}

/// The worst entry of a block.
struct Worst {
    double error = -1.0;
    DerivativeEntry entry;
    unsigned row = 0, col = 0;

    void take(const DerivativeEntry& candidate, unsigned candidateRow, unsigned candidateCol) {
        const double candidateError = getRelativeError(candidate);
        if (!(candidateError <= error)) {
            error = candidateError;
            entry = candidate;
            row = candidateRow;
            col = candidateCol;
        }
    }
    bool differs() const { return !(error <= 1.0); }
};

class Checker {
  public:
    Checker(MBS_Model& checkedModel, IO_DataModel& input)
        : model(checkedModel),
          names(&checkedModel, &input),
          deviations(input, names),
          system(&checkedModel),
          state(&checkedModel),
          start(&checkedModel),
          out(&checkedModel),
          residual(&checkedModel) {
        model.copyInitialDataIntoPhysicalDofVector(&start.q, &start.qd);
        extent = system.measureTypicalLength(start.q);
    }

    std::vector<DerivativeRow> run() {
        for (const Kind& kind : kinds) {
            random.seed(1);
            blocks.clear();
            for (const double t : times) {
                moveTo(t);
                compare(kind);
            }
            report(kind);
        }
        return rows;
    }

  private:
    double draw() { return std::uniform_real_distribution<double>(-1.0, 1.0)(random); }
    void moveTo(double t);
    void evaluate();
    Vector valueOf(const Kind& kind);
    void compare(const Kind& kind);
    Vector differenceBy(double& coordinate, const Kind& kind);
    double sizeOfTerms(const Kind& kind);
    void report(const Kind& kind);
    unsigned getFirstOfBlock(unsigned equation) const;
    DerivativeRow makeRow(const Kind& kind, const Worst& worst, std::string block) const;
    std::string nameBlock(unsigned equation) const;
    unsigned equationOf(const Kind& kind, unsigned row) const;

    MBS_Model& model;
    EquationNames names;
    KnownDeviations deviations;
    HHTSystem system;
    HHTState state, start;
    MBS_ModelPhysicalDofVector out;
    MBS_ModelConstraintDofVector residual;
    double extent = 1.0;
    std::mt19937 random;
    std::map<std::pair<unsigned, unsigned>, Worst> blocks; // by first row and column
    std::vector<DerivativeRow> rows;
};

void Checker::moveTo(double t) {
    state = start;
    state.time = t;
    for (unsigned body = 0; body < model.getNumOfBodies(); ++body) {
        const unsigned numOfDof = state.q.bodyDof[body]->size;
        double *q = state.q.bodyData(body), *qd = state.qd.bodyData(body), *qdd = state.qdd.bodyData(body);
        for (unsigned i = 0; i < numOfDof; ++i) {
            const double length = i < 3 ? extent : 1.0;
            q[i] += t > 0.0 ? nearby * length * draw() : 0.0;
            qd[i] += length * draw();
            qdd[i] = length * draw();
        }
        const double norm = std::hypot(std::hypot(q[3], q[4]), std::hypot(q[5], q[6]));
        const double factor = smallestNorm + 0.5 * (largestNorm - smallestNorm) * (1.0 + draw());
        for (unsigned i = 3; i < 3 + numOfRotDof; ++i)
            q[i] *= factor / norm;
    }
    for (unsigned i = 0; i < residual.getNumOfConstraints(); ++i)
        state.lambda.dofVector->data[i] = draw();
}

void Checker::evaluate() {
    model.updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(state.time, &state.q, &state.qd,
                                                                          &state.qdd, &residual);
}

Vector Checker::valueOf(const Kind& kind) {
    evaluate();
    const auto *q = &state.q, *qd = &state.qd, *qdd = &state.qdd;
    MBS_ModelConstraintDofVector part(state.lambda);
    const auto clear = [](MBM_DenseSubVector* view) {
        if (view)
            std::fill_n(view->data, view->size, 0.0);
    };
    switch (kind.code) {
    case MassMatrix:
    case InertiaForce_q:
        model.getAccInertiaForces(qdd, &out);
        break;
    case VelInertiaForce_q:
    case VelInertiaForce_qd:
        model.getVelInertiaForces(q, qd, &out);
        break;
    case ElasticForce_q:
        model.getElasticForces(q, &out);
        break;
    case DampingForce_qd:
        model.getDampingForces(qd, &out);
        break;
    case ExternalForce_q:
    case ExternalForce_qd:
        model.getExternalForces(state.time, q, qd, qdd, &out);
        break;
    case InnerConstraintForce_q:
        clear(part.externalConstraints.get());
        model.getConstraintForces(&part, &out);
        break;
    case ExternalConstraintForce_q:
        clear(part.innerConstraints.get());
        model.getConstraintForces(&part, &out);
        break;
    default:
        return {residual.dofVector->data, residual.dofVector->data + residual.getNumOfConstraints()};
    }
    return {out.dofVector->data, out.dofVector->data + out.getNumOfDof()};
}

Vector Checker::differenceBy(double& coordinate, const Kind& kind) {
    const double middle = coordinate, h = step * std::max(1.0, std::fabs(middle));
    coordinate = middle + h;
    Vector result = valueOf(kind);
    coordinate = middle - h;
    const Vector below = valueOf(kind);
    coordinate = middle;
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = (result[i] - below[i]) / (2.0 * h);
    return result;
}

/// Of what is summed up in the values that are differenced, and may cancel there.
double Checker::sizeOfTerms(const Kind& kind) {
    if (isOfConstraints(kind))
        return extent;
    model.getAccInertiaForces(&state.qdd, &out);
    const double* forces = out.dofVector->data;
    double largest = 0.0;
    for (unsigned i = 0; i < out.getNumOfDof(); ++i)
        largest = std::max(largest, std::fabs(forces[i]));
    return largest;
}

/// Column by column, so that nothing of the size of a full matrix is stored.
void Checker::compare(const Kind& kind) {
    const Vector value = valueOf(kind);
    model.getExternalForces(state.time, &state.q, &state.qd, &state.qdd, &out);
    model.updateMatricesForJacobian(state.time, &state.q, &state.qd, &state.qdd, &state.lambda);
    const std::vector<unsigned> code{kind.code}, zero{0};
    const Vector weight{1.0};
    const std::unique_ptr<MBS_GlobalModelMatrix> matrix(
        model.createModelRelatedMatrix(1, 1, &code, &zero, &zero, &weight, false));
    matrix->update();
    MBM_DenseVector& variable = *(kind.by == By::Positions ? state.q
                                  : kind.by == By::Rates   ? state.qd
                                                           : state.qdd)
                                     .dofVector;
    const double size = sizeOfTerms(kind);
    const Columns columns(*matrix->getPointerToSparseJacobian(), kind.code == ConstraintJacobianT,
                          static_cast<unsigned>(value.size()), variable.size);
    for (unsigned col = 0; col < variable.size; ++col) {
        const Vector difference = differenceBy(variable.data[col], kind);
        Vector analytic(value.size(), 0.0);
        for (const auto& [row, x] : columns.entries[col])
            analytic[row] = x;
        const unsigned firstCol = getFirstOfBlock(col);
        for (unsigned row = 0; row < value.size(); ++row) {
            if (analytic[row] != 0.0 || difference[row] != 0.0)
                blocks[{getFirstOfBlock(equationOf(kind, row)), firstCol}].take(
                    {analytic[row], difference[row], columns.largestOfRows[row],
                     size + std::fabs(value[row])},
                    row, col);
        }
    }
}

unsigned Checker::getFirstOfBlock(unsigned equation) const {
    const EquationNames::Place place = names.locate(equation);
    return equation - place.index + getPart(place);
}

/// "body <link1> rot", "constraint hinge".
std::string Checker::nameBlock(unsigned equation) const {
    const EquationNames::Place place = names.locate(equation);
    if (place.kind == EquationNames::Place::Constraint)
        return "constraint " + names.getOwnerName(equation - system.getNumOfPhysicalDof());
    const std::string body = names.getBodyName(place.owner);
    if (place.kind == EquationNames::Place::Norm)
        return body + " norm";
    const unsigned part = getPart(place);
    return body + (part == Trans ? " trans" : part == Rot ? " rot" : " flex");
}

unsigned Checker::equationOf(const Kind& kind, unsigned row) const {
    return isOfConstraints(kind) ? system.getNumOfPhysicalDof() + row : row;
}

DerivativeRow Checker::makeRow(const Kind& kind, const Worst& worst, std::string block) const {
    if (worst.error < 0.0)
        return {std::move(block), "", 0.0, 0.0, "ok, nothing there"};
    const unsigned equation = equationOf(kind, worst.row);
    const std::string reason =
        worst.differs() ? deviations.findReason(kind.code, names.locate(equation), names.locate(worst.col))
                        : "";
    return {std::move(block), names.getName(equation) + "; " + names.getName(worst.col), worst.entry.analytic,
            worst.entry.difference,
            !worst.differs() ? "ok"
            : reason.empty() ? "DIFFERS"
                             : "meant: " + reason};
}

void Checker::report(const Kind& kind) {
    Worst sound;
    std::vector<DerivativeRow> faults;
    for (const auto& [owners, worst] : blocks) {
        if (worst.differs())
            faults.push_back(
                makeRow(kind, worst,
                        fmt::format("  rows of {}, columns of {}", nameBlock(equationOf(kind, worst.row)),
                                    nameBlock(worst.col))));
        else if (worst.error > sound.error)
            sound = worst;
    }
    rows.push_back(makeRow(kind, sound, kind.name));
    rows.insert(rows.end(), faults.begin(), faults.end());
}

} // namespace

double getRelativeError(const DerivativeEntry& entry) {
    const double error = std::fabs(entry.analytic - entry.difference);
    const double scale = std::max(entry.largestOfRow, std::fabs(entry.difference));
    const double allowed = tolerance * scale + roundings * roundingUnit * entry.sizeOfTerms / step;
    return error / allowed;
}

std::vector<DerivativeRow> checkDerivatives(MBS_Model& model, IO_DataModel& dataModel) {
    return Checker(model, dataModel).run();
}

} // namespace velmora::driver
