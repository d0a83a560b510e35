#include "velmora/global_matrix/MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/global_matrix/MBS_GeneralBodyBodyMatrixMapperCSR3.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/MBS_ModelLookUp.h"
#include "velmora/platform/blas.h"

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

enum class Shape : char { Absent, Diagonal, General };

} // namespace

struct MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::Source {
    const MBS_GeneralBodyBodyMatrix* matrix;
    unsigned type;
    const double* weight;
    unsigned colBody;
    bool contributes;
};

/// Body pairs in row-major order, with what is added into each.
struct MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::Plan {
    std::map<std::pair<unsigned, unsigned>, std::vector<Source>> pairs;
};

MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure(
    const MBS_ModelObjectLists& model, unsigned firstRow, unsigned firstCol,
    const std::vector<unsigned>& types, const std::vector<const double*>& scalingPointers, bool isModifiedHHT)
    : rowOffset(firstRow),
      colOffset(firstCol) {
    unsigned offset = 0;
    for (const auto& body : model.getBodies()) {
        bodyOffset.push_back(offset);
        offset += body->getNumOfDof();
    }
    Plan plan;
    for (std::size_t k = 0; k < types.size(); ++k)
        collectBodySources(model, types[k], scalingPointers[k], plan);
    for (std::size_t k = 0; k < types.size(); ++k)
        collectForceSources(model, types[k], scalingPointers[k], plan);
    createInstances(model, plan, isModifiedHHT);
}

MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::~MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure() = default;

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::collectBodySources(const MBS_ModelObjectLists& model,
                                                                     unsigned type, const double* weight,
                                                                     Plan& plan) {
    const auto* row = std::ranges::find(bodyCodes, type, &BodyCode::code);
    if (row == std::end(bodyCodes))
        return;
    for (const auto& body : model.getBodies()) {
        const MBS_GeneralSingleBodyMatrix* matrix = ((*body).*(row->block)).get();
        const unsigned b = body->bodyIndex;
        if (matrix && row->occurs(*body))
            plan.pairs[{b, b}].push_back({matrix, type, weight, b, row->contributes(*body)});
    }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::collectForceSources(const MBS_ModelObjectLists& model,
                                                                      unsigned type, const double* weight,
                                                                      Plan& plan) {
    if (type != ExternalForce_q && type != ExternalForce_qd)
        return;
    for (const auto& force : model.getForces())
        for (const auto& entry : force->jacobianEntries) {
            const auto* matrix = (type == ExternalForce_q ? entry.qeQ : entry.qeQd).get();
            if (matrix)
                plan.pairs[{entry.rowBody, entry.colBody}].push_back(
                    {matrix, type, weight, entry.colBody, true});
        }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::createInstances(const MBS_ModelObjectLists& model,
                                                                  const Plan& plan, bool isModifiedHHT) {
    const auto& bodies = model.getBodies();
    pairs.reserve(plan.pairs.size());
    for (const auto& [key, sources] : plan.pairs) {
        const MBS_Body& row = *bodies[key.first];
        const MBS_Body& col = *bodies[key.second];
        auto instance = std::make_unique<MBS_BodyBodyMatrixInstance>(
            row.numTransDof, row.numRotDof, row.numFlexDof, col.numTransDof, col.numRotDof, col.numFlexDof);
        for (unsigned k = 0; k < 9; ++k) {
            Shape shape = Shape::Absent;
            for (const Source& source : sources)
                if (const auto* block = source.matrix->block[k / 3][k % 3].get())
                    shape = std::max(shape, block->isDiagonal() ? Shape::Diagonal : Shape::General);
            if (shape == Shape::Absent)
                instance->deleteBlock(k / 3, k % 3);
            if (shape == Shape::Diagonal)
                instance->setBlockMatrix(k / 3, k % 3, "MBM_DiagonalDenseMatrix", instance->rowDof[k / 3],
                                         instance->colDof[k % 3], 0.0);
        }
        for (const Source& source : sources)
            if (source.contributes)
                addBlockSums(source, *instance, isModifiedHHT);
        pairs.push_back({key.first, key.second, std::move(instance), nullptr});
    }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::addBlockSums(const Source& source,
                                                               MBS_BodyBodyMatrixInstance& instance,
                                                               bool isModifiedHHT) {
    for (unsigned k = 0; k < 9; ++k) {
        const MBM_DenseMatrix* block = source.matrix->block[k / 3][k % 3].get();
        MBM_DenseMatrix* target = instance.block[k / 3][k % 3].get();
        if (!block || !target)
            continue;
        const bool usesT = isModifiedHHT && k % 3 == Rot && isDerivativeByVelocity(source.type);
        if (usesT && block->rows > scratch.rows)
            scratch.setDimensionsAndValue(block->rows, 4, 0.0);
        blockSums.push_back({block, target, source.weight, source.colBody, usesT});
    }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::addPattern(std::vector<unsigned>& rows,
                                                             std::vector<unsigned>& cols) const {
    for (const Pair& pair : pairs) {
        const auto rowStart = kindOffsets(pair.instance->rowDof),
                   colStart = kindOffsets(pair.instance->colDof);
        for (unsigned k = 0; k < 9; ++k) {
            const MBM_DenseMatrix* block = pair.instance->block[k / 3][k % 3].get();
            if (!block)
                continue;
            const unsigned firstRow = rowOffset + bodyOffset[pair.rowBody] + rowStart[k / 3] + 1;
            const unsigned firstCol = colOffset + bodyOffset[pair.colBody] + colStart[k % 3] + 1;
            for (unsigned j = 0; j < block->cols; ++j)
                for (unsigned i = 0; i < block->rows; ++i) {
                    if (block->isDiagonal() && i != j)
                        continue;
                    rows.push_back(firstRow + i);
                    cols.push_back(firstCol + j);
                }
        }
    }
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::initMappers(MBM_SparseMat_CSR3& sparse) {
    for (Pair& pair : pairs)
        pair.mapper = std::make_unique<MBS_GeneralBodyBodyMatrixMapperCSR3>(
            *pair.instance, sparse, rowOffset + bodyOffset[pair.rowBody],
            colOffset + bodyOffset[pair.colBody]);
}

void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::refresh(MBM_GeneralDenseMatrix** T) {
    for (Pair& pair : pairs)
        pair.instance->setToZero();
    for (const BlockSum& sum : blockSums) {
        if (sum.usesT) {
            addWithT(sum, *T[sum.colBody]);
            continue;
        }
        const double s = *sum.weight;
        const unsigned n = sum.source->rows * sum.source->cols;
        for (unsigned k = 0; k < n; ++k)
            sum.target->data[k] += s * sum.source->data[k];
    }
    for (Pair& pair : pairs)
        pair.mapper->mapValues(1.0);
}

// target += -B T
void MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure::addWithT(const BlockSum& sum,
                                                           const MBM_GeneralDenseMatrix& T) {
    const int rows = static_cast<int>(sum.source->rows);
    blas::dgemm('N', 'N', rows, 4, 4, -1.0, sum.source->data, rows, T.data, 4, 0.0, scratch.data, rows);
    for (int k = 0; k < 4 * rows; ++k)
        sum.target->data[k] += scratch.data[k];
}

} // namespace velmora
