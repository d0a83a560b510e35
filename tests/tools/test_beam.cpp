#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
#include "tools/beam/BeamModel.h"
#include "velmora/bodies/MBS_FlexBody_Full.h"
#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

#include <sys/wait.h>

namespace velmora::tools {
namespace {

BeamModel slenderBeam(int elements) {
    return {2.0, Section::rectangle(0.004, 0.002), {210e9, 0.3, 7850.0}, elements};
}

// Roots of cos(x) cosh(x) = 1: free and clamped ends alike (S. S. Rao, "Vibration of Continuous Systems").
double bendingFrequency(const BeamModel& beam, double I, double root) {
    const double massPerLength = beam.material.density * beam.section.area;
    return root * root / (2.0 * M_PI * beam.length * beam.length) *
           std::sqrt(beam.material.youngsModulus * I / massPerLength);
}

TEST(Beam, FreeFrequenciesAreThoseOfTheClosedFormulas) {
    const BeamModel beam = slenderBeam(40);
    std::string error;
    const ModalBody body = makeModalBody(beam, HeldNodes::None, 60, 1, error);
    ASSERT_EQ(error, "");
    std::vector<double> expected;
    for (const double root : {4.730040744862704, 7.853204624095838, 10.99560783800167})
        for (const double I : {beam.section.Iy, beam.section.Iz})
            expected.push_back(bendingFrequency(beam, I, root));
    const double wave = std::sqrt(beam.material.youngsModulus / beam.material.density) / (2.0 * beam.length);
    const double shearModulus = beam.material.youngsModulus / (2.0 * (1.0 + beam.material.poissonsRatio));
    const double polar = beam.section.Iy + beam.section.Iz;
    const double twist = std::sqrt(shearModulus * beam.section.torsion / (beam.material.density * polar)) /
                         (2.0 * beam.length);
    expected.push_back(twist);
    expected.push_back(wave);
    for (const double frequency : expected) {
        const double nearest = (body.frequencies.array() - frequency).abs().minCoeff();
        EXPECT_LT(nearest, 3e-4 * frequency) << frequency;
    }
}

TEST(Beam, HeldInterfaceGivesTheStaticDeflectionOfACantilever) {
    const BeamModel beam = slenderBeam(8);
    std::string error;
    const ModalBody body = makeModalBody(beam, HeldNodes::Both, 2, 1, error);
    ASSERT_EQ(error, "");
    // A load at the last node, balanced at the first: the deformation against the first node's frame.
    const Eigen::Index last = body.nodeShapes.rows() - 6;
    const double force = 0.1;
    const Eigen::VectorXd omega2 = (2.0 * M_PI * body.frequencies).cwiseAbs2();
    Eigen::VectorXd load = body.nodeShapes.row(last + 1).transpose() - body.nodeShapes.row(1).transpose();
    load -= beam.length * body.nodeShapes.row(5).transpose();
    const Eigen::VectorXd eta = (force * load).cwiseQuotient(omega2);
    const Eigen::VectorXd node = body.nodeShapes * eta;
    const double deflection = node(last + 1) - node(1) - beam.length * node(5);
    const double EI = beam.material.youngsModulus * beam.section.Iz;
    EXPECT_NEAR(deflection, force * std::pow(beam.length, 3) / (3.0 * EI), 1e-9 * deflection);
    EXPECT_NEAR(node(last + 5) - node(5), force * std::pow(beam.length, 2) / (2.0 * EI), 1e-9 * deflection);
}

// With node 1 held, the frame moves by what the shapes move the node: its inertia is that of the undeformed
// body.
TEST(Beam, HeldAtOneEndHasTheFrequenciesOfACantilever) {
    const BeamModel beam = slenderBeam(30);
    std::string error;
    const ModalBody body = makeModalBody(beam, HeldNodes::Both, 80, 1, error);
    ASSERT_EQ(error, "");
    const Eigen::MatrixXd turn = -body.nodeShapes.middleRows(3, 3);
    const Eigen::Vector3d arm = body.nodePositions.col(0);
    Eigen::MatrixXd shift = -body.nodeShapes.middleRows(0, 3);
    for (Eigen::Index j = 0; j < shift.cols(); ++j)
        shift.col(j) -= Eigen::Vector3d(turn.col(j)).cross(arm);
    const Eigen::MatrixXd mass = body.invariants.modalMass +
                                 body.invariants.mass * shift.transpose() * shift +
                                 turn.transpose() * body.invariants.inertia * turn;
    const Eigen::VectorXd omega2 = (2.0 * M_PI * body.frequencies).cwiseAbs2();
    const Eigen::GeneralizedSelfAdjointEigenSolver<Eigen::MatrixXd> solver(
        Eigen::MatrixXd(omega2.asDiagonal()), mass);
    const Eigen::VectorXd frequencies = solver.eigenvalues().cwiseSqrt() / (2.0 * M_PI);
    for (const double root : {1.875104068711961, 4.694091132974174, 7.854757438237613})
        for (const double I : {beam.section.Iy, beam.section.Iz}) {
            const double expected = bendingFrequency(beam, I, root);
            EXPECT_LT((frequencies.array() - expected).abs().minCoeff(), 2e-5 * expected) << expected;
        }
}

class BeamInTheKernel : public test::ModelFixture, public testing::WithParamInterface<HeldNodes> {
  protected:
    void SetUp() override {
        beam = {1.3, Section::rectangle(0.05, 0.08), {70e9, 0.33, 2700.0}, 4};
        std::string error;
        body = makeModalBody(beam, GetParam(), 5, 100, error);
        ASSERT_EQ(error, "");
        const std::string path = test::writeModalFile("", "beam");
        ASSERT_EQ(writeModalFile(body, path), "");
        test::addFlexibleBody(data, "f", path);
        build();
    }
    const MBS_FlexBody_Full_Parameter& parameter() {
        const auto& bodies = dynamic_cast<MBS_InternalModel&>(*model).getBodies();
        return *dynamic_cast<const MBS_FlexBody_Full&>(*bodies[0]).flexParameter;
    }

