#include "velmora/global_matrix/MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/constraints/MBS_ConstraintGroup.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>
#include <map>

namespace velmora {

namespace {

/// Where the blocks of a code come from on a body, and which bodies have part in it.
struct BodyCode {
    unsigned code;
    MBS_Body::Matrix MBS_Body::*block;
    bool (*occurs)(const MBS_Body&);
    /// A body may shape the pattern and yet contribute no values.
    bool (*contributes)(const MBS_Body&);
};

bool always(const MBS_Body&) {
    return true;
}
bool hasInertia(const MBS_Body& b) {
    return !b.isZeroInertiaBody();
}
bool isFlexible(const MBS_Body& b) {
    return !b.isRigidBody();
}
bool isRigidWithInertia(const MBS_Body& b) {
    return b.isRigidBody() && !b.isZeroInertiaBody();
}
bool regardsVelocity(const MBS_Body& b) {
    return b.regardVelocityInertiaForcesInsideJacobian;
}

constexpr BodyCode bodyCodes[] = {
    {MassMatrix, &MBS_Body::massMatrix, hasInertia, always},
    {InertiaForce_q, &MBS_Body::mQdd_q, hasInertia, always},
    {VelInertiaForce_q, &MBS_Body::qvv_q, hasInertia, regardsVelocity},
    {VelInertiaForce_qd, &MBS_Body::qvv_qd, hasInertia, regardsVelocity},
    {InnerConstraintForce_q, &MBS_Body::cqLi_q, always, always},
    {ElasticForce_q, &MBS_Body::stiffnessBlock, isFlexible, always},
    {DampingForce_qd, &MBS_Body::dampingBlock, isFlexible, always},
    {KinematicSolverMatrix, &MBS_Body::aBar4KinSolver, isRigidWithInertia, always},
};

bool isDerivativeByVelocity(unsigned code) {
    return code == VelInertiaForce_qd || code == DampingForce_qd || code == ExternalForce_qd;
}

} // namespace

struct MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::PairMap {
    std::map<std::pair<unsigned, unsigned>, std::vector<Contribution>> pairs; // row-major
};

MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure(
    const MBS_ModelObjectLists& model, unsigned firstRow, unsigned firstCol,
    const std::vector<unsigned>& types, const std::vector<const double*>& scalingPointers, bool modifiedHHT)
    : rowOffset(firstRow),
      colOffset(firstCol),
      isModifiedHHT(modifiedHHT) {
    unsigned offset = 0;
    for (const auto& body : model.getBodies()) {
        bodyOffset.push_back(offset);
        offset += body->getNumOfDof();
    }
    PairMap pairMap;
    for (std::size_t k = 0; k < types.size(); ++k)
        collectBodies(model, types[k], scalingPointers[k], pairMap);
    for (std::size_t k = 0; k < types.size(); ++k)
        collectForces(model, types[k], scalingPointers[k], pairMap);
    for (std::size_t k = 0; k < types.size(); ++k)
        collectConstraints(model, types[k], scalingPointers[k], pairMap);
    pairs.reserve(pairMap.pairs.size());
    for (auto& [key, contributions] : pairMap.pairs) {
        Pair pair{key.first, key.second, std::move(contributions), {}};
        for (unsigned k = 0; k < 9; ++k)
            for (const Contribution& contribution : pair.contributions)
                if (const auto* block = contribution.block(k))
                    pair.shapes[k] = std::max(pair.shapes[k], block->isDiagonal() ? MBS_BlockShape::Diagonal
                                                                                  : MBS_BlockShape::General);
        pairs.push_back(std::move(pair));
    }
}

MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::~MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure() = default;

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::collectBodies(const MBS_ModelObjectLists& model,
                                                                unsigned type, const double* weight,
                                                                PairMap& pairMap) {
    const auto* row = std::ranges::find(bodyCodes, type, &BodyCode::code);
    if (row == std::end(bodyCodes))
        return;
    for (const auto& body : model.getBodies()) {
        const MBS_GeneralSingleBodyMatrix* matrix = ((*body).*(row->block)).get();
        const unsigned b = body->bodyIndex;
        if (matrix && row->occurs(*body))
            pairMap.pairs[{b, b}].push_back({matrix, type, weight, row->contributes(*body)});
    }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::collectForces(const MBS_ModelObjectLists& model,
                                                                unsigned type, const double* weight,
                                                                PairMap& pairMap) {
    if (type != ExternalForce_q && type != ExternalForce_qd)
        return;
    for (const auto& force : model.getForces())
        for (const auto& entry : force->jacobianEntries) {
            const auto* matrix = (type == ExternalForce_q ? entry.qeQ : entry.qeQd).get();
            if (matrix)
                pairMap.pairs[{entry.rowBody, entry.colBody}].push_back({matrix, type, weight, true});
        }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::collectConstraints(const MBS_ModelObjectLists& model,
                                                                     unsigned type, const double* weight,
                                                                     PairMap& pairMap) {
    if (type != ExternalConstraintForce_q)
        return;
    for (const auto& group : model.getConstraintGroups())
        for (const auto& part : group->cqTLe_q)
            pairMap.pairs[{part.rowBody, part.colBody}].push_back(
                {part.block, type, weight, true, part.isTransposed});
}

const MBM_DenseMatrix* MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::Contribution::block(unsigned k) const {
    return (isTransposed ? matrix->block[k % 3][k / 3] : matrix->block[k / 3][k % 3]).get();
}

const std::array<unsigned, 3>& MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::Contribution::rowDof() const {
    return isTransposed ? matrix->colDof : matrix->rowDof;
}

const std::array<unsigned, 3>& MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::Contribution::colDof() const {
    return isTransposed ? matrix->rowDof : matrix->colDof;
}

MBS_ScatterPlan::Place MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::placeOf(const Pair& pair,
                                                                            unsigned k) const {
    const Contribution& any = pair.contributions.front();
    return {rowOffset + bodyOffset[pair.rowBody] + kindOffsets(any.rowDof())[k / 3],
            colOffset + bodyOffset[pair.colBody] + kindOffsets(any.colDof())[k % 3],
            any.rowDof()[k / 3],
            any.colDof()[k % 3],
            pair.shapes[k],
            false};
}

std::vector<MBS_ScatterPlan::Source>
MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::sourcesOf(const Pair& pair, unsigned k) const {
    std::vector<MBS_ScatterPlan::Source> sources;
    for (const Contribution& contribution : pair.contributions) {
        const MBM_DenseMatrix* block = contribution.block(k);
        const bool usesT = isModifiedHHT && k % 3 == Rot && isDerivativeByVelocity(contribution.type);
        if (block && contribution.hasValues)
            sources.push_back(
                {block->data, contribution.weight, pair.colBody, usesT, contribution.isTransposed});
    }
    return sources;
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::addPattern(std::vector<unsigned>& rows,
                                                             std::vector<unsigned>& cols) const {
    for (const Pair& pair : pairs)
        for (unsigned k = 0; k < 9; ++k) {
            const MBS_ScatterPlan::Place place = placeOf(pair, k);
            for (unsigned j = 0; place.shape != MBS_BlockShape::Absent && j < place.numCols; ++j)
                for (unsigned i = 0; i < place.numRows; ++i) {
                    if (place.shape == MBS_BlockShape::Diagonal && i != j)
                        continue;
                    rows.push_back(place.row + i + 1);
                    cols.push_back(place.col + j + 1);
                }
        }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::initMappers(MBM_SparseMat_CSR3& sparse,
                                                              MBS_ScatterPlan& plan) {
    for (const Pair& pair : pairs)
        for (unsigned k = 0; k < 9; ++k)
            if (pair.shapes[k] != MBS_BlockShape::Absent)
                plan.add(sparse, placeOf(pair, k), sourcesOf(pair, k));
    pairs = {}; // the plan holds all that a refresh needs
}

} // namespace velmora
