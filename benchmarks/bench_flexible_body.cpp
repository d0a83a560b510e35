// Time of one update with Jacobian of a flexible body with M modes, for each setting of its two switches,
// beside the dense products alone that its formulas need: the same BLAS calls over operands of the same
// sizes.

#include "tests/support/ModalFile.h"
#include <velmora/platform/blas.h>

#include <benchmark/benchmark.h>
#include <velmora/velmora.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace velmora {
namespace {

using P = MBS_ModelPhysicalDofVector;
using C = MBS_ModelConstraintDofVector;

/// A model of one body, at a state in which nothing vanishes.
class System {
  public:
    System(unsigned numOfModes, bool isCoupled, bool isQuadratic)
        : output("", "benchmark"),
          data("benchmark") {
        addBody(writeModalFile(numOfModes), isCoupled, isQuadratic);
        model.reset(MBS_Model::makeModel(&data, &output));
        for (auto* v : {&q, &qd, &qdd})
            *v = std::make_unique<P>(model.get());
        lambda = std::make_unique<C>(model.get());
        model->copyInitialDataIntoPhysicalDofVector(q.get(), qd.get());
        std::fill_n(qdd->dofVector->data, qdd->getNumOfDof(), 0.3);
        std::fill_n(lambda->dofVector->data, lambda->getNumOfConstraints(), 0.2);
        for (unsigned j = 0; j < numOfModes; ++j) {
            q->bodyData(0)[7 + j] = 0.01 * j;
            qd->bodyData(0)[7 + j] = 1.0 / (1.0 + j);
        }
    }

    void update() {
        model->updateMatricesForEquationOfMotion(0.0, q.get(), qd.get(), qdd.get());
        model->updateMatricesForJacobian(0.0, q.get(), qd.get(), qdd.get(), lambda.get());
    }

  private:
    static std::string writeModalFile(unsigned numOfModes) {
        test::PointBody points;
        points.numOfModes = numOfModes;
        const auto path = std::filesystem::temp_directory_path() /
                          ("bench_flexible_body_" + std::to_string(numOfModes) + ".mtx");
        std::ofstream(path) << points.file();
        return path.string();
    }
    void addBody(const std::string& path, bool isCoupled, bool isQuadratic) {
        IO_DataModelBlock* block = data.addBlock("Body", "MBS_FlexBody_Full", "body", "body", "");
        const std::pair<const char*, std::string> keys[] = {
            {"Is_Itf_active", isCoupled ? "yes" : "no"},
            {"Is_QuadraticTermOF_Itt_active", isQuadratic ? "yes" : "no"},
            {"Path2MtxFile", path},
            {"LocationCenterMass", "1, 2, 3"},
            {"OrientationPAI", "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6"},
            {"InitialVelocityVector", "0.1, 0, 0"},
            {"InitialOmegaVector", "1, 2, 3"},
            {"GlobalDampingFactor", "0.01"}};
        for (const auto& [key, value] : keys)
            block->addKeyValue(key, value);
    }

    IO_OutputManager output;
    IO_DataModel data;
    std::unique_ptr<MBS_Model> model;
    std::unique_ptr<P> q, qd, qdd;
    std::unique_ptr<C> lambda;
};

/// Products of Gbar', its rate or its derivative by accelerations with rows over the modes: five of the
/// inertia that is linear in eta, five more of T, one of the quadratic part.
void rowProducts(int M, int count, const std::vector<double>& rows, std::vector<double>& blocks) {
    constexpr double Gbar[12] = {-0.2, -0.4, 0.1, 0.9, 0.3, 0.2, -0.3, 0.9, -0.2, -0.4, 0.2, 0.9};
    for (int n = 0; n < count; ++n)
        blas::dgemm('T', 'N', 4, M, 3, 1.0, Gbar, 3, rows.data(), 3, 0.0, blocks.data(), 4);
}

/// The products of E_c with eta and its derivatives, and two weighted sums of the E_c.
void coupledProducts(int M, const std::vector<double>& matrices, const std::vector<double>& x,
                     std::vector<double>& y, std::vector<double>& square) {
    for (int n = 0; n < 9; ++n)
        blas::dgemv('N', M, M, 1.0, matrices.data() + n % 3 * M * M, M, x.data(), 0.0, y.data());
    for (int n = 0; n < 2; ++n)
        blas::dgemv('N', M * M, 3, 1.0, matrices.data(), M * M, x.data(), 0.0, square.data());
}

/// The products of the six X_ab with eta and its rate, twelve scalar products with eta and its rate, and a
/// weighted sum of the X_ab.
void quadraticProducts(int M, const std::vector<double>& matrices, const std::vector<double>& x,
                       std::vector<double>& y, std::vector<double>& square) {
    for (int n = 0; n < 2; ++n)
        blas::dgemv('T', M, 6 * M, 1.0, matrices.data(), M, x.data(), 0.0, y.data());
    for (int n = 0; n < 12; ++n)
        benchmark::DoNotOptimize(blas::ddot(M, x.data(), y.data() + n / 2 * M));
    blas::dgemv('N', M * M, 6, 1.0, matrices.data(), M * M, x.data(), 0.0, square.data());
}

void update(benchmark::State& state, bool isCoupled, bool isQuadratic) {
    System system(static_cast<unsigned>(state.range(0)), isCoupled, isQuadratic);
    for (auto _ : state)
        system.update();
}

void denseProducts(benchmark::State& state, bool isCoupled, bool isQuadratic) {
    const auto M = static_cast<std::size_t>(state.range(0));
    const std::vector<double> E(3 * M * M, 0.5), X(6 * M * M, 0.25), x(std::max<std::size_t>(M, 6), 0.1);
    std::vector<double> y(6 * M), square(M * M);
    for (auto _ : state) {
        rowProducts(static_cast<int>(M), 5 + (isCoupled ? 5 : 0) + (isQuadratic ? 1 : 0), X, y);
        if (isCoupled)
            coupledProducts(static_cast<int>(M), E, x, y, square);
        if (isQuadratic)
            quadraticProducts(static_cast<int>(M), X, x, y, square);
        benchmark::ClobberMemory();
    }
}

BENCHMARK_CAPTURE(update, linear, false, false)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(denseProducts, linear, false, false)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(update, coupled, true, false)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(denseProducts, coupled, true, false)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(update, quadratic, false, true)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(denseProducts, quadratic, false, true)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(update, full, true, true)->Arg(10)->Arg(50)->Arg(200);
BENCHMARK_CAPTURE(denseProducts, full, true, true)->Arg(10)->Arg(50)->Arg(200);

} // namespace
} // namespace velmora
