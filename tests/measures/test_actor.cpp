#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Actors : public ModelFixture {
  protected:
    Actors() {
        addRigidBody(data, "a", {{"LocationCenterMass", "0.1, 0, 0"}});
        addRigidBody(data, "b", {{"LocationCenterMass", "0, 0.4, 0"}});
    }
    IO_DataModelBlock* addActor(const std::string& uuid, const char* body, const char* target,
                                const char* most = nullptr) {
        IO_DataModelBlock* block = addBlock(data, "Actor", "KinematicActor", uuid,
                                            {{"BodyID4Actor", body},
                                             {"ScaleA_t", "0.5"},
                                             {"ScaleA_r", "0.25"},
                                             {"ScaleB", "3"},
                                             {"ActingPointIRF", "0.3, 0.2, -0.1"},
                                             {"TargetPointIRF", target}});
        if (most)
            block->addKeyValue("MaxUpdateOfActorTargets", most);
        return block;
    }
    /// The acting point as the driver reads it back.
    std::string place(IO_DataModelBlock* block, State& s) {
        model->getDataModelOfObject(&s.q, block);
        std::string text;
        block->getValue("ActingPointIRF", &text, IO_ValueCode::String);
        return text;
    }
    /// B-bar of the first body along x: scale times distance, with the acting point fixed to the body.
    double pullAlongX(State& s) {
        MBS_ModelPhysicalDofVector pull(model.get());
        model->updateForKinematicSolverAndComputeBbar(&s.q, &pull, &s.lambda);
        return pull.bodyData(0)[0] / 3.0;
    }
    State start() {
        State s(*model);
        model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        return s;
    }
};

TEST_F(Actors, PullAlongTheNegativeGradientOfTheWeightedDistance) {
    addActor("first", "a", "1, -0.4, 0.6");
    addActor("second", "a", "0, 0.8, 0.2")->replaceValue("ActingPointIRF", "-0.4, 0.6, 0.3");
    addActor("idle", "a", "9, 9, 9")->addKeyValue("active", "no");
    addActor("other", "b", "-1, 0.1, 0")->replaceValue("ScaleB", "0.7");
    build();
    EXPECT_EQ(model->getNumOfActors(), 4u);
    State s = start();
    MBS_ModelPhysicalDofVector pull(model.get());
    model->updateForKinematicSolverAndComputeBbar(&s.q, &pull, &s.lambda); // points become the bodies' own
    const auto& bodies = dynamic_cast<MBS_ModelObjectLists&>(*model).getBodies();
    const auto potential = [&](const State& at) {
        double sum = 0.0;
        for (const auto& body : bodies)
            for (const MBS_ActorPull* actor : body->actors) {
                const double* q = at.q.bodyData(body->bodyIndex);
                const Vec3 way =
                    actor->targetPoint - Vec3::from(q) - A(Vec4::from(q + 3)) * actor->actingPoint;
                sum += actor->isActive ? 0.5 * actor->weight(0, 0) * dot(way, way) : 0.0;
            }
        return sum;
    };
    std::mt19937 random{7};
    for (int n = 0; n < 3; ++n) {
        s = randomState(*model, random); // norms other than 1
        model->updateForKinematicSolverAndComputeBbar(&s.q, &pull, &s.lambda);
        for (unsigned i = 0; i < s.q.getNumOfDof(); ++i) {
            const double h = 1e-5, x = s.q.dofVector->data[i];
            s.q.dofVector->data[i] = x + h;
            const double above = potential(s);
            s.q.dofVector->data[i] = x - h;
            const double below = potential(s);
            s.q.dofVector->data[i] = x;
            EXPECT_NEAR(pull.dofVector->data[i], -(above - below) / (2 * h), 1e-8) << i;
        }
    }
}

TEST_F(Actors, GiveTheMatrixOfThePullsAndTheHold) {
    addActor("first", "a", "1, -0.4, 0.6");
    addActor("second", "a", "0, 0.8, 0.2")->replaceValue("ActingPointIRF", "-0.4, 0.6, 0.3");
    build();
    State s = start();
    DerivativeChecker checker(*model);
    std::mt19937 random{3};
    pullAlongX(s);
    s = randomState(*model, random);
    const Table found = checker.analytic(KinematicSolverMatrix, s);
    const auto& body = *dynamic_cast<MBS_ModelObjectLists&>(*model).getBodies()[0];
    Mat<7, 7> expected;
    for (unsigned i = 0; i < 7; ++i)
        expected(i, i) = i < 3 ? 0.5 : 0.25;
    for (const MBS_ActorPull* actor : body.actors) {
        const Mat34 D = velmora::J(Vec4::from(s.q.bodyData(0) + 3), actor->actingPoint);
        Mat<3, 7> J;
        for (unsigned i = 0; i < 3; ++i) {
            J(i, i) = 1.0;
            for (unsigned j = 0; j < 4; ++j)
                J(i, 3 + j) = D(i, j);
        }
        expected += 3.0 * transposeTimes(J, J);
    }
    for (unsigned i = 0; i < 7; ++i)
        for (unsigned j = 0; j < 7; ++j)
            EXPECT_NEAR(found(i, j), expected(i, j), 1e-13);
}

