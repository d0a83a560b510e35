#include "tests/support/ModalFile.h"
#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_FeNodeList.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/fe_import/FeLib_MtxConverter.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_Vector.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using test::Elements;
using test::PointBody;
using test::Vector;

std::unique_ptr<MBM_GeneralDenseMatrix> matrixOf(unsigned rows, unsigned cols, const Elements& at) {
    auto matrix = std::make_unique<MBM_GeneralDenseMatrix>(rows, cols);
    for (unsigned i = 0; i < rows; ++i)
        for (unsigned j = 0; j < cols; ++j)
            matrix->setValue(i, j, at(i, j));
    return matrix;
}

double unit(unsigned i, unsigned j) {
    return i == j ? 1.0 : 0.0;
}

// The content that a reader would leave of the body's file.
class Converter : public testing::TestWithParam<unsigned> {
  protected:
    void SetUp() override { fill(2); }

    void fill(unsigned numOfModes) {
        body.numOfModes = M = numOfModes;
        for (unsigned p = 0; p < body.points(); ++p)
            content.nodeList->add(std::make_unique<FeLib_FeNode>(body.labels[p], 0.0, 0.0, 0.0));
        content.mass = 3.9;
        for (unsigned k = 5; k <= 9; ++k) {
            const auto [rows, cols] = body.sizeOfInvariant(k);
            content.setInvariant(k, matrixOf(rows, cols, body.invariant(k)));
        }
        setFrequencies(PointBody::frequency);
    }
    void setFrequencies(double (*frequency)(unsigned)) {
        const unsigned columns = M * body.points();
        content.setGenStiff(matrixOf(M, M, PointBody::stiffness));
        content.buildModes(*matrixOf(M, 1, [=](auto j, auto) { return frequency(j); }),
                           *matrixOf(3, columns, body.translations()),
                           *matrixOf(3, columns, body.rotations()), std::vector<std::uint32_t>(M, 1));
    }
    std::string errorOf(bool wtf = true, bool wff = true) {
        FeLib_MtxConverter converter(&content, {0.02});
        converter.convert(wtf, wff);
        return converter.errorString;
    }

    PointBody body;
    FeLib_MtxContent content;
    unsigned M = 0;
};

// With s = r + Phi q the inertia of the deformed body is -sum m skew(s) skew(s), and sum m (Phi q) x (Phi qd)
// the momentum of the deformation: both from the points, and from the matrices in the new coordinates.
class DeformedBody : public Converter {
  protected:
    void SetUp() override { fill(GetParam()); }
};

