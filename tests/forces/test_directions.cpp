#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/MBS_3DUnitVector.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

class Directions : public ModelFixture {
  protected:
    Directions() {
        addRigidBody(data, "a");
        addRigidBody(data, "b", {{"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"}});
        model.reset(MBS_Model::makeModel(&data, &output));
        q = std::make_unique<MBS_ModelPhysicalDofVector>(model.get());
        MBS_ModelPhysicalDofVector qd(*q);
        model->copyInitialDataIntoPhysicalDofVector(q.get(), &qd);
        model->updateMatricesForEquationOfMotion(0.0, q.get(), &qd, &qd);
    }
    MBS_Body* body(unsigned i) { return dynamic_cast<MBS_InternalModel&>(*model).getBodies()[i].get(); }

    /// Whether the direction is accepted; a refused one must leave its value alone and have no derivative.
    bool isAccepted(const MBS_3DUnitVector& direction, double turns) {
        Vec3 e{{7, 8, 9}};
        Mat<3, 7> derivative;
        derivative(0, 0) = 1.0;
        const bool isWritten = direction.getUnitVector(q.get(), nullptr, e);
        direction.getUnitVector_q(q.get(), nullptr, 0, derivative);
        EXPECT_EQ(norm(Mat<21, 1>{derivative.data}) > 0.0, isWritten && turns > 0.0);
        EXPECT_NEAR(norm(e), isWritten ? 1.0 : norm(Vec3{{7, 8, 9}}), 1.001e-5);
        derivative(1, 4) = 1.0;
        direction.getUnitVector_q(q.get(), nullptr, 77, derivative); // no body of the direction
        EXPECT_EQ(norm(Mat<21, 1>{derivative.data}), 0.0);
        return isWritten;
    }

    std::unique_ptr<MBS_ModelPhysicalDofVector> q;
};

TEST_F(Directions, GivenVectorsAreRefusedUnlessTheirNormIsOne) {
    const std::pair<double, bool> norms[] = {{1.0, true},      {1.00001, true}, {0.99999, true},
                                             {1.00002, false}, {1.0001, false}, {0.9999, false},
                                             {0.0, false}};
    for (const auto& [length, isFine] : norms) {
        const Vec3 given = length * Vec3{{0.6, 0.0, -0.8}};
        EXPECT_EQ(isAccepted(MBS_3DUnitVector_SpaceFixed(given), 0.0), isFine) << length;
        EXPECT_EQ(isAccepted(MBS_3DUnitVector_BodyFixed(given, body(0)), 1.0), isFine) << length;
    }
}

TEST_F(Directions, LinesOfSightAreRefusedBetweenPointsThatCoincide) {
    const Vec3 point{{0.4, 0.1, -0.2}}, along{{0.0, 0.6, 0.8}};
    for (const auto& [distance, ofGround, ofBodies] :
         {std::tuple(0.0, false, false), std::tuple(0.9e-10, false, false), std::tuple(1.1e-10, true, false),
          std::tuple(0.9e-6, true, false), std::tuple(1.1e-6, true, true)}) {
        const Vec3 other = point + distance * along;
        const MBS_3DUnitVector_GroundBody fromGround(point, other, body(0));
        const MBS_3DUnitVector_BodyBody fromBody(point, body(0), other, body(1));
        EXPECT_EQ(isAccepted(fromGround, 1.0), ofGround) << distance;
        EXPECT_EQ(isAccepted(fromBody, 1.0), ofBodies) << distance;
        Vec3 ofPair = along, toBody = along;
        fromBody.getUnitVector(q.get(), nullptr, ofPair);
        fromGround.getUnitVector(q.get(), nullptr, toBody);
        EXPECT_LT(norm(ofPair - along), 1e-9) << distance;             // towards body 2
        EXPECT_LT(norm(toBody - along) * distance, 1e-15) << distance; // away from the ground
    }
}

} // namespace
} // namespace velmora::test
