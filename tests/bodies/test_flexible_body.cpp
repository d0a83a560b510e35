#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
#include "velmora/bodies/MBS_FlexBody_Full.h"
#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/matrix/FixedSize.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

// Number of modes, "Is_Itf_active", "Is_QuadraticTermOF_Itt_active". Three and four modes give matrices of
// the shapes that have kernels of their own.
using Setting = std::tuple<unsigned, bool, bool>;

std::string yesNo(bool value) {
    return value ? "yes" : "no";
}

class FlexibleBody : public ModelFixture {
  protected:
    MBS_Model& buildBody(unsigned modes, bool itf = true, bool quadratic = true) {
        points.numOfModes = M = modes;
        addFlexibleBody(data, "f", writeModalFile(points.file()),
                        {{"Is_Itf_active", yesNo(itf)}, {"Is_QuadraticTermOF_Itt_active", yesNo(quadratic)}});
        return build();
    }
    const MBS_FlexBody_Full_Parameter& parameter() {
        const auto& bodies = dynamic_cast<MBS_InternalModel&>(*model).getBodies();
        return *dynamic_cast<const MBS_FlexBody_Full&>(*bodies[0]).flexParameter;
    }
    static double omega(unsigned mode) { return 2.0 * M_PI * PointBody::frequency(mode); }

    PointBody points;
    unsigned M = 0;
};

class FlexibleBodySettings : public FlexibleBody, public testing::WithParamInterface<Setting> {
  protected:
    void SetUp() override {
        std::tie(M, itf, quadratic) = GetParam();
        buildBody(M, itf, quadratic);
    }

    /// M qd with the mass matrix at q.
    std::vector<double> momentum(State& s) {
        MBS_ModelPhysicalDofVector out(model.get());
        model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, &s.qdd);
        model->getAccInertiaForces(&s.qd, &out);
        return {out.dofVector->data, out.dofVector->data + out.getNumOfDof()};
    }
    double kineticEnergy(State& s) {
        const auto p = momentum(s);
        return 0.5 * std::inner_product(p.begin(), p.end(), s.qd.dofVector->data, 0.0);
    }

    bool itf = false, quadratic = false;
    std::mt19937 random{7};
};

