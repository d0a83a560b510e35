#include "driver/HHTSystem.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

namespace velmora::driver {

namespace {

constexpr unsigned translationsPerBody = 3;
constexpr unsigned eulerParametersPerBody = 4;
constexpr double eulerParametersPerAngle = 0.5;

/// Adds the time until its end to a sum.
class Stopwatch {
  public:
    explicit Stopwatch(std::chrono::steady_clock::duration& total)
        : sum(total),
          begin(std::chrono::steady_clock::now()) {}
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;
    ~Stopwatch() { sum += std::chrono::steady_clock::now() - begin; }

  private:
    std::chrono::steady_clock::duration& sum;
    std::chrono::steady_clock::time_point begin;
};

template <typename DofVector>
void setZero(DofVector& vector) {
    if (vector.dofVector)
        std::fill_n(vector.dofVector->data, vector.dofVector->size, 0.0);
}

bool isFinite(const MBM_DenseStandAloneVector& vector) {
    return std::all_of(vector.data, vector.data + vector.size, [](double x) { return std::isfinite(x); });
}

/// One cell of the matrix: what it holds, and its weight as a function of c1, c2 and the typical mass.
struct Contribution {
    MBS_ContributionCode code;
    unsigned row, col;
    double constant, ofC1, ofC2, ofMass;
};

// Forces stand on the right-hand side of the equations of motion and enter with negative weight.
constexpr Contribution contributions[] = {
    {MassMatrix, 0, 0, 1.0, 0.0, 0.0, 0.0},
    {InertiaForce_q, 0, 0, 0.0, 0.0, 1.0, 0.0},
    {VelInertiaForce_q, 0, 0, 0.0, 0.0, -1.0, 0.0},
    {VelInertiaForce_qd, 0, 0, 0.0, -1.0, 0.0, 0.0},
    {InnerConstraintForce_q, 0, 0, 0.0, 0.0, 1.0, 0.0},
    {ElasticForce_q, 0, 0, 0.0, 0.0, 1.0, 0.0},
    {DampingForce_qd, 0, 0, 0.0, 1.0, 0.0, 0.0},
    {ExternalForce_q, 0, 0, 0.0, 0.0, -1.0, 0.0},
    {ExternalForce_qd, 0, 0, 0.0, -1.0, 0.0, 0.0},
    {ExternalConstraintForce_q, 0, 0, 0.0, 0.0, 1.0, 0.0},
    {ConstraintJacobianT, 0, 1, 0.0, 0.0, 0.0, 1.0},
    {ConstraintJacobian, 1, 0, 0.0, 0.0, 0.0, 1.0},
};

} // namespace

HHTState::HHTState(MBS_Model* model) : q(model), qd(model), qdd(model), a(model), lambda(model) {
    setZero(q);
    setZero(qd);
    setZero(qdd);
    setZero(a);
    setZero(lambda);
}

void HHTState::exchange(MBS_History& history) {
    history.exchange(time);
    for (const auto* vector : {&q, &qd, &qdd, &a})
        history.exchange(std::span(vector->dofVector->data, vector->dofVector->size));
    if (lambda.dofVector)
        history.exchange(std::span(lambda.dofVector->data, lambda.dofVector->size));
}

HHTSystem::HHTSystem(MBS_Model* multibodyModel)
    : residual(multibodyModel),
      constraintResidual(multibodyModel),
      elasticForces(multibodyModel),
      dampingForces(multibodyModel),
      externalForces(multibodyModel),
      model(multibodyModel),
      numOfPhysicalDof(residual.getNumOfDof()),
      numOfConstraints(constraintResidual.getNumOfConstraints()),
      velInertiaForces(multibodyModel),
      constraintForces(multibodyModel),
      constraintWork(multibodyModel),
      accelerationTerms(multibodyModel),
      correction(numOfPhysicalDof + numOfConstraints),
      rightHandSide(numOfPhysicalDof + numOfConstraints) {
    setZero(elasticForces);
    setZero(dampingForces);
    for (unsigned body = 0; body < model->getNumOfBodies(); ++body)
        hasFlexibleBodies = hasFlexibleBodies || model->getNumOfFlexDofOfBody(body) > 0;
    measureBodies();
    makeMatrix();
}

void HHTSystem::measureBodies() {
    const Stopwatch watch(kernelTime);
    HHTState state(model);
    model->copyInitialDataIntoPhysicalDofVector(&state.q, &state.qd);
    model->updateMatricesForEquationOfMotion(0.0, &state.q, &state.qd, &state.qdd);
    const unsigned numOfBodies = model->getNumOfBodies();
    bodyMasses.resize(numOfBodies);
    bodyGyrations.assign(numOfBodies, 0.0);
    // The mass matrix is probed with unit accelerations, all bodies at once: m stands at each translation,
    // and the trace of the rotational part is 4 p'p (I1 + I2 + I3).
    for (unsigned i = 0; i < translationsPerBody + eulerParametersPerBody; ++i) {
        setZero(state.qdd);
        for (unsigned body = 0; body < numOfBodies; ++body)
            state.qdd.bodyData(body)[i] = 1.0;
        model->getAccInertiaForces(&state.qdd, &velInertiaForces);
        for (unsigned body = 0; body < numOfBodies; ++body) {
            if (i < translationsPerBody)
                bodyMasses[body] = velInertiaForces.bodyData(body)[i];
            else
                bodyGyrations[body] += 0.25 * velInertiaForces.bodyData(body)[i];
        }
    }
    measureModes(state);
    for (unsigned body = 0; body < numOfBodies; ++body)
        bodyGyrations[body] =
            bodyMasses[body] > 0.0 ? std::sqrt(bodyGyrations[body] / bodyMasses[body]) : 0.0;
    const auto numOfMasses =
        std::count_if(bodyMasses.begin(), bodyMasses.end(), [](double m) { return m > 0.0; });
    const double total = std::accumulate(bodyMasses.begin(), bodyMasses.end(), 0.0);
    if (numOfMasses > 0 && std::isfinite(total))
        typicalMass = total / static_cast<double>(numOfMasses);
}

// Mode by mode, in all bodies at once: modes needn't be orthogonal.
void HHTSystem::measureModes(HHTState& state) {
    modalMasses.assign(numOfPhysicalDof, 0.0);
    unsigned mostModes = 0;
    for (unsigned body = 0; body < model->getNumOfBodies(); ++body)
        mostModes = std::max(mostModes, model->getNumOfFlexDofOfBody(body));
    for (unsigned mode = 0; mode < mostModes; ++mode) {
        const unsigned i = translationsPerBody + eulerParametersPerBody + mode;
        setZero(state.qdd);
        for (unsigned body = 0; body < model->getNumOfBodies(); ++body)
            if (mode < model->getNumOfFlexDofOfBody(body))
                state.qdd.bodyData(body)[i] = 1.0;
        model->getAccInertiaForces(&state.qdd, &velInertiaForces);
        for (unsigned body = 0; body < model->getNumOfBodies(); ++body)
            if (mode < model->getNumOfFlexDofOfBody(body))
                modalMasses[state.qdd.bodyOffset[body] + i] = velInertiaForces.bodyData(body)[i];
    }
}

void HHTSystem::makeMatrix() {
    const Stopwatch watch(kernelTime);
    std::vector<unsigned> codes, rows, cols;
    for (const Contribution& contribution : contributions) {
        codes.push_back(contribution.code);
        rows.push_back(contribution.row);
        cols.push_back(contribution.col);
    }
    weights.assign(codes.size(), 1.0);
    matrix.reset(model->createModelRelatedMatrix(2, 2, &codes, &rows, &cols, &weights, false));
    solver = std::make_unique<SparseSolver>(matrix->getPointerToSparseJacobian());
}

bool HHTSystem::evaluate(const HHTState& state) {
    const Stopwatch watch(kernelTime);
    const auto *q = &state.q, *qd = &state.qd, *qdd = &state.qdd;
    model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(state.time, q, qd, qdd,
                                                                           &constraintResidual);
    model->getAccInertiaForces(qdd, &residual);
    model->getVelInertiaForces(q, qd, &velInertiaForces);
    model->getConstraintForces(&state.lambda, &constraintForces);
    model->getExternalForces(state.time, q, qd, qdd, &externalForces);
    if (hasFlexibleBodies) {
        model->getElasticForces(q, &elasticForces);
        model->getDampingForces(qd, &dampingForces);
    }
    return sumResidual() && isFinite(*constraintResidual.dofVector);
}

bool HHTSystem::sumResidual() {
    double* R = residual.dofVector->data;
    const double *inertia = velInertiaForces.dofVector->data, *joints = constraintForces.dofVector->data,
                 *external = externalForces.dofVector->data, *elastic = elasticForces.dofVector->data,
                 *damping = dampingForces.dofVector->data;
    double zero = 0.0; // unless a value isn't finite
    for (unsigned i = 0; i < numOfPhysicalDof; ++i) {
        R[i] += joints[i] - inertia[i] - external[i];
        zero += 0.0 * R[i];
    }
    for (unsigned i = 0; hasFlexibleBodies && i < numOfPhysicalDof; ++i) {
        R[i] += elastic[i] + damping[i];
        zero += 0.0 * R[i];
    }
    return zero == 0.0;
}

void HHTSystem::refreshJacobian(const HHTState& state, double c1, double c2) {
    const Stopwatch watch(kernelTime);
    model->updateMatricesForJacobian(state.time, &state.q, &state.qd, &state.qdd, &state.lambda);
    std::transform(std::begin(contributions), std::end(contributions), weights.begin(),
                   [&](const Contribution& of) {
                       return of.constant + c1 * of.ofC1 + c2 * of.ofC2 + typicalMass * of.ofMass;
                   });
    matrix->setScalingValues(weights);
    matrix->update();
}

double HHTSystem::measureStiffness(const HHTState& state) {
    const MBM_SparseMat_CSR3& J = *matrix->getPointerToSparseJacobian();
    const auto end = J.rowIndex[numOfPhysicalDof] - 1;
    refreshJacobian(state, 0.0, 0.0);
    std::vector<double> stiffness(J.values, J.values + end);
    refreshJacobian(state, 0.0, 1.0);
    std::transform(J.values, J.values + end, stiffness.begin(), stiffness.begin(), std::minus<>());
    double largest = 0.0;
    for (unsigned body = 0; body < bodyMasses.size(); ++body) {
        const double mass = bodyMasses[body], gyration = bodyGyrations[body];
        for (unsigned i = 0; i < residual.bodyDof[body]->size; ++i) {
            const unsigned row = residual.bodyOffset[body] + i;
            const double inertia = i < translationsPerBody ? mass
                                   : i < translationsPerBody + eulerParametersPerBody
                                       ? 4.0 * mass * gyration * gyration
                                       : modalMasses[row];
            double sum = 0.0;
            for (unsigned k = J.rowIndex[row] - 1; k < J.rowIndex[row + 1] - 1; ++k)
                if (J.colIndices[k] <= numOfPhysicalDof)
                    sum += std::fabs(stiffness[k]);
            if (inertia > 0.0)
                largest = std::max(largest, sum / inertia);
        }
    }
    return largest;
}

bool HHTSystem::refreshMatrix(const HHTState& state, double c1, double c2) {
    refreshJacobian(state, c1, c2);
    return solver->factorise();
}

SparseRows HHTSystem::getConstraintRows() const {
    const auto hasExtent = [](double length) { return length > 0.0 && std::isfinite(length); };
    const double typical = std::accumulate(bodyGyrations.begin(), bodyGyrations.end(), 0.0) /
                           static_cast<double>(bodyGyrations.size());
    std::vector<double> scales(numOfPhysicalDof, 1.0);
    for (std::size_t body = 0; body < bodyGyrations.size(); ++body) {
        const double length = hasExtent(bodyGyrations[body]) ? bodyGyrations[body]
                              : hasExtent(typical)           ? typical
                                                             : 1.0;
        double* scale = scales.data() + residual.bodyOffset[body];
        std::fill_n(scale, translationsPerBody, length);
        std::fill_n(scale + translationsPerBody, eulerParametersPerBody, eulerParametersPerAngle);
    }
    SparseRows rows;
    rows.numOfColumns = numOfPhysicalDof;
    const MBM_SparseMat_CSR3& J = *matrix->getPointerToSparseJacobian();
    for (unsigned row = numOfPhysicalDof; row < numOfPhysicalDof + numOfConstraints; ++row) {
        for (unsigned k = J.rowIndex[row] - 1; k < J.rowIndex[row + 1] - 1; ++k) {
            const unsigned column = J.colIndices[k] - 1;
            rows.columns.push_back(column);
            rows.values.push_back(J.values[k] / typicalMass * scales[column]);
        }
        rows.starts.push_back(static_cast<unsigned>(rows.values.size()));
    }
    return rows;
}

void HHTSystem::leaveOut(const std::vector<unsigned>& equations) {
    leftOut = equations;
    std::vector<unsigned> rows = equations;
    for (unsigned& row : rows)
        row += numOfPhysicalDof;
    solver->leaveOut(rows);
}

void HHTSystem::solve(const double* physicalResidual, const double* constraintPart) {
    for (unsigned i = 0; i < numOfPhysicalDof; ++i)
        rightHandSide[i] = -physicalResidual[i];
    for (unsigned i = 0; i < numOfConstraints; ++i)
        rightHandSide[numOfPhysicalDof + i] = -typicalMass * constraintPart[i];
    solver->solve(rightHandSide.data(), correction.data());
    for (unsigned i = 0; i < numOfConstraints; ++i)
        correction[numOfPhysicalDof + i] *= typicalMass;
}

void HHTSystem::solveForNewtonCorrection(double c2) {
    const double* C = constraintResidual.dofVector->data;
    std::transform(C, C + numOfConstraints, constraintWork.dofVector->data,
                   [c2](double c) { return c / c2; });
    solve(residual.dofVector->data, constraintWork.dofVector->data);
}

void HHTSystem::computeVelocityResidual(const HHTState& state, MBS_ModelConstraintDofVector& out) {
    computeTimeTerms(state, out);
    for (unsigned i = 0; i < numOfConstraints; ++i)
        out.dofVector->data[i] += multiplyConstraintRow(i, state.qd);
}

void HHTSystem::computeDrivenPart(const HHTState& state, const MBS_ModelPhysicalDofVector& x,
                                  MBS_ModelConstraintDofVector& out) {
    computeTimeTerms(state, out);
    for (unsigned i = 0; i < numOfConstraints; ++i)
        if (double& value = out.dofVector->data[i]; value != 0.0)
            value = multiplyConstraintRow(i, x);
}

/// Of Cq times x.
double HHTSystem::multiplyConstraintRow(unsigned i, const MBS_ModelPhysicalDofVector& x) const {
    const MBM_SparseMat_CSR3& J = *matrix->getPointerToSparseJacobian();
    const unsigned row = numOfPhysicalDof + i;
    double sum = 0.0;
    for (unsigned k = J.rowIndex[row] - 1; k < J.rowIndex[row + 1] - 1; ++k)
        sum += J.values[k] / typicalMass * x.dofVector->data[J.colIndices[k] - 1];
    return sum;
}

void HHTSystem::computeTimeTerms(const HHTState& state, MBS_ModelConstraintDofVector& out) {
    const Stopwatch watch(kernelTime);
    model->get_C_t(state.time, &state.q, &state.qd, &state.qdd, &out);
}

void HHTSystem::multiplyByMass(const MBS_ModelPhysicalDofVector& x, MBS_ModelPhysicalDofVector& out) {
    const Stopwatch watch(kernelTime);
    model->getAccInertiaForces(&x, &out);
}

void HHTSystem::computeAccelerationTerms(const HHTState& state, MBS_ModelConstraintDofVector& out) {
    const Stopwatch watch(kernelTime);
    model->getCqdT_Mult_Qd(&state.q, &state.qd, &state.qdd, &out);
    model->get_C_t_order2(state.time, &state.q, &state.qd, &state.qdd, &constraintWork);
    for (unsigned i = 0; i < numOfConstraints; ++i)
        out.dofVector->data[i] += constraintWork.dofVector->data[i];
}

StepResult HHTSystem::solveForAccelerations(HHTState& state) {
    setZero(state.qdd);
    setZero(state.lambda);
    if (!evaluate(state))
        return StepResult::NotFinite;
    if (!refreshMatrix(state, 0.0, 0.0))
        return StepResult::Singular;
    MBS_ModelConstraintDofVector& terms = accelerationTerms;
    computeAccelerationTerms(state, terms);
    solve(residual.dofVector->data, terms.dofVector->data);
    std::copy_n(correction.data(), numOfPhysicalDof, state.qdd.dofVector->data);
    std::copy_n(correction.data() + numOfPhysicalDof, numOfConstraints, state.lambda.dofVector->data);
    return StepResult::Converged;
}

double HHTSystem::measureTypicalLength(const MBS_ModelPhysicalDofVector& q) const {
    double extent = *std::max_element(bodyGyrations.begin(), bodyGyrations.end());
    for (unsigned i = 0; i < translationsPerBody; ++i) {
        double lowest = q.bodyData(0)[i], highest = lowest;
        for (unsigned body = 1; body < bodyGyrations.size(); ++body) {
            lowest = std::min(lowest, q.bodyData(body)[i]);
            highest = std::max(highest, q.bodyData(body)[i]);
        }
        extent = std::max(extent, highest - lowest);
    }
    return extent > 0.0 && std::isfinite(extent) ? extent : 1.0;
}

} // namespace velmora::driver
