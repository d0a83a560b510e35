#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

class Forces : public ModelFixture {
  protected:
    MBS_InternalModel& internal() { return dynamic_cast<MBS_InternalModel&>(*model); }
};

struct Ramp {
    const char* activationTime; // empty: the key is missing
    double t;
    double factor;
};

class Gravity : public Forces, public testing::WithParamInterface<Ramp> {};

TEST_P(Gravity, RisesSmoothlyToItsFullWeight) {
    addRigidBody(data, "a");
    addRigidBody(data, "massless", {{"Mass", "0"}});
    auto* block = addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "1, -2, -10"}});
    if (*GetParam().activationTime)
        block->addKeyValue("ActivationTime", GetParam().activationTime);
    MBS_ModelPhysicalDofVector q(&build()), out(model.get());
    for (int n = 0; n < 2; ++n) { // what was there is cleared
        model->getExternalForces(GetParam().t, &q, &q, &q, &out);
        std::vector<double> expected(14, 0.0);
        for (std::size_t i = 0; i < 3; ++i)
            expected[i] = 2.5 * GetParam().factor * std::vector({1.0, -2.0, -10.0})[i];
        EXPECT_THAT(std::vector(out.dofVector->data, out.dofVector->data + 14),
                    testing::Pointwise(testing::DoubleNear(1e-14), expected));
    }
}

INSTANTIATE_TEST_SUITE_P(Ramps, Gravity,
                         testing::Values(Ramp{"", 0.0, 1.0}, Ramp{"", -1.0, 1.0}, Ramp{"0", -1.0, 1.0},
                                         Ramp{"2.0", 0.0, 0.0}, Ramp{"2.0", 0.5, 0.5 - std::sqrt(0.125)},
                                         Ramp{"2.0", 1.0, 0.5}, Ramp{"2.0", 2.0, 1.0},
                                         Ramp{"2.0", 9.0, 1.0}));

TEST_F(Forces, BodiesThatAreMissingAreNamed) {
    addRigidBody(data, "a");
    build();
    const auto errorOf = [&](auto makeForce, Keys keys) {
        IO_DataModel other("other");
        IO_DataModelBlock* block = addBlock(other, "Force", "GenericForce", "f", keys);
        const std::string error = makeForce(block)->getErrorString();
        EXPECT_EQ(takeMessages(), error.empty() ? "" : error + "\n");
        return error;
    };
    const auto single = [&](IO_DataModelBlock* b) {
        return std::make_unique<MBS_SingleBodyForce>(b, model.get(), internal());
    };
    const auto pair = [&](IO_DataModelBlock* b) {
        return std::make_unique<MBS_BodyBodyForce>(b, model.get(), internal());
    };
    const std::string prefix = "In Block <Force> prior to line number 0:\n";
    EXPECT_EQ(errorOf(single, {{"BodyIDs", "a, 0"}}), "");
    EXPECT_EQ(errorOf(single, {{"BodyIDs", "x, 0"}}), prefix + "Body not found using bodyID: x!\n");
    EXPECT_EQ(errorOf(single, {}),
              prefix +
                  "ERROR: Key <BodyIDs> not found in read list of keys! Please check your input file!\n");
    EXPECT_EQ(errorOf(pair, {{"BodyIDs", "a, a"}}), "");
    EXPECT_EQ(errorOf(pair, {{"BodyIDs", "x, y"}}), prefix + "Body1 not found using bodyID: x!\n");
    EXPECT_EQ(errorOf(pair, {{"BodyIDs", "a, y"}}), prefix + "Body2 not found using bodyID: y!\n");
}

/// Block of a linear coupling Q_row = K q_col, or D qd_col.
class ConstantBlock : public MBS_BodyBodyForce_Qe_X {
  public:
    ConstantBlock(const MBS_Body& row, const MBS_Body& col, double factor)
        : MBS_BodyBodyForce_Qe_X(row, col) {
        for (unsigned k = 0; k < 9; ++k)
            if (MBM_DenseMatrix* b = block[k / 3][k % 3].get())
                for (unsigned n = 0; n < b->rows * b->cols; ++n)
                    b->data[n] = factor * std::cos(1.0 + n + 20.0 * k);
    }
};

/// A force with couplings between two bodies, off the diagonal too.
class LinearCoupling : public MBS_Force {
  public:
    LinearCoupling(IO_DataModelBlock* block, MBS_InternalModel& owner) : MBS_Force(block, &owner) {
        const auto& b = owner.getBodies();
        const auto make = [&](unsigned i, unsigned j, double f) {
            return std::make_unique<ConstantBlock>(*b[i], *b[j], f);
        };
        jacobianEntries.push_back({0, 1, make(0, 1, 1.0), nullptr});
        jacobianEntries.push_back({1, 0, make(1, 0, 2.0), make(1, 0, 0.5)});
        jacobianEntries.push_back({1, 1, nullptr, make(1, 1, -1.0)});
    }
    void addExternalForces(double, const P* q, const P* qd, const P*, P* Q) override {
        for (const JacobianEntry& e : jacobianEntries) {
            add(e.qeQ.get(), q->bodyData(e.colBody), Q->bodyData(e.rowBody));
            add(e.qeQd.get(), qd->bodyData(e.colBody), Q->bodyData(e.rowBody));
        }
    }

  private:
    static void add(const MBS_GeneralBodyBodyMatrix* m, const double* x, double* y) {
        constexpr unsigned start[] = {0, 3};
        for (unsigned r = 0; m && r < 2; ++r)
            for (unsigned c = 0; c < 2; ++c)
                for (unsigned i = 0; i < m->rowDof[r]; ++i)
                    for (unsigned j = 0; j < m->colDof[c]; ++j)
                        y[start[r] + i] += m->block[r][c]->getValue(i, j) * x[start[c] + j];
    }
};

// The whole road of a force's blocks: pattern off the diagonal, scatter, transposed product.
TEST_F(Forces, BlocksReachTheGlobalMatrixWhereTheirBodiesStand) {
    addRigidBody(data, "a");
    addRigidBody(data, "b");
    addRigidBody(data, "c");
    build();
    IO_DataModel other("other");
    internal().addForce(std::make_unique<LinearCoupling>(addBlock(other, "Force", "", "f", {}), internal()));
    DerivativeChecker checker(*model);
    EXPECT_THAT(checker.check(ExternalForce_q, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.check(ExternalForce_qd, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
}

} // namespace
} // namespace velmora::test
