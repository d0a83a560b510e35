#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/model/internal/MBS_InternalModel.h"
#include "velmora/platform/DynamicLibrary.h"

#include <gmock/gmock.h>

#include <fstream>

namespace velmora::test {
namespace {

using testing::HasSubstr;

// Bodies "a", "b" carry the force; measures: a place on "c", one on "a", and the speed of c's centre.
class UserForces : public ModelFixture {
  protected:
    UserForces() {
        addRigidBody(data, "a");
        addRigidBody(data, "b", {{"LocationCenterMass", "0.4, 0.3, -0.6"}});
        addRigidBody(data, "c", {{"LocationCenterMass", "0, 0, 0"}});
        addMeasure("place", "c, 0", "disp", "X", "0.2, 0.7, -0.4");
        addMeasure("own", "a, 0", "disp", "Y", "0.5, 0.1, 0.9");
        addMeasure("speed", "c, 0", "vel", "Z", "0, 0, 0");
    }
    void addMeasure(const std::string& label, const char* ids, const char* mode, const char* coordinate,
                    const char* point) {
        addBlock(data, "Measure", "Translational", label,
                 {{"BodyIDs", ids},
                  {"MeasureMode", mode},
                  {"MeasureCoordinate", coordinate},
                  {"MeasureLocation_Body1", point},
                  {"MeasureLocation_Body2", "0.1, 0.2, 0.3"}});
    }
    IO_DataModelBlock* addUserForce(const std::string& library, const char* ids, const char* direction,
                                    const std::vector<std::string>& labels) {
        IO_DataModelBlock* block = addBlock(data, "Force", "ExternalSubroutine", "user",
                                            {{"BodyIDs", ids},
                                             {"ForceDirectionType", direction},
                                             {"Path2Dll", library},
                                             {"PointOfApplication_Body1", "0.6, -0.1, 0.5"},
                                             {"PointOfApplication_Body2", "0.7, 0.2, -0.3"}});
        for (std::size_t k = 0; k < labels.size(); ++k)
            block->addKeyValue("Measure_" + std::to_string(k), labels[k]);
        return block;
    }
    MBS_Force& force() { return *dynamic_cast<MBS_InternalModel&>(*model).getForces().at(0); }
    static std::string takeLog(const char* library) {
        return DynamicLibrary(library).getFunction<const char* (*)()>("takeLog")();
    }
};

using Case = std::tuple<const char*, const char*, const char*>; // library, bodies, frame

class UserForceDerivatives : public UserForces, public testing::WithParamInterface<Case> {};

TEST_P(UserForceDerivatives, AgreeWithDifferences) {
    const auto& [library, ids, direction] = GetParam();
    addUserForce(library, ids, direction, {"place", "own", "Speed"});
    DerivativeChecker checker(build());
    EXPECT_THAT(checker.check(ExternalForce_q, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.check(ExternalForce_qd, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, UserForceDerivatives,
                         testing::Combine(testing::Values(VELMORA_TEST_PLAIN, VELMORA_TEST_PER_BODY),
                                          testing::Values("a, 0", "a, b"),
                                          testing::Values("BodyFixed", "SpaceFixed")));

// Without measures the library gives c_i + t, i.e. 0.4 (1 + kind + 0.3 i) + t.
TEST_F(UserForces, FillGeneralisedForcesAndResults) {
    addUserForce(VELMORA_TEST_PLAIN, "a, b", "SpaceFixed", {});
    build();
    takeLog(VELMORA_TEST_PLAIN);
    State s(*model);
    MBS_ModelPhysicalDofVector Q(model.get());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    std::fill_n(s.qdd.dofVector->data, s.qdd.getNumOfDof(), 0.0);
    model->updateMatricesForEquationOfMotion(0.5, &s.q, &s.qd, &s.qdd);
    model->getExternalForces(0.5, &s.q, &s.qd, &s.qdd, &Q);
    const Vec3 f{{0.9, 1.02, 1.14}}, c{{1.3, 1.42, 1.54}};
    const Vec3 points[2] = {{{0.6, -0.1, 0.5}}, {{0.7, 0.2, -0.3}}};
    for (unsigned i = 0; i < 2; ++i) {
        const double sign = i == 0 ? 1.0 : -1.0;
        const Vec3 r = Vec3::from(s.q.bodyData(i)), arm = points[i] - r;
        const Vec4 e = Vec4::from(s.q.bodyData(i) + 3);
        EXPECT_NEAR(norm(Vec3::from(Q.bodyData(i)) - sign * f), 0.0, 1e-14);
        // A change of the norm of e moves the point by 2 (A - 1) u.
        const double ofNorm = 2.0 * dot(arm - transposeTimes(A(e), arm), f);
        const Vec4 expected = sign * (transposeTimes(G(e), c + cross(arm, f)) + ofNorm * e);
        EXPECT_NEAR(norm(Vec4::from(Q.bodyData(i) + 3) - expected), 0.0, 1e-13);
    }
    EXPECT_EQ(takeLog(VELMORA_TEST_PLAIN), "force\ntorque\nforce\ntorque\n");
    MBS_Force::ResultData results;
    force().getForceResultData(&s.q, &s.qd, &s.qdd, &s.lambda, results);
    for (const auto& [k, expected] : {std::pair(0, points[0]),
                                      {1, Vec3{{1, 2, 3}}},
                                      {3, Vec3{{4, 5, 6}}},
                                      {4, points[1]},
                                      {5, Vec3{{-1, -2, -3}}}})
        EXPECT_NEAR(norm(results[static_cast<std::size_t>(k)] - expected), 0.0, 1e-14) << k;
}

TEST_F(UserForces, CallTheLibraryInOrder) {
    IO_DataModelBlock* block = addUserForce(VELMORA_TEST_PER_BODY, "a, 0", "BodyFixed", {"place"});
    block->addKeyValue("Measure_2", "own"); // behind a gap
    const std::string parameters = testing::TempDir() + "velmora_user.par";
    std::ofstream(parameters) << "1\n";
    block->addKeyValue("Path2Par", parameters);
    takeLog(VELMORA_TEST_PER_BODY);
    build();
    std::mt19937 random{4};
    State s = randomState(*model, random);
    MBS_ModelPhysicalDofVector Q(model.get());
    model->updateMatricesForEquationOfMotion(0.5, &s.q, &s.qd, &s.qdd);
    model->updateMeasures(0.5, &s.q, &s.qd, &s.qdd);
    model->getExternalForces(0.5, &s.q, &s.qd, &s.qdd, &Q);
    model->updateMatricesForJacobian(0.5, &s.q, &s.qd, &s.qdd, &s.lambda);
    model->setTimeOfLastSuccessfulStep(0.25);
    // Blocks: by q of a, for its own turning, and by q of c, which the measure reads.
    EXPECT_EQ(takeLog(VELMORA_TEST_PER_BODY), "create 1 <velmora_user.par>\nforce_Body1\ntorque_Body1\n"
                                              "force_Body1\ntorque_Body1\ndforce_Body1 0\ndtorque_Body1 0\n"
                                              "time 0.250000\n");
    for (const auto& entry : force().jacobianEntries)
        EXPECT_TRUE(entry.qeQ && !entry.qeQd);
}

TEST_F(UserForces, HaveBlocksForWhatTheyDependOnAlone) {
    addUserForce(VELMORA_TEST_PLAIN, "a, 0", "SpaceFixed", {"speed", "nobody"});
    build();
    ASSERT_EQ(force().jacobianEntries.size(), 1u); // velocities of c alone
    EXPECT_EQ(force().jacobianEntries[0].colBody, 2u);
    EXPECT_FALSE(force().jacobianEntries[0].qeQ);
    EXPECT_TRUE(force().jacobianEntries[0].qeQd);
    EXPECT_EQ(force().numOfDependencyMeasures, 2u);
    EXPECT_EQ(force().dependencyMeasures.size(), 1u);
    EXPECT_THAT(takeLog(VELMORA_TEST_PLAIN), HasSubstr("create 2 <>\n"));
}

struct BadForce {
    const char* key;
    const char* value;
    std::string text;
};

class BadUserForces : public UserForces, public testing::WithParamInterface<BadForce> {};

TEST_P(BadUserForces, AreRefusedWithTheirText) {
    const auto& [key, value, text] = GetParam();
    IO_DataModelBlock* block = addUserForce(VELMORA_TEST_PLAIN, "a, 0", "BodyFixed", {"place"});
    if (!block->isKeyInBlock(key))
        block->addKeyValue(key, value);
    block->replaceValue(key, value);
    build();
    EXPECT_THAT(takeMessages(), HasSubstr(text));
    EXPECT_EQ(model->getNumOfExternalForces(), 0u);
}

const std::string incomplete = "> in the dynamic library <" VELMORA_TEST_INCOMPLETE ">!\n";

INSTANTIATE_TEST_SUITE_P(
    All, BadUserForces,
    testing::Values(
        BadForce{"Path2Dll", "no/such.so",
                 "ERROR in MBS_Single_RiBo_ExtSubForceObject: path to dll does not exist!"},
        BadForce{"Path2Par", "no/such.par",
                 "ERROR in MBS_Single_RiBo_ExtSubForceObject: path to force parameter file does not exist!"},
        BadForce{"Path2Dll", "/dev/null", "path to dll does not exist!"},
        BadForce{"Path2Dll", __FILE__, "ERROR: Could not load the dynamic library <" __FILE__ ">!\n"},
        BadForce{"Path2Dll", VELMORA_TEST_INCOMPLETE,
                 "ERROR: Could not find function <get3x1TorqueVector" + incomplete +
                     "ERROR: Could not find function <get3x1ForceDerivative" + incomplete +
                     "ERROR: Could not find function <get3x1TorqueDerivative" + incomplete +
                     "ERROR: Could not find function <get3x1ForceAndTorqueVector4ResultFile" + incomplete +
                     "ERROR: Could not find function <setHistory" + incomplete},
        BadForce{"BodyIDs", "0, a", "ERROR: Check BodyIDs, either Body-Ground or Body-Body Force is valid\n"},
        BadForce{"BodyIDs", "x, 0", "Body not found using bodyID: x!\n"},
        BadForce{"ForceDirectionType", "Free", "ERROR: ForceDirectionType <Free> not valid!\n"},
        BadForce{"PointOfApplication_Body1", "0, 0", "Wrong number of arguments"}));

TEST_F(UserForces, BetweenTwoBodiesNameTheirOwnClass) {
    IO_DataModelBlock* block = addUserForce("no/such.so", "a, b", "SpaceFixed", {});
    build();
    EXPECT_THAT(takeMessages(),
                HasSubstr("ERROR in MBS_RiBo_RiBo_ExtSubForceObject: path to dll does not exist!"));
    block->replaceValue("Path2Dll", VELMORA_TEST_INCOMPLETE); // has the plain form
    build();
    EXPECT_THAT(takeMessages(), HasSubstr("ERROR: Could not find function <get3x1TorqueVector" + incomplete));
    block->replaceValue("Path2Dll", VELMORA_TEST_PER_BODY);
    block->addKeyValue("Path2Par", "no/such.par");
    build();
    EXPECT_THAT(takeMessages(), HasSubstr("ERROR in MBS_RiBo_RiBo_ExtSubForceObject: path to force parameter "
                                          "file does not exist!"));
}

TEST_F(UserForces, HandTheirMemoryOn) {
    addUserForce(VELMORA_TEST_PLAIN, "a, b", "BodyFixed", {"place"});
    build();
    model->setTimeOfLastSuccessfulStep(0.25);
    std::vector<double> numbers;
    MBS_History saved(&numbers);
    model->exchangeHistory(&saved);
    build();
    takeLog(VELMORA_TEST_PLAIN);
    MBS_History history{std::span<const double>(numbers)};
    model->exchangeHistory(&history);
    EXPECT_TRUE(history.isWhole());
    EXPECT_EQ(takeLog(VELMORA_TEST_PLAIN), "history 2 7.000000 0.250000\n");
    history = MBS_History{std::span<const double>(numbers).first(numbers.size() - 1)};
    model->exchangeHistory(&history);
    EXPECT_FALSE(history.isWhole());
    EXPECT_EQ(takeLog(VELMORA_TEST_PLAIN), "") << "the library got less than it gave";
}

TEST_F(UserForces, LibrariesAreLoadedAndReleasedAHundredTimes) {
    addUserForce(VELMORA_TEST_PLAIN, "a, b", "BodyFixed", {"place"});
    for (int n = 0; n < 100; ++n)
        EXPECT_EQ(build().getNumOfExternalForces(), 1u);
}

} // namespace
} // namespace velmora::test