struct Move {
    const char* target; // the acting point starts at x = 0.3
    const char* most;
    std::vector<double> steps; // distances of the target along x before each question
};

class Moves : public Actors, public testing::WithParamInterface<Move> {};

TEST_P(Moves, AreSplitIntoSteps) {
    const auto& [target, most, steps] = GetParam();
    addActor("hand", "a", target, most);
    build();
    State s = start();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        EXPECT_NEAR(pullAlongX(s), steps[i], 1e-12);
        EXPECT_EQ(model->isFinalStateReached(), i + 1 == steps.size());
    }
    EXPECT_TRUE(model->isFinalStateReached());
    EXPECT_NEAR(pullAlongX(s), steps.back(), 1e-12);
}

INSTANTIATE_TEST_SUITE_P(All, Moves,
                         testing::Values(Move{"10.3, 0.2, -0.1", "3", {2.5, 5.0, 7.5, 10.0}},
                                         Move{"10.3, 0.2, -0.1", "5", {5.0, 10.0}},
                                         Move{"10.3, 0.2, -0.1", "11", {10.0}},
                                         Move{"10.3, 0.2, -0.1", "-1", {10.0}},
                                         Move{"10.3, 0.2, -0.1", "0", {10.0}},
                                         Move{"10.3, 0.2, -0.1", nullptr, {10.0}},
                                         Move{"0.30000000001, 0.2, -0.1", "1e-12", {1e-11}}));

TEST_F(Actors, MoveOneAfterTheOther) {
    addActor("idle", "b", "8.3, 0.2, -0.1", "1")->addKeyValue("active", "no");
    addActor("first", "a", "2.3, 0.2, -0.1", "1");
    addActor("second", "a", "0.3, 2.2, -0.1", "1");
    build();
    const auto& actors = dynamic_cast<MBS_ModelObjectLists&>(*model).getBodies()[0]->actors;
    const double expected[][2] = {{1.3, 1.2}, {2.3, 1.2}, {2.3, 2.2}};
    for (const auto& [x, y] : expected) {
        EXPECT_NEAR(actors[0]->targetPoint(0), x, 1e-14);
        EXPECT_NEAR(actors[1]->targetPoint(1), y, 1e-14);
        EXPECT_EQ(model->isFinalStateReached(), y == 2.2);
    }
}

TEST_F(Actors, TakeNewTargetsAndPointsBetweenSolves) {
    IO_DataModelBlock* block = addActor("hand", "a", "4.3, 0.2, -0.1", "1");
    build();
    State s = start();
    EXPECT_EQ(place(block, s), "0.300000, 0.200000, -0.100000"); // as given, before the first solve
    EXPECT_NEAR(pullAlongX(s), 1.0, 1e-12);
    s.q.bodyData(0)[0] += 0.5;
    EXPECT_EQ(place(block, s), "0.800000, 0.200000, -0.100000");
    // A new target counts from the one reached so far, which is 1.3; the limit stays.
    IO_DataModelBlock change("Actor", "hand", "hand", "");
    change.addKeyValue("TargetPointIRF", "3.3, 0.2, -0.1");
    change.addKeyValue("MaxUpdateOfActorTargets", "100");
    model->modifyModelElement(&change);
    EXPECT_NEAR(pullAlongX(s), 2.3 - 0.8, 1e-12);
    IO_DataModelBlock point("Actor", "hand", "hand", "");
    point.addKeyValue("ActingPointIRF", "0, 0, 0");
    point.addKeyValue("ScaleB", "6");
    model->modifyModelElement(&point);
    EXPECT_NEAR(pullAlongX(s), 2.0 * 2.3, 1e-12); // twice the weight
    EXPECT_EQ(place(&change, s), "");             // a block without the key stays as it is
    IO_DataModelBlock off("Actor", "hand", "hand", "");
    off.addKeyValue("active", "no");
    model->modifyModelElement(&off);
    EXPECT_EQ(pullAlongX(s), 0.0);
    EXPECT_TRUE(model->isFinalStateReached());
    model->modifyModelElement(nullptr);
    EXPECT_EQ(takeMessages(), "");
}

TEST_F(Actors, ThatFailLeaveNothingInTheirBody) {
    for (const auto& [key, value, text] :
         {std::tuple("BodyID4Actor", "x", "Body with ID x does not exist!\n"),
          {"ScaleA_t", "many", "ERROR: In definition of key <ScaleA_t>"},
          {"ScaleB", "", "ERROR: In definition of key <ScaleB>"},
          {"ActingPointIRF", "0, 0", "ERROR: In definition of key <ActingPointIRF>"},
          {"TargetPointIRF", "0, 0, z", "ERROR: In definition of key <TargetPointIRF>"}}) {
        addActor("hand", "a", "1, 1, 1")->replaceValue(key, value);
        build();
        EXPECT_THAT(takeMessages(), HasSubstr(text)) << key;
        EXPECT_EQ(model->getNumOfActors(), 0u);
        EXPECT_TRUE(dynamic_cast<MBS_ModelObjectLists&>(*model).getBodies()[0]->actors.empty());
        data.blocks.pop_back();
        data.blockKinds.pop_back();
    }
}

} // namespace
} // namespace velmora::test
