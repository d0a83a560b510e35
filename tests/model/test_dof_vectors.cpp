#include "tests/support/ModelFixture.h"

#include <numeric>

namespace velmora::test {
namespace {

using P = MBS_ModelPhysicalDofVector;
using C = MBS_ModelConstraintDofVector;

long place(const MBM_DenseSubVector& view, const MBM_DenseStandAloneVector& whole) {
    return view.data - whole.data;
}

TEST(DofVectors, ViewsLieBehindOneAnotherInTheirOwnStorage) {
    const std::vector<unsigned> trans{3, 3, 0}, rot{4, 4, 0}, flex{0, 2, 0};
    P q(&trans, &rot, &flex);
    ASSERT_EQ(q.getNumOfDof(), 16u);
    std::iota(q.dofVector->data, q.dofVector->data + 16, 0.0);
    EXPECT_EQ(q.flexDof[0], nullptr);
    EXPECT_EQ(place(*q.rotDof[1], *q.dofVector), 10);
    EXPECT_EQ(q.flexDof[1]->data[1], 15.0);
    EXPECT_EQ(q.bodyDof.size(), 3u);
    EXPECT_EQ(q.transDof[2], nullptr);

    P copy(q);
    copy.bodyData(1)[0] = -1.0;
    EXPECT_EQ(q.transDof[1]->data[0], 7.0);
    EXPECT_EQ(copy.transDof[1]->data[0], -1.0);
    q = copy;
    EXPECT_EQ(q.transDof[1]->data[0], -1.0);
    EXPECT_NE(q.dofVector->data, copy.dofVector->data);
}

TEST(DofVectors, InnerEquationsStandBeforeExternalOnes) {
    const std::vector<unsigned> inner{1, 0, 1}, external{2, 0, 3};
    C c(&inner, &external);
    ASSERT_EQ(c.getNumOfConstraints(), 7u);
    EXPECT_EQ(c.getNumOfInternalConstraints(), 2u);
    EXPECT_EQ(c.getNumOfExternalConstraints(), 5u);
    EXPECT_EQ(c.bodyInnerConstraints[1], nullptr);
    EXPECT_EQ(place(*c.bodyInnerConstraints[2], *c.dofVector), 1);
    EXPECT_EQ(c.constraintDof[1], nullptr);
    EXPECT_EQ(place(*c.constraintDof[2], *c.dofVector), 4);

    const std::vector<unsigned> none;
    C empty(&none, &none), other(empty);
    empty = other;
    EXPECT_EQ(empty.dofVector, nullptr);
    EXPECT_EQ(empty.getNumOfConstraints() + empty.getNumOfExternalConstraints(), 0u);
    EXPECT_EQ(C().getNumOfConstraints(), 2u);
    EXPECT_EQ(P().getNumOfDof(), 7u);
}

class ModelVectors : public ModelFixture {};

TEST_F(ModelVectors, TakeTheStructureOfTheModel) {
    P q(&build());
    EXPECT_EQ(q.getNumOfDof(), 0u);
    EXPECT_EQ(C(model.get()).dofVector, nullptr);
    addRigidBody(data, "a");
    build();
    for (int n = 0; n < 2; ++n)
        q.adaptStructureToModel(model.get());
    EXPECT_EQ(q.getNumOfDof(), 7u);
    EXPECT_EQ(q.flexDof[0], nullptr);
    const unsigned trans[] = {3, 3}, rot[] = {4, 4}, flex[] = {0, 5};
    q.adaptStructureToModel(2, 0, 0, trans, rot, flex);
    EXPECT_EQ(q.getNumOfDof(), 19u);
    C c(model.get());
    EXPECT_EQ(c.getNumOfConstraints(), 1u);
    EXPECT_TRUE(c.constraintDof.empty());
    EXPECT_EQ(c.model, model.get());
}

} // namespace
} // namespace velmora::test
