// Time and memory per body of N free rigid bodies under gravity: what a Newton iteration asks of the kernel,
// share by share.

#include <benchmark/benchmark.h>
#include <velmora/velmora.h>

#include <malloc.h>

#include <memory>

namespace velmora {
namespace {

using P = MBS_ModelPhysicalDofVector;
using C = MBS_ModelConstraintDofVector;

std::size_t bytesInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void addBody(IO_DataModel& data, unsigned i) {
    const std::string name = "body" + std::to_string(i);
    IO_DataModelBlock* block = data.addBlock("Body", "Rigid_EulerParameter_PAI", name, name, "");
    const std::pair<const char*, const char*> keys[] = {
        {"Mass", "1.5"},
        {"Inertia", "0.1, 0.2, 0.25"},
        {"LocationCenterMass", "1, 2, 3"},
        {"OrientationPAI", "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6"},
        {"InitialVelocityVector", "0.1, 0, 0"},
        {"InitialOmegaVector", "1, 2, 3"}};
    for (const auto& [key, value] : keys)
        block->addKeyValue(key, value);
}

/// A model with its vectors and its Newton matrix, at the initial state.
class System {
  public:
    explicit System(unsigned numBodies) : output("", "benchmark"), data("benchmark") {
        for (unsigned i = 0; i < numBodies; ++i)
            addBody(data, i);
        data.addBlock("Force", "Gravity", "g", "g", "")->addKeyValue("GravityAccVector", "0, 0, -9.81");
        const std::size_t before = bytesInUse();
        model.reset(MBS_Model::makeModel(&data, &output));
        modelBytes = bytesInUse() - before;
        q = std::make_unique<P>(model.get());
        qd = std::make_unique<P>(model.get());
        qdd = std::make_unique<P>(model.get());
        force = std::make_unique<P>(model.get());
        lambda = std::make_unique<C>(model.get());
        residual = std::make_unique<C>(model.get());
        const std::vector<unsigned> types{101, 102, 103, 104, 105, 108, 109, 110, 201, 301},
            rows{0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, cols{0, 0, 0, 0, 0, 0, 0, 0, 1, 0};
        const std::vector<double> weights(types.size(), 0.5);
        matrix.reset(model->createModelRelatedMatrix(2, 2, &types, &rows, &cols, &weights, false));
        allBytes = bytesInUse() - before;
        model->copyInitialDataIntoPhysicalDofVector(q.get(), qd.get());
        std::fill_n(qdd->dofVector->data, qdd->getNumOfDof(), 0.3);
        std::fill_n(lambda->dofVector->data, lambda->getNumOfConstraints(), 0.2);
        computeResidual();
        model->updateMatricesForJacobian(0.0, q.get(), qd.get(), qdd.get(), lambda.get());
    }

    void computeResidual() {
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, q.get(), qd.get(),
                                                                               qdd.get(), residual.get());
    }
    void computeForces() {
        model->getAccInertiaForces(qdd.get(), force.get());
        model->getVelInertiaForces(q.get(), qd.get(), force.get());
        model->getElasticForces(q.get(), force.get());
        model->getDampingForces(qd.get(), force.get());
        model->getConstraintForces(lambda.get(), force.get());
        model->getExternalForces(0.0, q.get(), qd.get(), qdd.get(), force.get());
    }
    void updateJacobian() {
        model->updateMatricesForJacobian(0.0, q.get(), qd.get(), qdd.get(), lambda.get());
    }

    IO_OutputManager output;
    IO_DataModel data;
    std::unique_ptr<MBS_Model> model; // deleted after what is made of it
    std::unique_ptr<P> q, qd, qdd, force;
    std::unique_ptr<C> lambda, residual;
    std::unique_ptr<MBS_GlobalModelMatrix> matrix;
    std::size_t modelBytes = 0, allBytes = 0;
};

template <class Work>
void run(benchmark::State& state, Work work) {
    const auto n = static_cast<unsigned>(state.range(0));
    System system(n);
    for (auto _ : state)
        work(system);
    state.counters["perBody"] =
        benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["modelBytes"] = static_cast<double>(system.modelBytes) / n;
    state.counters["allBytes"] = static_cast<double>(system.allBytes) / n;
}

void residual(benchmark::State& state) {
    run(state, [](System& s) { s.computeResidual(); });
}
void forceVectors(benchmark::State& state) {
    run(state, [](System& s) { s.computeForces(); });
}
void jacobianUpdate(benchmark::State& state) {
    run(state, [](System& s) { s.updateJacobian(); });
}
void matrixRefresh(benchmark::State& state) {
    run(state, [](System& s) { s.matrix->update(); });
}

BENCHMARK(residual)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(forceVectors)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(jacobianUpdate)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(matrixRefresh)->RangeMultiplier(10)->Range(10, 10000);

} // namespace
} // namespace velmora
