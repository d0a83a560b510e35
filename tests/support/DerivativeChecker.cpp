#include "tests/support/DerivativeChecker.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>

namespace velmora::test {

namespace {

constexpr double step = 1.3e-6;

void fill(MBM_DenseVector& v, std::mt19937& random) {
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    for (unsigned i = 0; i < v.size; ++i)
        v.data[i] = number(random);
}

Table transposed(const Table& m) {
    Table t(m.cols, m.rows);
    for (unsigned i = 0; i < m.rows; ++i)
        for (unsigned j = 0; j < m.cols; ++j)
            t(j, i) = m(i, j);
    return t;
}

double largest(const Table& m) {
    double result = 0.0;
    for (const double x : m.data)
        result = std::max(result, std::abs(x));
    return result;
}

std::vector<double> copyOf(const MBM_DenseVector* v) {
    return v ? std::vector<double>(v->data, v->data + v->size) : std::vector<double>();
}

// Sets one half of the multipliers to zero, so that inner and external constraints are told apart.
MBS_ModelConstraintDofVector onlyHalf(const MBS_ModelConstraintDofVector& lambda, bool inner) {
    MBS_ModelConstraintDofVector half(lambda);
    MBM_DenseSubVector* other = inner ? half.externalConstraints.get() : half.innerConstraints.get();
    if (other)
        std::fill_n(other->data, other->size, 0.0);
    return half;
}

} // namespace

State randomState(MBS_Model& model, std::mt19937& random) {
    State s(model);
    for (MBM_DenseVector* v :
         {s.q.dofVector.get(), s.qd.dofVector.get(), s.qdd.dofVector.get(), s.lambda.dofVector.get()})
        if (v)
            fill(*v, random);
    std::uniform_real_distribution<double> norm(0.9, 1.1);
    for (const auto& p : s.q.rotDof) {
        const double length =
            std::hypot(std::hypot(p->data[0], p->data[1]), std::hypot(p->data[2], p->data[3]));
        const double factor = norm(random) / length;
        std::for_each_n(p->data, 4, [&](double& e) { e *= factor; });
    }
    return s;
}

DerivativeChecker::DerivativeChecker(MBS_Model& checkedModel, std::vector<KnownDeviation> deviations)
    : model(checkedModel),
      knownDeviations(std::move(deviations)) {}

// One full evaluation in the order that a solver uses, so that every block is fresh.
void DerivativeChecker::evaluate(State& s) {
    MBS_ModelConstraintDofVector residual(&model);
    MBS_ModelPhysicalDofVector forces(&model);
    model.updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(s.t, &s.q, &s.qd, &s.qdd,
                                                                          &residual);
    model.getExternalForces(s.t, &s.q, &s.qd, &s.qdd, &forces);
    model.updateMatricesForJacobian(s.t, &s.q, &s.qd, &s.qdd, &s.lambda);
}

Table DerivativeChecker::analytic(unsigned code, State& s) {
    if (code == KinematicSolverMatrix) {
        MBS_ModelPhysicalDofVector out(&model);
        MBS_ModelConstraintDofVector residual(&model);
        model.updateForKinematicSolverAndComputeBbar(&s.q, &out, &residual);
    } else {
        evaluate(s);
    }
    const std::vector<unsigned> types{code}, zero{0};
    const std::vector<double> weights{1.0};
    const std::unique_ptr<MBS_GlobalModelMatrix> matrix(
        model.createModelRelatedMatrix(1, 1, &types, &zero, &zero, &weights, false));
    matrix->update();
    const MBM_SparseMat_CSR3& sparse = *matrix->getPointerToSparseJacobian();
    Table table(sparse.rows, sparse.cols);
    for (unsigned i = 0; i < table.rows; ++i)
        for (unsigned j = 0; j < table.cols; ++j)
            table(i, j) = sparse.getValue(i, j);
    return table;
}

DerivativeChecker::Vector DerivativeChecker::valueOf(unsigned code, State& s) {
    MBS_ModelPhysicalDofVector out(&model);
    MBS_ModelConstraintDofVector residual(&model);
    if (code == KinematicSolverMatrix) {
        // B-bar pulls against the matrix: with scales of 1 the matrix is the derivative of q - B-bar.
        model.updateForKinematicSolverAndComputeBbar(&s.q, &out, &residual);
        Vector value = copyOf(s.q.dofVector.get());
        for (unsigned i = 0; i < value.size(); ++i)
            value[i] -= out.dofVector->data[i];
        return value;
    }
    model.updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(s.t, &s.q, &s.qd, &s.qdd,
                                                                          &residual);
    const auto inner = onlyHalf(s.lambda, true), external = onlyHalf(s.lambda, false);
    switch (code) {
    case MassMatrix:
    case InertiaForce_q:
        model.getAccInertiaForces(&s.qdd, &out);
        break;
    case VelInertiaForce_q:
    case VelInertiaForce_qd:
        model.getVelInertiaForces(&s.q, &s.qd, &out);
        break;
    case InnerConstraintForce_q:
        model.getConstraintForces(&inner, &out);
        break;
    case ElasticForce_q:
        model.getElasticForces(&s.q, &out);
        break;
    case DampingForce_qd:
        model.getDampingForces(&s.qd, &out);
        break;
    case ExternalForce_q:
    case ExternalForce_qd:
        model.getExternalForces(s.t, &s.q, &s.qd, &s.qdd, &out);
        break;
    case ExternalConstraintForce_q:
        model.getConstraintForces(&external, &out);
        break;
    default:
        return copyOf(residual.dofVector.get()); // constraint Jacobians
    }
    return copyOf(out.dofVector.get());
}

Table DerivativeChecker::differenceBy(MBM_DenseVector& variable, unsigned code, State& s) {
    const unsigned numRows = static_cast<unsigned>(valueOf(code, s).size());
    Table table(numRows, variable.size);
    for (unsigned j = 0; j < variable.size; ++j) {
        const double x = variable.data[j];
        variable.data[j] = x + step;
        const Vector plus = valueOf(code, s);
        variable.data[j] = x - step;
        const Vector minus = valueOf(code, s);
        variable.data[j] = x;
        for (unsigned i = 0; i < numRows; ++i)
            table(i, j) = (plus[i] - minus[i]) / (2 * step);
    }
    return table;
}

// Rate of Cq' along the motion: q moves with qd, and time with it.
Table DerivativeChecker::rateOfJacobian(unsigned code, State& s) {
    const auto jacobianAt = [&](double h) {
        State moved(s);
        moved.t = s.t + h;
        for (unsigned i = 0; i < s.q.getNumOfDof(); ++i)
            moved.q.dofVector->data[i] = s.q.dofVector->data[i] + h * s.qd.dofVector->data[i];
        return analytic(code - 1, moved);
    };
    Table plus = jacobianAt(step);
    const Table minus = jacobianAt(-step);
    for (std::size_t k = 0; k < plus.data.size(); ++k)
        plus.data[k] = (plus.data[k] - minus.data[k]) / (2 * step);
    return plus;
}

Table DerivativeChecker::difference(unsigned code, State& s) {
    switch (code) {
    case MassMatrix:
        return differenceBy(*s.qdd.dofVector, code, s);
    case VelInertiaForce_qd:
    case DampingForce_qd:
    case ExternalForce_qd:
        return differenceBy(*s.qd.dofVector, code, s);
    case ConstraintJacobianT:
        return transposed(differenceBy(*s.q.dofVector, code, s));
    case ConstraintJacobianTDot:
    case ConstraintJacobianDot:
        return rateOfJacobian(code, s);
    default:
        return differenceBy(*s.q.dofVector, code, s);
    }
}

std::vector<std::string> DerivativeChecker::labels(bool isConstraint) const {
    std::vector<std::string> result;
    const auto add = [&](unsigned count, const std::string& label) {
        result.insert(result.end(), count, label);
    };
    for (unsigned b = 0; b < model.getNumOfBodies(); ++b) {
        const std::string body = "body " + std::to_string(b);
        if (isConstraint) {
            add(model.getNumOfInnerConstraintDofOfBody(b), body + " norm");
            continue;
        }
        add(model.getNumOfTransDofOfBody(b), body + " trans");
        add(model.getNumOfRotDofOfBody(b), body + " rot");
        add(model.getNumOfFlexDofOfBody(b), body + " flex");
    }
    for (unsigned k = 0; isConstraint && k < model.getNumOfExternalConstraints(); ++k)
        add(model.getNumOfConstraintDofOfConstraint(k), "constraint " + std::to_string(k));
    return result;
}

void DerivativeChecker::compare(unsigned code, const Table& a, const Table& d,
                                std::vector<std::string>& messages) const {
    if (a.rows != d.rows || a.cols != d.cols) {
        messages.push_back("code " + std::to_string(code) + ": sizes differ");
        return;
    }
    struct Block {
        unsigned numNonZero = 0, numBitEqual = 0;
        double error = 0.0, worstAnalytic = 0.0, worstDifference = 0.0;
    };
    const bool constraintRows = code >= ConstraintJacobian;
    const bool constraintCols = code >= ConstraintJacobianT && !constraintRows;
    const auto rowLabels = labels(constraintRows), colLabels = labels(constraintCols);
    std::map<std::pair<std::string, std::string>, Block> blocks;
    for (unsigned i = 0; i < a.rows; ++i)
        for (unsigned j = 0; j < a.cols; ++j) {
            Block& block = blocks[{rowLabels[i], colLabels[j]}];
            block.numNonZero += a(i, j) != 0.0;
            block.numBitEqual += a(i, j) != 0.0 && a(i, j) == d(i, j);
            const double error = std::abs(a(i, j) - d(i, j));
            if (!(error <= block.error)) {
                block.error = error;
                block.worstAnalytic = a(i, j);
                block.worstDifference = d(i, j);
            }
        }
    const double bound = tolerance * std::max(1.0, largest(d));
    for (const auto& entry : blocks) {
        const auto& where = entry.first;
        const Block& block = entry.second;
        const std::string name =
            "code " + std::to_string(code) + ", rows " + where.first + ", columns " + where.second;
        const bool isKnown = std::ranges::any_of(knownDeviations, [&](const KnownDeviation& k) {
            return k.code == code && k.rowLabel == where.first && k.colLabel == where.second;
        });
        if (!(block.error <= bound) && !isKnown)
            messages.push_back(name + ": analytic " + std::to_string(block.worstAnalytic) + ", difference " +
                               std::to_string(block.worstDifference));
        if (block.numNonZero >= 4 && block.numBitEqual == block.numNonZero)
            messages.push_back(name + ": equals the difference bit by bit");
    }
}

std::vector<std::string> DerivativeChecker::check(unsigned code, Expected expected, unsigned numStates) {
    std::vector<std::string> messages;
    for (unsigned n = 0; n < numStates; ++n) {
        State s = randomState(model, random);
        const Table a = analytic(code, s);
        const bool isZero = largest(a) == 0.0;
        if (isZero != (expected == Expected::Zero))
            messages.push_back("code " + std::to_string(code) + (isZero ? " vanishes" : " doesn't vanish"));
        compare(code, a, difference(code, s), messages);
    }
    return messages;
}

std::vector<std::string> DerivativeChecker::checkTransposedProducts() {
    using P = MBS_ModelPhysicalDofVector;
    struct Product {
        const char* name;
        std::vector<unsigned> codes;
        void (MBS_Model::*operation)(const P*, P*);
    };
    const Product products[] = {
        {"getMqddDqTimesW", {InertiaForce_q}, &MBS_Model::getMqddDqTimesW},
        {"getVelInertiaForcesDqTimesW", {VelInertiaForce_q}, &MBS_Model::getVelInertiaForcesDqTimesW},
        {"getExternalForcesDqTimesW", {ExternalForce_q}, &MBS_Model::getExternalForcesDqTimesW},
        {"getConstraintForceDqTimesW",
         {InnerConstraintForce_q, ExternalConstraintForce_q},
         &MBS_Model::getConstraintForceDqTimesW}};
    std::vector<std::string> messages;
    State s = randomState(model, random);
    P w(&model), out(&model);
    fill(*w.dofVector, random);
    for (const Product& product : products) {
        Vector expected(w.getNumOfDof(), 0.0);
        for (const unsigned code : product.codes) {
            const Table m = analytic(code, s);
            for (unsigned i = 0; i < m.rows; ++i)
                for (unsigned j = 0; j < m.cols; ++j)
                    expected[j] += m(i, j) * w.dofVector->data[i];
        }
        std::fill_n(out.dofVector->data, out.getNumOfDof(), 1e30); // what was there must be cleared
        (model.*product.operation)(&w, &out);
        for (unsigned j = 0; j < expected.size(); ++j)
            if (!(std::abs(out.dofVector->data[j] - expected[j]) <= 1e-12 * (1.0 + std::abs(expected[j]))))
                messages.push_back(std::string(product.name) + ", entry " + std::to_string(j) + ": " +
                                   std::to_string(out.dofVector->data[j]) + " in place of " +
                                   std::to_string(expected[j]));
    }
    return messages;
}

} // namespace velmora::test
