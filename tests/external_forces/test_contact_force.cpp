#include "tests/contact/ContactCase.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/external_forces/MBS_RiBo_RiBo_Contact.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

using testing::HasSubstr;

// A ball of 0.5 m, the first body, over a flat box.
class ContactForce : public ModelFixture {
  protected:
    ContactForce() {
        addRigidBody(data, "ball",
                     {{"LocationCenterMass", "0, 0, 0"}, {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"}});
        addRigidBody(data, "box",
                     {{"LocationCenterMass", "0, 0, 0"}, {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"}});
    }
    IO_DataModelBlock* addContact(bool hasBlocks = true) {
        return addBlock(data, "Force", "RigidContact", "contact",
                        {{"BodyIDs", "ball, box"},
                         {"Path2ContactSurface1", folder.write("ball.obj", ballObj(0.5, 6))},
                         {"Path2ContactSurface2", folder.write("box.obj", boxObj({2, 2, 0.5}))},
                         {"YoungsModulus1", "1e5"},
                         {"YoungsModulus2", "2e5"},
                         {"PoissonsRatio1", "0.3"},
                         {"PoissonsRatio2", "0.2"},
                         {"LayerThickness1", "0.1"},
                         {"LayerThickness2", "0.1"},
                         {"IsNumericJacobiRequired", hasBlocks ? "yes" : "no"},
                         {"Task", "0"},
                         {"MaxPenetration", "0.2"},
                         {"DampingCompression", "10"},
                         {"DampingExpansion", "10"},
                         {"ModeOfDampingTransition", "0"},
                         {"DepthOfDampingTransition", "0"},
                         {"SlidingFrictionCoeff", "0.3"},
                         {"FrictionRegularizationVelocity", "0.1"}});
    }
    /// The ball at this height, turning and sliding over the box.
    State stateAt(double height) {
        State s(*model);
        model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        s.q.bodyData(0)[0] = 0.13;
        s.q.bodyData(0)[2] = height;
        for (unsigned i = 0; i < s.qd.getNumOfDof(); ++i) {
            s.q.dofVector->data[i] += 0.01 * std::sin(3.0 * i);
            s.qd.dofVector->data[i] = 0.2 * std::cos(5.0 * i);
            s.qdd.dofVector->data[i] = 0.0;
        }
        std::fill_n(s.lambda.dofVector->data, s.lambda.getNumOfConstraints(), 0.0);
        return s;
    }
    MBS_Force& contact() { return *dynamic_cast<MBS_InternalModel&>(*model).getForces().at(0); }

    ScratchFolder folder;
};

TEST_F(ContactForce, BlocksAgreeWithDifferences) {
    addContact();
    DerivativeChecker checker(build());
    State s = stateAt(0.96);
    for (const unsigned code : {ExternalForce_q, ExternalForce_qd}) {
        const Table a = checker.analytic(code, s), d = checker.difference(code, s);
        double largest = 0.0, difference = 0.0;
        for (std::size_t k = 0; k < a.data.size(); ++k) {
            largest = std::max(largest, std::fabs(a.data[k]));
            difference = std::max(difference, std::fabs(a.data[k] - d.data[k]));
        }
        EXPECT_GT(largest, 1.0);
        EXPECT_LT(difference, 2e-4 * largest) << code; // differences pass kinks of the law
    }
}

TEST_F(ContactForce, BalancesAndShowsItsResults) {
    addContact(false);
    build();
    EXPECT_TRUE(contact().jacobianEntries.empty());
    State s = stateAt(0.96);
    MBS_ModelPhysicalDofVector Q(model.get());
    model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, &s.qdd);
    model->getExternalForces(0.0, &s.q, &s.qd, &s.qdd, &Q);
    MBS_Force::ResultData results;
    contact().getForceResultData(&s.q, &s.qd, &s.qdd, &s.lambda, results);
    const Vec3 F = Vec3::from(Q.bodyData(0));
    EXPECT_GT(F(2), 1.0);
    EXPECT_NEAR(norm(F + Vec3::from(Q.bodyData(1))), 0.0, 1e-12 * norm(F));
    EXPECT_NEAR(norm(results[1] - F), 0.0, 1e-12 * norm(F));
    EXPECT_NEAR(norm(results[5] + F), 0.0, 1e-12 * norm(F));
    const Vec3 r1 = Vec3::from(s.q.bodyData(0)), r2 = Vec3::from(s.q.bodyData(1));
    EXPECT_NEAR(norm(results[3] + results[7] + cross(r1 - r2, F)), 0.0, 1e-9 * norm(F)); // about r2
    const Mat34 G1 = G(Vec4::from(s.q.bodyData(0) + 3));
    EXPECT_NEAR(norm(Vec4::from(Q.bodyData(0) + 3) - transposeTimes(G1, results[3])), 0.0, 1e-12 * norm(F));
}

TEST_F(ContactForce, IsUpdatedWithoutAllocations) {
    addContact();
    build();
    State s = stateAt(0.96);
    MBS_ModelPhysicalDofVector Q(model.get());
    model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, &s.qdd);
    const unsigned long before = allocationCount();
    model->getExternalForces(0.0, &s.q, &s.qd, &s.qdd, &Q);
    model->updateMatricesForJacobian(0.0, &s.q, &s.qd, &s.qdd, &s.lambda);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_GT(Q.bodyData(0)[2], 1.0);
}

TEST_F(ContactForce, DoesNothingOutOfContact) {
    addContact();
    DerivativeChecker checker(build());
    State s = stateAt(1.3);
    for (const unsigned code : {ExternalForce_q, ExternalForce_qd})
        EXPECT_THAT(checker.analytic(code, s).data, testing::Each(0.0));
    MBS_Force::ResultData results;
    results.fill({{9, 9, 9}});
    contact().getForceResultData(&s.q, &s.qd, &s.qdd, &s.lambda, results);
    for (const Vec3& v : results)
        EXPECT_EQ(norm(v), 0.0);
}

TEST_F(ContactForce, NamesWhatIsWrong) {
    for (const auto& [key, value, text] :
         {std::tuple("Task", "x", "In definition of key <Task>"),
          {"Path2ContactSurface1", "nowhere.obj", "ERROR: definition of contact not possible!"},
          {"OrientationContactGraphics2", "1, 0", "In definition of key <OrientationContactGraphics2>"}}) {
        SCOPED_TRACE(key);
        IO_DataModelBlock* block = addContact();
        if (!block->isKeyInBlock(key))
            block->addKeyValue(key, value);
        block->replaceValue(key, value);
        build();
        EXPECT_THAT(takeMessages(), HasSubstr(text));
        EXPECT_EQ(model->getNumOfExternalForces(), 0u);
        data.blocks.pop_back();
        data.blockKinds.pop_back();
    }
    IO_DataModelBlock* block = addContact();
    for (const char* key : {"Path2ContactSurface1", "Path2ContactSurface2"})
        block->replaceValue(key, std::string(1024, 'x'));
    build();
    EXPECT_THAT(takeMessages(), HasSubstr("ERROR: Path2ContactSurface1 is longer than 1023 characters!\n"
                                          "ERROR: Path2ContactSurface2 is longer than 1023 characters!\n"));
}

} // namespace
} // namespace velmora::test