TEST_P(DeformedBody, HasTheInertiaOfItsPoints) {
    FeLib_MtxConverter converter(&content, {0.02});
    ASSERT_TRUE(converter.convert(true, true));
    ASSERT_EQ(converter.errorString, "");
    EXPECT_TRUE(converter.isValid());
    const auto omega = [](unsigned j) { return 2.0 * M_PI * PointBody::frequency(j); };
    const auto q = [](unsigned j) { return 0.3 - 0.2 * j; };
    const auto qd = [](unsigned j) { return 0.1 + 0.5 * j; };
    const auto deformation = [&](unsigned p, const auto& amplitude) {
        Vector u{};
        for (unsigned j = 0; j < M; ++j)
            for (unsigned c = 0; c < 3; ++c)
                u[c] += PointBody::shape(p, j)[c] * amplitude(j);
        return u;
    };
    const auto& set = converter.matrixSet;
    for (unsigned a = 0; a < 3; ++a) {
        double momentum = 0.0;
        for (unsigned j = 0; j < M; ++j)
            for (unsigned i = 0; i < M; ++i)
                momentum += set[1]->getValue(a * M + j, i) * omega(j) * q(j) * omega(i) * qd(i);
        EXPECT_NEAR(momentum, body.sum([&](auto p) {
            return PointBody::cross(deformation(p, q), deformation(p, qd), a);
        }),
                    1e-13);
        for (unsigned b = 0; b < 3; ++b) {
            double inertia = set[5]->getValue(a, b);
            for (unsigned j = 0; j < M; ++j) {
                inertia += set[3]->getValue(a, b * M + j) * omega(j) * q(j);
                for (unsigned i = 0; i < M; ++i)
                    inertia += set[2]->getValue(a * M + j, b * M + i) * omega(j) * q(j) * omega(i) * q(i);
            }
            EXPECT_NEAR(inertia, -body.sum([&](auto p) {
                const Vector r = PointBody::position(p), u = deformation(p, q);
                const Vector s{r[0] + u[0], r[1] + u[1], r[2] + u[2]};
                return PointBody::skewSkew(s, s, a, b);
            }),
                        1e-12);
        }
    }
    EXPECT_EQ(set[0]->getValue(0, 0), 3.9);
    for (unsigned j = 0; j < M; ++j) {
        EXPECT_DOUBLE_EQ(set[4]->getValue(j, j), 1.0 / (omega(j) * omega(j)));
        EXPECT_DOUBLE_EQ(set[6]->getValue(j, j), 1.0);
        EXPECT_DOUBLE_EQ(set[7]->getValue(j, j), 0.04 / omega(j));
        EXPECT_DOUBLE_EQ(content.modes->shapes->getValue(7, j) * omega(j), PointBody::shape(1, j)[1]);
        EXPECT_DOUBLE_EQ(content.modes->shapes->getValue(17, j) * omega(j), PointBody::turn(2, j)[2]);
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, DeformedBody, testing::Values(1u, 2u, 5u));

TEST_F(Converter, UnitStiffnessAloneScalesNothing) {
    content.setGenStiff(matrixOf(2, 2, unit));
    content.setInvariant(6, matrixOf(2, 2, [](auto i, auto j) { return i == j ? 0.2 : 0.1; }));
    FeLib_MtxConverter converter(&content, {0.5, 0.25});
    EXPECT_TRUE(converter.convert(false, false));
    EXPECT_EQ(converter.errorString, "");
    EXPECT_TRUE(converter.isValid());
    EXPECT_EQ(converter.matrixSet[1], nullptr);
    EXPECT_EQ(converter.matrixSet[2], nullptr);
    EXPECT_EQ(converter.matrixSet[4]->getValue(0, 1), 0.1);
    EXPECT_DOUBLE_EQ(converter.matrixSet[7]->getValue(1, 1), 0.5 * 2.0 * M_PI * PointBody::frequency(1));
    EXPECT_EQ(content.modes->shapes->getValue(0, 1), PointBody::shape(0, 1)[0]);
}

TEST_F(Converter, NamesWhatIsMissingOrDoesNotFit) {
    const std::string head = "FeLib_MtxConverter: Invariant ";
    for (const unsigned k : {8u, 9u, 5u, 7u, 6u}) {
        auto kept = std::move(content.invariants[k - 1]);
        EXPECT_EQ(errorOf(), head + std::to_string(k) + " missing!");
        if (k != 6 && k != 7) {
            content.setInvariant(k, matrixOf(kept->rows + 1, kept->cols, unit));
            EXPECT_EQ(errorOf(), head + std::to_string(k) + " has wrong dimensions!");
            EXPECT_EQ(errorOf(k != 5, k != 9), k == 8 ? head + "8 has wrong dimensions!" : "");
        }
        content.invariants[k - 1] = std::move(kept);
    }
    content.genStiff.reset();
    FeLib_MtxConverter converter(&content, {0.02});
    EXPECT_FALSE(converter.convert(true, true));
    EXPECT_EQ(converter.errorString, "FeLib_MtxConverter: GENSTIFF missing!");
}

TEST_F(Converter, NamesWhatCannotBeScaled) {
    content.setInvariant(6, matrixOf(3, 3, unit));
    EXPECT_EQ(errorOf(), "FeLib_MtxConverter: Could not renormalize Mred, invalid dimensions!");
    content.setInvariant(6, matrixOf(2, 2, [](auto, auto) { return 1.0; }));
    EXPECT_EQ(errorOf(),
              "FeLib_MtxConverter: Could not perform Renormalization, please supply Mred or Kred as "
              "Identitymatrix!");
    content.setInvariant(6, matrixOf(2, 2, unit));
    for (double (*frequency)(unsigned) :
         {+[](unsigned j) { return 1.0 - j; }, +[](unsigned j) { return 1.0 - 2.0 * j; },
          +[](unsigned j) { return j ? 1e-170 : 1.0; }}) {
        setFrequencies(frequency);
        EXPECT_EQ(errorOf(),
                  "FeLib_MtxConverter: Could not perform Renormalization, frequency of mode 2 is not "
                  "positive!");
    }
}

TEST_F(Converter, CentreOfMassAwayFromTheOriginLeavesAText) {
    for (const double x : {0.0009, 0.0011, -0.0011}) {
        content.centerOfMass = {0.0, x, 0.0};
        FeLib_MtxConverter converter(&content, {});
        EXPECT_TRUE(converter.isCenterOfMassValid());
        EXPECT_EQ(converter.errorString, x == 0.0009
                                             ? ""
                                             : "FeLib_MtxConverter: Center of mass is not in the origin! "
                                               "Converting continued!");
    }
}

TEST_F(Converter, MatricesOfOtherSizesAreNotValid) {
    content.setGenStiff(matrixOf(3, 3, unit));
    content.setInvariant(7, matrixOf(1, 3, unit));
    content.setInvariant(6, matrixOf(1, 2, unit));
    FeLib_MtxConverter converter(&content, {});
    EXPECT_TRUE(converter.convert(true, true));
    EXPECT_EQ(converter.errorString, "");
    EXPECT_FALSE(converter.isValid());
    EXPECT_EQ(converter.errorString,
              "FeLib_MtxConverter: Mred has wrong dimensions!FeLib_MtxConverter: Itt_tt has "
              "wrong dimensions!FeLib_MtxConverter: Kred has wrong dimensions!");
    EXPECT_EQ(FeLib_MtxConverter::getNumOfModes(nullptr), 0u);
}

} // namespace
} // namespace velmora