    BeamModel beam;
    ModalBody body;
};

TEST_P(BeamInTheKernel, MovesWithTheKineticEnergyOfItsPointMasses) {
    const auto M = static_cast<unsigned>(body.frequencies.size());
    std::mt19937 random{9};
    for (int n = 0; n < 3; ++n) {
        test::State s = test::randomState(*model, random);
        double *q = s.q.dofVector->data, *qd = s.qd.dofVector->data;
        const double length = norm(Vec4::from(q + 3));
        ((1.0 / length) * Vec4::from(q + 3)).to(q + 3);
        MBS_ModelPhysicalDofVector momenta(model.get());
        model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, &s.qdd);
        model->getAccInertiaForces(&s.qd, &momenta);
        const double energy = 0.5 * std::inner_product(qd, qd + 7 + M, momenta.dofVector->data, 0.0);

        const Vec3 velocity = Vec3::from(qd), w = Gbar(Vec4::from(q + 3)) * Vec4::from(qd + 3);
        const Mat3 rotation = A(Vec4::from(q + 3));
        Eigen::VectorXd eta(M), rate(M);
        for (unsigned j = 0; j < M; ++j) {
            eta(j) = q[7 + j] / parameter().omegaOfModes[j];
            rate(j) = qd[7 + j] / parameter().omegaOfModes[j];
        }
        const MassField cloud = beam.pointMasses();
        const Eigen::MatrixXd N = beam.interpolation();
        const Eigen::VectorXd u = N * body.nodeShapes * eta, du = N * body.nodeShapes * rate;
        double expected = 0.0;
        for (Eigen::Index p = 0; p < cloud.positions.cols(); ++p) {
            const Vec3 place = Vec3::from(cloud.positions.col(p).data()) + Vec3::from(u.data() + 3 * p);
            const Vec3 v = velocity + rotation * (cross(w, place) + Vec3::from(du.data() + 3 * p));
            expected += 0.5 * cloud.masses.coeff(p, p) * dot(v, v);
        }
        EXPECT_NEAR(energy, expected, 1e-10 * expected);
    }
}

TEST_P(BeamInTheKernel, IsReadBackWithSkewCouplingAndItsShapes) {
    const auto M = static_cast<unsigned>(body.frequencies.size());
    const auto& read = parameter();
    ASSERT_EQ(read.numOfModes, M);
    EXPECT_NEAR(read.mass, 1.3 * 0.05 * 0.08 * 2700.0, 1e-12);
    for (unsigned j = 0; j < M; ++j) {
        EXPECT_DOUBLE_EQ(read.omegaOfModes[j], 2.0 * M_PI * body.frequencies(j));
        EXPECT_NEAR(read.Kred[j], 1.0, 1e-14);
        for (unsigned k = 0; k < 3 * M; ++k)
            EXPECT_NEAR(read.Wtf->getValue(j, k), -read.Wtf->getValue(k % M, k - k % M + j), 1e-16);
    }
    MBM_GeneralDenseMatrix shapes(6, 1);
    read.mtxContent->modes->addNodeShapes(104, shapes);
    for (unsigned j = 0; j < M; ++j)
        for (unsigned i = 0; i < 6; ++i)
            EXPECT_NEAR(shapes.getValue(i, j) * read.omegaOfModes[j], body.nodeShapes(24 + i, j), 1e-13);
}

INSTANTIATE_TEST_SUITE_P(Interfaces, BeamInTheKernel,
                         testing::Values(HeldNodes::None, HeldNodes::First, HeldNodes::Last,
                                         HeldNodes::Both));

TEST(BeamProgram, SaysWhatIsWrongWithItsOptions) {
    const auto exitCode = [](const std::string& options) {
        return WEXITSTATUS(std::system((VELMORA_BEAM + options + " >/dev/null 2>&1").c_str()));
    };
    const std::string file = " " + testing::TempDir() + "velmora_beam_test.mtx";
    EXPECT_EQ(exitCode(file + " --circle 0.01"), 0);
    EXPECT_EQ(exitCode(" --help"), 0);
    for (const char* options :
         {"", " --circle 0", " --circle 0.01 --rectangle 1 1", " --circle 0.01 --elements 0", " --circle x",
          " --circle 0.01 --interface left", " --circle 0.01 --length -1"})
        EXPECT_EQ(exitCode(file + options), 2) << options;
    EXPECT_EQ(exitCode(" no/such/folder/x.mtx --circle 0.01"), 1);
    EXPECT_EQ(exitCode(file + " --circle 0.01 --interface none --modes 0"), 1);
}

} // namespace
} // namespace velmora::tools
