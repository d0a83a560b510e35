#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
#include "velmora/matrix/MBM_DenseMatrix.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace velmora::test {
namespace {

using Matrix = std::unique_ptr<MBS_GlobalModelMatrix>;

struct Contribution {
    unsigned type, row, col;
    double weight;
};

class GlobalMatrix : public ModelFixture {
  protected:
    GlobalMatrix() {
        addRigidBody(data, "a");
        addRigidBody(data, "b", {{"Mass", "0"}});
        addRigidBody(data, "c", {{"RegardVelocityInertiaForcesInsideJacobian", "no"}});
    }

    Matrix make(unsigned rows, unsigned cols, const std::vector<Contribution>& list,
                bool isModifiedHHT = false) {
        std::vector<unsigned> types, r, c;
        std::vector<double> weights;
        for (const Contribution& k : list) {
            types.push_back(k.type);
            r.push_back(k.row);
            c.push_back(k.col);
            weights.push_back(k.weight);
        }
        return Matrix(model->createModelRelatedMatrix(rows, cols, &types, &r, &c, &weights, isModifiedHHT));
    }

    void updateBlocks(State& s) {
        MBS_ModelConstraintDofVector c(model.get());
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(s.t, &s.q, &s.qd, &s.qdd, &c);
        model->updateMatricesForJacobian(s.t, &s.q, &s.qd, &s.qdd, &s.lambda);
    }

    static std::vector<double> values(const Matrix& m) {
        const auto& s = *m->getPointerToSparseJacobian();
        return {s.values, s.values + s.numNonZeros};
    }

