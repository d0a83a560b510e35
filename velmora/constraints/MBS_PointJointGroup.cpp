#include "velmora/constraints/MBS_PointJointGroup.h"

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

#include <cassert>

// Numbers in brackets are those of PointJointFormulas.h.

namespace velmora {

namespace {

/// Block over some of the sums of one joint, which are all refreshed together.
class JointBlock : public MBS_GeneralBodyBodyMatrix {
  public:
    JointBlock(const PointJointState& state, PointJointState::CqTLe_q& elements)
        : MBS_GeneralBodyBodyMatrix(3, 4, 0, 3, 4, 0),
          joint(&state),
          sums(&elements) {
        keepOnly({});
    }
    std::string getClassName() const override { return "MBS_PointJointGroup_CqTLe_q"; }
    void update(double, const P* q, const P*, const P*, const C* lagrange) override {
        joint->setCqTLe_q(q, joint->weightedAxes(lagrange), *sums);
    }
    /// Makes a block over elements of the group, which outlives it.
    template <int R, int C>
    void add(unsigned rowKind, unsigned colKind, const char* matrixClass, Mat<R, C>& elements) {
        setBlockMatrix(rowKind, colKind, matrixClass, R, C, 0.0);
        auto& matrix = dynamic_cast<MBM_DenseStandAloneMatrix&>(*block[rowKind][colKind]);
        matrix.moveStorage(std::shared_ptr<double[]>(std::shared_ptr<double[]>(), elements.data.data()));
    }

  private:
    const PointJointState* joint;   // not owned
    PointJointState::CqTLe_q* sums; // not owned
};

bool isEqual(const Vec3& a, const Vec3& b) {
    return a.data == b.data;
}

} // namespace

MBS_PointJointGroup::MBS_PointJointGroup(std::size_t capacity) {
    joints.reserve(capacity);
    cqT.reserve(capacity);
    cqTdT.reserve(capacity);
    sums.reserve(capacity);
}

void MBS_PointJointGroup::addJoint(const BodyPair& bodies, const Vec3& localPoint2) {
    assert(joints.size() < joints.capacity());
    PointJointState joint{};
    static_cast<BodyPair&>(joint) = bodies;
    joint.localPoint2 = localPoint2;
    joints.push_back(joint);
    cqT.emplace_back();
    cqTdT.emplace_back();
    sums.emplace_back();
}

unsigned MBS_PointJointGroup::addEquation(unsigned constraintIndex, const Vec3& localAxis,
                                          double localProduct, double initialOffset) {
    PointJointState& joint = joints.back();
    const unsigned column = joint.numOfEquations++;
    const auto i = static_cast<int>(column);
    joint.constraints[column] = constraintIndex;
    joint.localProducts(i) = localProduct;
    joint.initialOffsets(i) = initialOffset;
    localAxis.to(&joint.localAxes(0, i));
    return column;
}

bool MBS_PointJointGroup::isLastJoint(const BodyPair& bodies, const Vec3& localPoint2) const {
    if (joints.empty())
        return false;
    const PointJointState& joint = joints.back();
    return joint.numOfEquations < joint.constraints.size() && joint.body1Index == bodies.body1Index &&
           joint.body2Index == bodies.body2Index && isEqual(joint.localPoint2, localPoint2);
}

void MBS_PointJointGroup::createBlocks() {
    for (std::size_t k = 0; k < joints.size(); ++k)
        createBlocks(k);
}

void MBS_PointJointGroup::createBlocks(std::size_t k) {
    constexpr const char *general = "MBM_GeneralDenseMatrix", *symmetric = "MBM_SymmetricDenseMatrix";
    const PointJointState& joint = joints[k];
    auto& s = sums[k];
    const auto make = [&](unsigned rowBody, unsigned colBody) -> JointBlock& {
        auto block = std::make_unique<JointBlock>(joint, s);
        JointBlock& made = *block;
        cqTLe_q.push_back({rowBody, colBody, block.get()});
        blocks.push_back(std::move(block));
        return made;
    };
    JointBlock& tr11 = make(joint.body1Index, joint.body1Index);
    tr11.add(Trans, Rot, general, s.tr_11);
    cqTLe_q.push_back({joint.body1Index, joint.body1Index, &tr11, true});
    make(joint.body1Index, joint.body1Index).add(Rot, Rot, symmetric, s.rr_11);
    JointBlock& block21 = make(joint.body2Index, joint.body1Index);
    block21.add(Trans, Rot, general, s.tr_21);
    block21.add(Rot, Rot, general, s.rr_21);
    cqTLe_q.push_back({joint.body1Index, joint.body2Index, &block21, true});
    make(joint.body2Index, joint.body2Index).add(Rot, Rot, symmetric, s.rr_22);
}

void MBS_PointJointGroup::updateForMotion(double, const P* q, const P*, const P*, C* out) {
    for (std::size_t k = 0; k < joints.size(); ++k) {
        PointJointState& joint = joints[k];
        const Vec3 residual = joint.residual(q); // (1)
        for (unsigned i = 0; i < joint.numOfEquations; ++i)
            *out->equationsOfConstraint(joint.constraints[i]) = residual(static_cast<int>(i));
        joint.setCqT(q, cqT[k]); // (2)
    }
}

void MBS_PointJointGroup::updateForJacobian(double, const P* q, const P* qd, const P*, const C* multipliers) {
    for (std::size_t k = 0; k < joints.size(); ++k) {
        PointJointState& joint = joints[k];
        joint.setCqTLe_q(q, joint.weightedAxes(multipliers), sums[k]); // (4)
        joint.setRateOfDifference(q, qd);
        if (areRatesKept)
            joint.setCqTdT(cqTdT[k]); // (3)
    }
}

void MBS_PointJointGroup::keepRates() {
    areRatesKept = true;
    for (std::size_t k = 0; k < joints.size(); ++k)
        joints[k].setCqTdT(cqTdT[k]);
}

void MBS_PointJointGroup::getConstraintForces(const C* multipliers, P* out) const {
    for (std::size_t k = 0; k < joints.size(); ++k) {
        const PointJointState& joint = joints[k];
        const Vec3 l = joint.multipliers(multipliers);
        double *to1 = out->bodyData(joint.body1Index), *to2 = out->bodyData(joint.body2Index);
        (cqT[k].body1.t * l).addTo(to1);
        (cqT[k].body1.r * l).addTo(to1 + 3);
        (cqT[k].body2.t * l).addTo(to2);
        (cqT[k].body2.r * l).addTo(to2 + 3);
    }
}

} // namespace velmora
