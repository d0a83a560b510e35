// Time per link of a chain of N spherical joints under gravity, share by share: what a Newton iteration asks
// of the kernel, the least that the same numbers cost (ChainFloor.h), and the sparse solver's part.

#include "benchmarks/ChainFloor.h"
#include "driver/HHTSystem.h"

#include <benchmark/benchmark.h>
#include <klu.h>
#include <velmora/velmora.h>

#include <memory>
#include <string>

namespace velmora {
namespace {

using driver::HHTState;
using driver::HHTSystem;
using driver::SparseSolver;

constexpr double length = 0.1, mass = 0.2, c1 = 5e-4, c2 = 2.5e-7;
const Vec3 inertia{{2e-4, 1.7e-4, 1.8e-4}};

std::string vectorText(double x, double y, double z) {
    return std::to_string(x) + ", " + std::to_string(y) + ", " + std::to_string(z);
}

void addLink(IO_DataModel& data, unsigned i) {
    const std::string name = "link" + std::to_string(i);
    IO_DataModelBlock* body = data.addBlock("Body", "Rigid_EulerParameter_PAI", name, name, "");
    body->addKeyValue("Mass", std::to_string(mass));
    body->addKeyValue("Inertia", vectorText(inertia(0), inertia(1), inertia(2)));
    body->addKeyValue("LocationCenterMass", vectorText((i + 0.5) * length, 0, 0));
    body->addKeyValue("OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1");
    body->addKeyValue("InitialVelocityVector", "0, 0, 0");
    body->addKeyValue("InitialOmegaVector", "0, 0, 0");
    const std::string joint = "joint" + std::to_string(i);
    IO_DataModelBlock* block = data.addBlock("Constraint", "Generic", joint, joint, "");
    if (i == 0)
        block->addKeyValue("BodyIDs", name + ", 0");
    else
        block->addKeyValue("BodyIDs", "link" + std::to_string(i - 1) + ", " + name);
    block->addKeyValue("Location", vectorText(i * length, 0, 0));
    for (const char* key : {"dxFixed", "dyFixed", "dzFixed"})
        block->addKeyValue(key, "yes");
}

/// KLU as it comes: one refactorisation and one solve by its own functions, without scaling, its quickest
/// way.
class KluAlone {
  public:
    explicit KluAlone(const MBM_SparseMat_CSR3& matrix)
        : size(static_cast<int>(matrix.rows)),
          values(matrix.values, matrix.values + matrix.rowIndex[matrix.rows] - 1) {
        for (unsigned row = 0; row <= matrix.rows; ++row)
            starts.push_back(static_cast<int>(matrix.rowIndex[row]) - 1);
        for (std::size_t k = 0; k < values.size(); ++k)
            rows.push_back(static_cast<int>(matrix.colIndices[k]) - 1);
        klu_defaults(&common);
        common.btf = 0;
        symbolic = klu_analyze(size, starts.data(), rows.data(), &common);
        numeric = klu_factor(starts.data(), rows.data(), values.data(), symbolic, &common);
        common.scale = -1;
    }
    KluAlone(const KluAlone&) = delete;
    KluAlone& operator=(const KluAlone&) = delete;
    ~KluAlone() {
        klu_free_numeric(&numeric, &common);
        klu_free_symbolic(&symbolic, &common);
    }
    void refactoriseAndSolve(std::vector<double>& x) {
        klu_refactor(starts.data(), rows.data(), values.data(), symbolic, numeric, &common);
        klu_tsolve(symbolic, numeric, size, 1, x.data(), &common);
    }