TEST_P(FlexibleBodySettings, DerivativesAgreeWithDifferences) {
    addRigidBody(data, "r");
    build();
    DerivativeChecker checker(*model);
    for (const unsigned code :
         {MassMatrix, InertiaForce_q, VelInertiaForce_q, VelInertiaForce_qd, InnerConstraintForce_q,
          ElasticForce_q, DampingForce_qd, ConstraintJacobianT, ConstraintJacobianTDot})
        EXPECT_THAT(checker.check(code, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
}

// Of each point's velocity r' + A (w x (s + u) + u') the kernel has no products of r' with the rest and none
// of s with u', since the reference point is the centre of mass and modes have no momentum about it; and u'u'
// enters by the modal mass of the file.
TEST_P(FlexibleBodySettings, KineticEnergyIsThatOfThePoints) {
    State s = randomState(*model, random);
    const double* qd = s.qd.dofVector->data;
    const Vec3 w = Gbar(Vec4::from(s.q.dofVector->data + 3)) * Vec4::from(qd + 3);
    double expected = 0.0;
    for (unsigned axis = 0; axis < 3; ++axis)
        expected += 0.5 * points.sum([](auto) { return 1.0; }) * qd[axis] * qd[axis];
    for (unsigned j = 0; j < M; ++j)
        expected += 0.5 * qd[7 + j] * qd[7 + j] / (omega(j) * omega(j));
    expected += points.sum([&](unsigned point) {
        const Vec3 x{PointBody::position(point)};
        Vec3 u, du;
        for (unsigned j = 0; j < M; ++j) {
            const Vec3 shape{PointBody::shape(point, j)};
            u += s.q.dofVector->data[7 + j] / omega(j) * shape;
            du += qd[7 + j] / omega(j) * shape;
        }
        const Vec3 wx = cross(w, x), wu = cross(w, u);
        double energy = 0.5 * dot(wx, wx) + dot(wx, wu);
        if (quadratic)
            energy += 0.5 * dot(wu, wu);
        if (itf)
            energy += dot(w, cross(u, du));
        return energy;
    });
    EXPECT_NEAR(kineticEnergy(s), expected, 1e-12 * expected);
}

// Qvv = dT/dq - d(M qd)/dt at qdd = 0 (Lagrange), by differences of the mass matrix alone.
TEST_P(FlexibleBodySettings, VelocityForcesAreThoseOfLagrange) {
    State s = randomState(*model, random);
    const unsigned n = s.q.getNumOfDof();
    double *q = s.q.dofVector->data, *qd = s.qd.dofVector->data;
    std::vector<double> expected(n);
    const double h = 1e-5;
    const std::vector<double> q0(q, q + n);
    for (unsigned k = 0; k < n; ++k) {
        q[k] = q0[k] + h;
        const double above = kineticEnergy(s);
        q[k] = q0[k] - h;
        expected[k] = (above - kineticEnergy(s)) / (2.0 * h);
        q[k] = q0[k];
    }
    const auto momentumAt = [&](double shift) {
        for (unsigned k = 0; k < n; ++k)
            q[k] = q0[k] + shift * qd[k];
        return momentum(s);
    };
    const auto above = momentumAt(h), below = momentumAt(-h);
    momentumAt(0.0);
    MBS_ModelPhysicalDofVector Q(model.get());
    model->getVelInertiaForces(&s.q, &s.qd, &Q);
    const double scale = 1.0 + *std::max_element(above.begin(), above.end());
    for (unsigned k = 0; k < n; ++k)
        EXPECT_NEAR(Q.dofVector->data[k], expected[k] - (above[k] - below[k]) / (2.0 * h), 1e-8 * scale) << k;
}

std::string nameOf(const testing::TestParamInfo<Setting>& row) {
    const auto& [modes, itf, quadratic] = row.param;
    return std::to_string(modes) + (itf ? "Coupled" : "") + (quadratic ? "Quadratic" : "");
}

INSTANTIATE_TEST_SUITE_P(All, FlexibleBodySettings,
                         testing::Combine(testing::Values(1u, 2u, 3u, 4u, 20u), testing::Bool(),
                                          testing::Bool()),
                         nameOf);

TEST_F(FlexibleBody, StartsUndeformedWithThePoseOfItsKeys) {
    buildBody(3);
    MBS_ModelPhysicalDofVector q(model.get()), qd(model.get());
    model->copyInitialDataIntoPhysicalDofVector(&q, &qd);
    const double* r = q.dofVector->data;
    EXPECT_THAT(std::vector(r, r + 3), testing::ElementsAre(0.3, 0.1, -0.4));
    EXPECT_THAT(std::vector(qd.dofVector->data, qd.dofVector->data + 3),
                testing::ElementsAre(0.5, -0.25, 0.125));
    EXPECT_THAT(std::vector(r + 7, r + 10), testing::Each(0.0));
    EXPECT_THAT(std::vector(qd.dofVector->data + 7, qd.dofVector->data + 10), testing::Each(0.0));
    const Vec3 omega = G(Vec4::from(r + 3)) * Vec4::from(qd.dofVector->data + 3);
    EXPECT_NEAR(norm(omega - Vec3{{0.7, -1.1, 1.9}}), 0.0, 1e-14);
}

TEST_F(FlexibleBody, HandsOutFrequenciesAndTakesDampingRatiosByMode) {
    buildBody(3);
    MBM_DenseStandAloneVector frequencies(1, -1.0);
    model->getOmegaOfFlexDof(1, &frequencies);
    EXPECT_EQ(frequencies.size, 1u);
    model->getOmegaOfFlexDof(0, &frequencies);
    ASSERT_EQ(frequencies.size, 3u);
    for (unsigned j = 0; j < 3; ++j) {
        EXPECT_DOUBLE_EQ(frequencies.data[j], omega(j));
        EXPECT_DOUBLE_EQ(parameter().Dred[j], 2.0 * (j == 0 ? 0.05 : 0.02) / omega(j));
    }
    double inertia[6];
    parameter().getInertiaComponents(inertia);
    const auto J = points.invariant(7);
    EXPECT_THAT(inertia, testing::ElementsAre(J(0, 0), J(1, 1), J(2, 2), J(0, 1), J(0, 2), J(1, 2)));
}

struct BadBlock {
    const char* key;
    const char* value; // a modal file's content stands behind "file:"
    const char* text;
};

class BadFlexibleBody : public FlexibleBody, public testing::WithParamInterface<BadBlock> {};

TEST_P(BadFlexibleBody, IsRefusedWithItsText) {
    const auto& [key, value, text] = GetParam();
    std::string written = value;
    if (written.starts_with("file:"))
        written = writeModalFile(
            written == "file:no modes" ? points.file({{"SELMOD", ""}})
            : written == "file:small stiffness"
                ? points.file({{"GENSTIFF", fullBlock("GENSTIFF", 1, 1, [](auto, auto) { return 1.0; })}})
                : points.file({{"INVAR9", ""}}),
            "bad");
    addFlexibleBody(data, "f", writeModalFile(points.file()), {{key, written}});
    build();
    EXPECT_TRUE(model->isErrorOccured());
    EXPECT_THAT(takeMessages(), testing::HasSubstr(text));
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, BadFlexibleBody,
    testing::Values(BadBlock{"Is_Itf_active", "maybe", "Is_Itf_active"},
                    BadBlock{"GlobalDampingFactor", "", "GlobalDampingFactor"},
                    BadBlock{"GlobalDampingFactor", "0.1,,0.2", "GlobalDampingFactor"},
                    BadBlock{"GlobalDampingFactor", "0.1, much", "GlobalDampingFactor"},
                    BadBlock{"Path2MtxFile", "nowhere.mtx", "nowhere.mtx"},
                    BadBlock{"Path2MtxFile", "file:no modes",
                             "Flex body matrices are not valid! Please check mtx-file!\n"},
                    BadBlock{"Path2MtxFile", "file:small stiffness",
                             "Flex body matrices are not valid! Please check mtx-file!\n"},
                    BadBlock{"Path2MtxFile", "file:no INVAR9", "FeLib_MtxConverter: Invariant 9 missing!"}));

} // namespace
} // namespace velmora::test
