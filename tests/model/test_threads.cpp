#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"

#include <thread>

namespace velmora::test {
namespace {

// Everything that a model does, from building to matrices, in a thread of its own.
double runModel(unsigned seed) {
    IO_DataModel data("thread " + std::to_string(seed));
    IO_OutputManager output("", "thread");
    output.messageChannel->echoToConsole = false;
    addRigidBody(data, "a");
    addRigidBody(data, "b", {{"Mass", "7"}});
    addBlock(data, "Body", "unknown", "c", {});
    addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "0, 0, -9.81"}});
    const std::unique_ptr<MBS_Model> model(MBS_Model::makeModel(&data, &output));
    std::mt19937 random{seed};
    DerivativeChecker checker(*model);
    double sum = 0.0;
    for (int n = 0; n < 50; ++n) {
        State s = randomState(*model, random);
        for (const unsigned code : {101U, 102U, 103U, 104U, 105U, 201U, 302U})
            for (const double x : checker.analytic(code, s).data)
                sum += x;
    }
    return sum;
}

TEST(Threads, TwoModelsDoNotMeet) {
    double first = 0.0, second = 0.0;
    std::thread one([&] { first = runModel(1); }), two([&] { second = runModel(2); });
    one.join();
    two.join();
    EXPECT_EQ(first, runModel(1));
    EXPECT_EQ(second, runModel(2));
    EXPECT_NE(first, second);
}

} // namespace
} // namespace velmora::test