  private:
    int size;
    std::vector<int> starts, rows;
    std::vector<double> values;
    klu_common common{};
    klu_symbolic* symbolic = nullptr;
    klu_numeric* numeric = nullptr;
};

/// A chain in motion, with everything that a Newton iteration needs.
class Chain {
  public:
    explicit Chain(unsigned numOfLinks)
        : output("", "benchmark"),
          data("benchmark"),
          floor(numOfLinks, mass, inertia, {{length / 2, 0, 0}}, {{-length / 2, 0, 0}}) {
        for (unsigned i = 0; i < numOfLinks; ++i)
            addLink(data, i);
        data.addBlock("Force", "Gravity", "g", "g", "")->addKeyValue("GravityAccVector", "0, 0, -9.81");
        model.reset(MBS_Model::makeModel(&data, &output));
        system = std::make_unique<HHTSystem>(model.get());
        state = std::make_unique<HHTState>(model.get());
        force = std::make_unique<MBS_ModelPhysicalDofVector>(model.get());
        residual = std::make_unique<MBS_ModelConstraintDofVector>(model.get());
        const std::vector<unsigned> types{101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 201, 301},
            rows{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, cols{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0};
        const std::vector<double> weights{1, c2, -c2, -c1, c2, c2, c1, -c2, -c1, c2, mass, mass};
        matrix.reset(model->createModelRelatedMatrix(2, 2, &types, &rows, &cols, &weights, false));
        solver = std::make_unique<SparseSolver>(matrix->getPointerToSparseJacobian());
        model->copyInitialDataIntoPhysicalDofVector(&state->q, &state->qd);
        for (unsigned i = 0; i < state->q.getNumOfDof(); ++i) {
            state->qd.dofVector->data[i] = 0.01 * (i % 7);
            state->qdd.dofVector->data[i] = 0.3;
        }
        std::fill_n(state->lambda.dofVector->data, state->lambda.getNumOfConstraints(), 0.2);
        system->evaluate(*state);
        system->refreshMatrix(*state, c1, c2);
        computeResidual();
        updateJacobian();
        matrix->update();
        solver->factorise();
        klu = std::make_unique<KluAlone>(*matrix->getPointerToSparseJacobian());
        rightHandSide.assign(matrix->getPointerToSparseJacobian()->rows, 1.0);
        solution = rightHandSide;
    }

    void computeResidual() {
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &state->q, &state->qd,
                                                                               &state->qdd, residual.get());
    }
    void computeForces() {
        model->getAccInertiaForces(&state->qdd, force.get());
        model->getVelInertiaForces(&state->q, &state->qd, force.get());
        model->getConstraintForces(&state->lambda, force.get());
        model->getExternalForces(0.0, &state->q, &state->qd, &state->qdd, force.get());
    }
    void updateJacobian() {
        model->updateMatricesForJacobian(0.0, &state->q, &state->qd, &state->qdd, &state->lambda);
    }
    void evaluateFloor() {
        floor.evaluate(state->q.dofVector->data, state->qd.dofVector->data, state->qdd.dofVector->data,
                       state->lambda.dofVector->data, c1, c2);
    }

    IO_OutputManager output;
    IO_DataModel data;
    std::unique_ptr<MBS_Model> model; // deleted after what is made of it
    std::unique_ptr<HHTSystem> system;
    std::unique_ptr<HHTState> state;
    std::unique_ptr<MBS_ModelPhysicalDofVector> force;
    std::unique_ptr<MBS_ModelConstraintDofVector> residual;
    std::unique_ptr<MBS_GlobalModelMatrix> matrix;
    std::unique_ptr<SparseSolver> solver;
    std::unique_ptr<KluAlone> klu;
    std::vector<double> rightHandSide, solution;
    ChainFloor floor;
};

template <class Work>
void run(benchmark::State& state, Work work) {
    const auto n = static_cast<unsigned>(state.range(0));
    Chain chain(n);
    for (auto _ : state)
        work(chain);
    state.counters["perLink"] =
        benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void residual(benchmark::State& state) {
    run(state, [](Chain& c) { c.computeResidual(); });
}
void forceVectors(benchmark::State& state) {
    run(state, [](Chain& c) { c.computeForces(); });
}
void jacobianUpdate(benchmark::State& state) {
    run(state, [](Chain& c) { c.updateJacobian(); });
}
void matrixRefresh(benchmark::State& state) {
    run(state, [](Chain& c) { c.matrix->update(); });
}
void kernelShare(benchmark::State& state) {
    run(state, [](Chain& c) {
        c.computeResidual();
        c.computeForces();
        c.updateJacobian();
        c.matrix->update();
    });
}
void floorOfKernelShare(benchmark::State& state) {
    run(state, [](Chain& c) { c.evaluateFloor(); });
}
void sparseSolver(benchmark::State& state) {
    run(state, [](Chain& c) {
        c.solver->factorise();
        c.solver->solve(c.rightHandSide.data(), c.solution.data());
    });
}
void kluAlone(benchmark::State& state) {
    run(state, [](Chain& c) {
        c.solution = c.rightHandSide;
        c.klu->refactoriseAndSolve(c.solution);
    });
}
void iterationWithNewMatrix(benchmark::State& state) {
    run(state, [](Chain& c) {
        c.system->evaluate(*c.state);
        c.system->refreshMatrix(*c.state, c1, c2);
        c.system->solveForNewtonCorrection(c2);
    });
}
void iterationWithOldMatrix(benchmark::State& state) {
    run(state, [](Chain& c) {
        c.system->evaluate(*c.state);
        c.system->solveForNewtonCorrection(c2);
    });
}

BENCHMARK(residual)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(forceVectors)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(jacobianUpdate)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(matrixRefresh)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(kernelShare)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(floorOfKernelShare)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(sparseSolver)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(kluAlone)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(iterationWithNewMatrix)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(iterationWithOldMatrix)->RangeMultiplier(10)->Range(10, 10000);

} // namespace
} // namespace velmora
