// Time per spring of a cubic lattice of N bodies whose neighbours are tied by springs, each the expression of
// a distance: what residual and Jacobian ask for, with the springs and without them, and one evaluation of
// the expression alone.

#include <benchmark/benchmark.h>
#include <velmora/functions/exprTk_Interface.h>
#include <velmora/velmora.h>

#include <malloc.h>

#include <cmath>
#include <map>
#include <memory>
#include <string>

namespace velmora {
namespace {

using P = MBS_ModelPhysicalDofVector;
using C = MBS_ModelConstraintDofVector;

constexpr double spacing = 0.1;

std::size_t bytesInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

struct Node {
    unsigned x, y, z;
    std::string name() const {
        return std::to_string(x).append("-").append(std::to_string(y)).append("-").append(std::to_string(z));
    }
    std::string place() const {
        std::string text = std::to_string(x * spacing);
        for (const unsigned i : {y, z})
            text.append(", ").append(std::to_string(i * spacing));
        return text;
    }
};

void addKeys(IO_DataModelBlock* block, std::initializer_list<std::pair<const char*, std::string>> keys) {
    for (const auto& [key, value] : keys)
        block->addKeyValue(key, value);
}

void addBody(IO_DataModel& data, const Node& node) {
    addKeys(data.addBlock("Body", "Rigid_EulerParameter_PAI", node.name(), node.name(), ""),
            {{"Mass", "0.2"},
             {"Inertia", "2e-4, 1.7e-4, 1.8e-4"},
             {"LocationCenterMass", node.place()},
             {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"},
             {"InitialVelocityVector", "0, 0, 0"},
             {"InitialOmegaVector", "0, 0, 0"}});
}

void addSpring(IO_DataModel& data, const Node& from, const Node& to, unsigned number) {
    const std::string length = "length" + std::to_string(number), spring = "spring" + std::to_string(number);
    const std::string ids = from.name() + ", " + to.name();
    addKeys(data.addBlock("Measure", "Translational", length, length, ""),
            {{"BodyIDs", ids},
             {"MeasureMode", "disp"},
             {"MeasureCoordinate", "XYZ"},
             {"MeasureLocation_Body1", from.place()},
             {"MeasureLocation_Body2", to.place()}});
    addKeys(data.addBlock("Force", "GenericForce", spring, spring, ""),
            {{"BodyIDs", ids},
             {"ForceExpression", "250*(meaval[" + length + "] - 0.1)"},
             {"PointOfApplication_Body1", from.place()},
             {"PointOfApplication_Body2", to.place()},
             {"ForceDirectionType", "In-line-of-sight"}});
}

/// A lattice in motion.
class Lattice {
  public:
    Lattice(unsigned numBodies, bool hasSprings) : output("", "benchmark"), data("benchmark") {
        describe(static_cast<unsigned>(std::lround(std::cbrt(numBodies))), hasSprings);
        const std::size_t before = bytesInUse();
        model.reset(MBS_Model::makeModel(&data, &output));
        allBytes = bytesInUse() - before;
        for (auto* v : {&q, &qd, &qdd, &force})
            *v = std::make_unique<P>(model.get());
        lambda = std::make_unique<C>(model.get());
        residual = std::make_unique<C>(model.get());
        model->copyInitialDataIntoPhysicalDofVector(q.get(), qd.get());
        for (unsigned i = 0; i < q->getNumOfDof(); ++i) {
            q->dofVector->data[i] += 0.002 * (i % 11);
            qd->dofVector->data[i] = 0.01 * (i % 7);
            qdd->dofVector->data[i] = 0.3;
        }
        std::fill_n(lambda->dofVector->data, lambda->getNumOfConstraints(), 0.2);
        computeResidual();
        updateJacobian();
    }

    void computeResidual() {
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, q.get(), qd.get(),
                                                                               qdd.get(), residual.get());
        model->getExternalForces(0.0, q.get(), qd.get(), qdd.get(), force.get());
    }
    void updateJacobian() {
        model->updateMatricesForJacobian(0.0, q.get(), qd.get(), qdd.get(), lambda.get());
    }

    IO_OutputManager output;
    IO_DataModel data;
    std::unique_ptr<MBS_Model> model;
    std::unique_ptr<P> q, qd, qdd, force;
    std::unique_ptr<C> lambda, residual;
    std::size_t allBytes = 0;

  private:
    void describe(unsigned n, bool hasSprings) {
        unsigned numSprings = 0;
        for (unsigned k = 0; k < n * n * n; ++k) {
            const Node node{k % n, k / n % n, k / n / n};
            addBody(data, node);
            for (const Node& next : {Node{node.x + 1, node.y, node.z}, Node{node.x, node.y + 1, node.z},
                                     Node{node.x, node.y, node.z + 1}})
                if (hasSprings && next.x < n && next.y < n && next.z < n)
                    addSpring(data, node, next, numSprings++);
        }
    }
};

/// Made once for all repetitions, since compiling thousands of expressions takes a while.
Lattice& latticeOf(unsigned numBodies, bool hasSprings) {
    static std::map<std::pair<unsigned, bool>, std::unique_ptr<Lattice>> lattices;
    auto& lattice = lattices[{numBodies, hasSprings}];
    if (!lattice)
        lattice = std::make_unique<Lattice>(numBodies, hasSprings);
    return *lattice;
}

template <class Work>
void run(benchmark::State& state, bool hasSprings, Work work) {
    Lattice& lattice = latticeOf(static_cast<unsigned>(state.range(0)), hasSprings);
    for (auto _ : state)
        work(lattice);
    state.counters["allBytes"] = static_cast<double>(lattice.allBytes);
}

void residual(benchmark::State& state) {
    run(state, true, [](Lattice& l) { l.computeResidual(); });
}
void jacobianUpdate(benchmark::State& state) {
    run(state, true, [](Lattice& l) { l.updateJacobian(); });
}
void residualWithoutSprings(benchmark::State& state) {
    run(state, false, [](Lattice& l) { l.computeResidual(); });
}
void jacobianUpdateWithoutSprings(benchmark::State& state) {
    run(state, false, [](Lattice& l) { l.updateJacobian(); });
}

/// One evaluation for each body.
void expression(benchmark::State& state) {
    exprTk_Interface evaluator;
    double lengths[] = {0.11};
    const int size = 1;
    const std::string name = "mea", text = "250*(mea[0] - 0.1)";
    evaluator.addVectorSymbol(&name, lengths, &size);
    evaluator.setExpression(&text);
    for (auto _ : state)
        for (int n = 0; n < state.range(0); ++n) {
            lengths[0] = 0.1 + 1e-6 * n;
            benchmark::DoNotOptimize(evaluator.evaluateExpression());
        }
}

BENCHMARK(residual)->Arg(125)->Arg(1000)->Arg(8000);
BENCHMARK(jacobianUpdate)->Arg(125)->Arg(1000)->Arg(8000);
BENCHMARK(residualWithoutSprings)->Arg(125)->Arg(1000)->Arg(8000);
BENCHMARK(jacobianUpdateWithoutSprings)->Arg(125)->Arg(1000)->Arg(8000);
BENCHMARK(expression)->Arg(125)->Arg(1000)->Arg(8000);

} // namespace
} // namespace velmora