    std::mt19937 random{5};
};

// J = sum of s_k B_k: one matrix with many contributions against the matrices of the single codes.
TEST_F(GlobalMatrix, IsTheWeightedSumOfItsContributions) {
    DerivativeChecker checker(build());
    State s = randomState(*model, random);
    const std::vector<Contribution> list = {{101, 0, 0, 2.0},  {102, 0, 0, -0.5}, {103, 0, 0, 0.25},
                                            {104, 0, 0, 3.0},  {105, 0, 0, -1.5}, {201, 0, 1, 1.5},
                                            {301, 1, 0, -2.5}, {302, 2, 0, 4.0}};
    const Matrix matrix = make(3, 2, list);
    EXPECT_THAT(values(matrix), testing::Each(1.0)); // before the first update
    const unsigned firstRow[] = {0, 21, 24}, firstCol[] = {0, 21};
    Table expected(27, 24);
    for (const Contribution& k : list) {
        const Table b = checker.analytic(k.type, s);
        for (unsigned i = 0; i < b.rows; ++i)
            for (unsigned j = 0; j < b.cols; ++j)
                expected(firstRow[k.row] + i, firstCol[k.col] + j) += k.weight * b(i, j);
    }
    updateBlocks(s);
    for (int n = 0; n < 2; ++n) {
        matrix->update();
        const MBM_SparseMat_CSR3& sparse = *matrix->getPointerToSparseJacobian();
        ASSERT_EQ(sparse.rows, 27u);
        ASSERT_EQ(sparse.cols, 24u);
        for (unsigned i = 0; i < 27; ++i)
            for (unsigned j = 0; j < 24; ++j)
                EXPECT_NEAR(sparse.getValue(i, j), expected(i, j), 1e-12) << i << ", " << j;
    }
}

TEST_F(GlobalMatrix, PatternIsTheUnionOfTheBlocks) {
    build();
    const auto count = [&](const std::vector<Contribution>& list) {
        return make(1, 1, list)->getPointerToSparseJacobian()->numNonZeros;
    };
    EXPECT_EQ(count({{101, 0, 0, 1.0}}), 2u * (3 + 16));
    EXPECT_EQ(count({{105, 0, 0, 1.0}}), 3u * 4);
    EXPECT_EQ(count({{101, 0, 0, 1.0}, {105, 0, 0, 1.0}}), 2u * (3 + 16) + 4);
    EXPECT_EQ(count({{105, 0, 0, 1.0}, {101, 0, 0, 1.0}}), 2u * (3 + 16) + 4); // in either order
    EXPECT_EQ(count({{103, 0, 0, 1.0}}), 2u * 16);
    EXPECT_EQ(count({{201, 0, 0, 1.0}}), 3u * 4);
    EXPECT_EQ(count({{106, 0, 0, 1.0}, {110, 0, 0, 1.0}}), 0u);
    EXPECT_EQ(count({{111, 0, 0, 1.0}}), 2u * 49);
}

TEST_F(GlobalMatrix, WeightsTakeEffectAtTheNextUpdateAndCopiesShareThem) {
    State s = randomState(build(), random);
    updateBlocks(s);
    const Matrix matrix = make(1, 1, {{101, 0, 0, 1.0}});
    matrix->update();
    std::vector<double> once = values(matrix);
    EXPECT_TRUE(matrix->setScalingValue_i(0, 2.0));
    EXPECT_FALSE(matrix->setScalingValue_i(1, 5.0));
    EXPECT_FALSE(matrix->setScalingValues({3.0, 4.0}));
    EXPECT_EQ(values(matrix), once);
    MBS_GlobalModelMatrix copy(*matrix);
    copy.update();
    std::ranges::for_each(once, [](double& x) { x *= 2; });
    EXPECT_EQ(values(matrix), once);
}

// In the modified form the rotational columns of derivatives by qd enter with -T, whatever the weight.
TEST_F(GlobalMatrix, ModifiedFormTakesAMatrixInPlaceOfTheWeight) {
    DerivativeChecker checker(build());
    State s = randomState(*model, random);
    const Table b = checker.analytic(104, s);
    const Table m = checker.analytic(101, s);
    updateBlocks(s);
    std::vector<MBM_GeneralDenseMatrix> T;
    std::vector<MBM_GeneralDenseMatrix*> pointers;
    for (unsigned n = 0; n < 3; ++n) {
        T.emplace_back(4U, 4U, 0.0);
        for (unsigned k = 0; k < 16; ++k)
            T.back().data[k] = std::sin(1.0 + k + 16.0 * n);
    }
    for (auto& t : T)
        pointers.push_back(&t);
    const Matrix matrix = make(1, 1, {{101, 0, 0, 2.0}, {104, 0, 0, 77.0}}, true);
    matrix->update();
    EXPECT_THAT(values(matrix), testing::Each(1.0)); // the physical part stays as it was
    matrix->updateForModifiedHHT(pointers.data());
    const MBM_SparseMat_CSR3& sparse = *matrix->getPointerToSparseJacobian();
    for (unsigned i = 0; i < 7; ++i)
        for (unsigned j = 0; j < 7; ++j) {
            double expected = 2.0 * m(i, j);
            for (unsigned k = 3; k < 7 && j >= 3; ++k)
                expected -= b(i, k) * T[0].getValue(k - 3, j - 3);
            EXPECT_NEAR(sparse.getValue(i, j), expected, 1e-12) << i << ", " << j;
        }
}

TEST_F(GlobalMatrix, BothFormsServeFlexibleBodies) {
    addFlexibleBody(data, "f", writeModalFile(PointBody().file())); // body 3, from row 21 on
    DerivativeChecker checker(build());
    State s = randomState(*model, random);
    const Table m = checker.analytic(101, s), b = checker.analytic(104, s), k = checker.analytic(106, s),
                d = checker.analytic(107, s);
    updateBlocks(s);
    MBM_GeneralDenseMatrix T(4, 4, 0.0);
    for (unsigned n = 0; n < 16; ++n)
        T.data[n] = std::sin(1.0 + n);
    std::vector<MBM_GeneralDenseMatrix*> all(4, &T);
    const std::vector<Contribution> list = {
        {101, 0, 0, 2.0}, {104, 0, 0, 7.0}, {106, 0, 0, 3.0}, {107, 0, 0, -5.0}};
    const Matrix plain = make(1, 1, list), modified = make(1, 1, list, true);
    plain->update();
    modified->updateForModifiedHHT(all.data());
    for (unsigned i = 21; i < 30; ++i)
        for (unsigned j = 21; j < 30; ++j) {
            const double byPosition = 2.0 * m(i, j) + 3.0 * k(i, j),
                         byVelocity = 7.0 * b(i, j) - 5.0 * d(i, j);
            EXPECT_NEAR(plain->getPointerToSparseJacobian()->getValue(i, j), byPosition + byVelocity, 1e-12);
            double expected = byPosition;
            if (j < 24 || j >= 28)
                expected += byVelocity;
            for (unsigned n = 0; n < 4 && j >= 24 && j < 28; ++n)
                expected -= (b(i, 24 + n) + d(i, 24 + n)) * T.getValue(n, j - 24);
            EXPECT_NEAR(modified->getPointerToSparseJacobian()->getValue(i, j), expected, 1e-12)
                << i << ", " << j;
        }
}

class Descriptions : public GlobalMatrix,
                     public testing::WithParamInterface<std::pair<std::vector<Contribution>, const char*>> {};

TEST_P(Descriptions, ThatAreFaultyAreRefused) {
    build();
    const Matrix matrix = make(2, 2, GetParam().first);
    const std::string message =
        std::string("ERROR: Model related matrix not valid: ") + GetParam().second + "!\n";
    EXPECT_EQ(takeMessages(), message + "\n");
    EXPECT_EQ(matrix->getPointerToSparseJacobian()->numNonZeros, 0u);
    matrix->update();
    EXPECT_FALSE(matrix->setScalingValue_i(0, 1.0));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Descriptions,
    testing::Values(std::pair(std::vector<Contribution>{{101, 0, 0, 1}, {101, 1, 1, 1}, {112, 0, 0, 1}},
                              "contribution 2 has the unknown type 112"),
                    std::pair(std::vector<Contribution>{{101, 0, 0, 1}, {101, 1, 2, 1}},
                              "contribution 1 lies outside the grid of blocks"),
                    std::pair(std::vector<Contribution>{{101, 0, 0, 1}, {101, 0, 1, 1}},
                              "block row 1 has no contribution"),
                    std::pair(std::vector<Contribution>{{101, 0, 0, 1}, {101, 1, 0, 1}},
                              "block column 1 has no contribution"),
                    std::pair(std::vector<Contribution>{{101, 0, 0, 1}, {301, 0, 1, 1}},
                              "contribution 1 has another row size than its block row"),
                    std::pair(std::vector<Contribution>{{201, 0, 1, 1}, {202, 0, 1, 1}, {301, 1, 0, 1}},
                              "contribution 1 is the second one in a constraint cell")));

TEST_F(GlobalMatrix, ListsOfUnequalLengthAreRefused) {
    build();
    const std::vector<unsigned> types{101, 105}, zero{0};
    const std::vector<double> weights{1.0, 1.0};
    const Matrix matrix(model->createModelRelatedMatrix(1, 1, &types, &zero, &zero, &weights, false));
    EXPECT_EQ(takeMessages(),
              "ERROR: Model related matrix not valid: lists of types, rows, columns and weights "
              "differ in length!\n\n");
}

} // namespace
} // namespace velmora::test
