#include "velmora/model/MBS_ModelDofVector.h"

#include "velmora/model/MBS_Model.h"

#include <algorithm>
#include <numeric>

namespace velmora {

namespace {

using View = std::unique_ptr<MBM_DenseSubVector>;

View makeView(unsigned size, unsigned offset, MBM_DenseVector& base) {
    return size == 0 ? nullptr : std::make_unique<MBM_DenseSubVector>(size, offset, base);
}

// Counts as they show in a list of views; 0 for a null entry.
std::vector<unsigned> sizesOf(const std::vector<View>& views) {
    std::vector<unsigned> sizes;
    sizes.reserve(views.size());
    for (const auto& view : views)
        sizes.push_back(view ? view->size : 0);
    return sizes;
}

template <class Count>
std::vector<unsigned> countsOfModel(unsigned n, Count count) {
    std::vector<unsigned> counts;
    counts.reserve(n);
    for (unsigned i = 0; i < n; ++i)
        counts.push_back(count(i));
    return counts;
}

unsigned sumOf(const std::vector<unsigned>& counts) {
    return std::accumulate(counts.begin(), counts.end(), 0U);
}

} // namespace

MBS_ModelPhysicalDofVector::MBS_ModelPhysicalDofVector() {
    allocateAllFields({3}, {4}, {0});
}

MBS_ModelPhysicalDofVector::MBS_ModelPhysicalDofVector(MBS_Model* model) {
    adaptStructureToModel(model);
}

MBS_ModelPhysicalDofVector::MBS_ModelPhysicalDofVector(const std::vector<unsigned>* trans,
                                                       const std::vector<unsigned>* rot,
                                                       const std::vector<unsigned>* flex) {
    allocateAllFields(*trans, *rot, *flex);
}

MBS_ModelPhysicalDofVector::MBS_ModelPhysicalDofVector(const MBS_ModelPhysicalDofVector& other)
    : MBS_ModelDofVector(other) {
    allocateAllFields(sizesOf(other.transDof), sizesOf(other.rotDof), sizesOf(other.flexDof));
    std::copy_n(other.dofVector->data, other.dofVector->size, dofVector->data);
}

MBS_ModelPhysicalDofVector& MBS_ModelPhysicalDofVector::operator=(const MBS_ModelPhysicalDofVector& other) {
    if (this != &other)
        std::copy_n(other.dofVector->data, dofVector->size, dofVector->data);
    return *this;
}

void MBS_ModelPhysicalDofVector::adaptStructureToModel(MBS_Model* model) {
    destroyAllFieldsAndSetToNULL();
    const unsigned n = model->getNumOfBodies();
    allocateAllFields(countsOfModel(n, [&](unsigned i) { return model->getNumOfTransDofOfBody(i); }),
                      countsOfModel(n, [&](unsigned i) { return model->getNumOfRotDofOfBody(i); }),
                      countsOfModel(n, [&](unsigned i) { return model->getNumOfFlexDofOfBody(i); }));
}

void MBS_ModelPhysicalDofVector::adaptStructureToModel(unsigned numOfBodies, unsigned, unsigned,
                                                       const unsigned* trans, const unsigned* rot,
                                                       const unsigned* flex) {
    destroyAllFieldsAndSetToNULL();
    allocateAllFields({trans, trans + numOfBodies}, {rot, rot + numOfBodies}, {flex, flex + numOfBodies});
}

void MBS_ModelPhysicalDofVector::allocateAllFields(const std::vector<unsigned>& trans,
                                                   const std::vector<unsigned>& rot,
                                                   const std::vector<unsigned>& flex) {
    dofVector = std::make_unique<MBM_DenseStandAloneVector>(sumOf(trans) + sumOf(rot) + sumOf(flex));
    unsigned offset = 0;
    for (std::size_t i = 0; i < trans.size(); ++i) {
        const unsigned size = trans[i] + rot[i] + flex[i];
        bodyOffset.push_back(offset);
        bodyDof.push_back(std::make_unique<MBM_DenseSubVector>(size, offset, *dofVector));
        transDof.push_back(makeView(trans[i], offset, *dofVector));
        rotDof.push_back(makeView(rot[i], offset + trans[i], *dofVector));
        flexDof.push_back(makeView(flex[i], offset + trans[i] + rot[i], *dofVector));
        offset += size;
    }
}

void MBS_ModelPhysicalDofVector::destroyAllFieldsAndSetToNULL() {
    flexDof.clear();
    rotDof.clear();
    transDof.clear();
    bodyDof.clear();
    bodyOffset.clear();
    dofVector.reset();
}

MBS_ModelConstraintDofVector::MBS_ModelConstraintDofVector() {
    allocateAllFields({1}, {1});
}

MBS_ModelConstraintDofVector::MBS_ModelConstraintDofVector(MBS_Model* source) : model(source) {
    adaptStructureToModel(source);
    for (unsigned k = 0; k < source->getNumOfExternalConstraints(); ++k)
        constraintDofIDs.insert(constraintDofIDs.end(), source->getNumOfConstraintDofOfConstraint(k),
                                source->getConstraintID(k));
}

MBS_ModelConstraintDofVector::MBS_ModelConstraintDofVector(const std::vector<unsigned>* inner,
                                                           const std::vector<unsigned>* external) {
    allocateAllFields(*inner, *external);
}

MBS_ModelConstraintDofVector::MBS_ModelConstraintDofVector(const MBS_ModelConstraintDofVector& other)
    : MBS_ModelDofVector(other) {
    allocateAllFields(sizesOf(other.bodyInnerConstraints), sizesOf(other.constraintDof));
    if (dofVector)
        std::copy_n(other.dofVector->data, other.dofVector->size, dofVector->data);
}

MBS_ModelConstraintDofVector&
MBS_ModelConstraintDofVector::operator=(const MBS_ModelConstraintDofVector& other) {
    if (this != &other && dofVector && other.dofVector)
        std::copy_n(other.dofVector->data, dofVector->size, dofVector->data);
    return *this;
}

void MBS_ModelConstraintDofVector::adaptStructureToModel(MBS_Model* source) {
    destroyAllFieldsAndSetToNULL();
    allocateAllFields(countsOfModel(source->getNumOfBodies(),
                                    [&](unsigned i) { return source->getNumOfInnerConstraintDofOfBody(i); }),
                      countsOfModel(source->getNumOfExternalConstraints(), [&](unsigned k) {
                          return source->getNumOfConstraintDofOfConstraint(k);
                      }));
}

void MBS_ModelConstraintDofVector::adaptStructureToModel(unsigned numOfBodies, unsigned numOfConstraints,
                                                         const unsigned* inner, const unsigned* external) {
    destroyAllFieldsAndSetToNULL();
    allocateAllFields({inner, inner + numOfBodies}, {external, external + numOfConstraints});
}

void MBS_ModelConstraintDofVector::allocateAllFields(const std::vector<unsigned>& inner,
                                                     const std::vector<unsigned>& external) {
    const unsigned numInner = sumOf(inner), numExternal = sumOf(external);
    if (numInner + numExternal == 0)
        return;
    dofVector = std::make_unique<MBM_DenseStandAloneVector>(numInner + numExternal);
    const auto fill = [this](const std::vector<unsigned>& counts, unsigned offset, unsigned total,
                             View& whole, std::vector<View>& views) {
        if (total == 0)
            return;
        whole = makeView(total, offset, *dofVector);
        for (const unsigned count : counts) {
            views.push_back(makeView(count, offset, *dofVector));
            offset += count;
        }
    };
    fill(inner, 0, numInner, innerConstraints, bodyInnerConstraints);
    fill(external, numInner, numExternal, externalConstraints, constraintDof);
    constraintOffset.resize(external.size());
    std::exclusive_scan(external.begin(), external.end(), constraintOffset.begin(), numInner);
}

void MBS_ModelConstraintDofVector::destroyAllFieldsAndSetToNULL() {
    constraintOffset.clear();
    constraintDof.clear();
    externalConstraints.reset();
    bodyInnerConstraints.clear();
    innerConstraints.reset();
    dofVector.reset();
}

} // namespace velmora
