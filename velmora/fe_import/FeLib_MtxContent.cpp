#include "velmora/fe_import/FeLib_MtxContent.h"

#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_FeNodeList.h"
#include "velmora/fe_import/FeLib_FeNodeMappers.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_Vector.h"

namespace velmora {

namespace {

constexpr std::size_t roomForNodes = 1000;

// Phi(6n + c, j) = T(c, nm + j), Phi(6n + 3 + c, j) = R(c, nm + j) for m modes; null if T and R don't belong
// to this number of nodes.
std::unique_ptr<MBM_GeneralDenseMatrix> makeShapes(const MBM_GeneralDenseMatrix& T,
                                                   const MBM_GeneralDenseMatrix& R, std::size_t numOfNodes,
                                                   unsigned m) {
    const std::uint64_t columns = std::uint64_t{numOfNodes} * m;
    if (T.rows != 3 || R.rows != 3 || T.cols != columns || R.cols != columns)
        return nullptr;
    auto phi = std::make_unique<MBM_GeneralDenseMatrix>(static_cast<unsigned>(6 * numOfNodes), m);
    for (unsigned n = 0; phi->data && n < numOfNodes; ++n)
        for (unsigned j = 0; j < m; ++j)
            for (unsigned c = 0; c < 3; ++c) {
                phi->setValue(6 * n + c, j, T.getValue(c, n * m + j));
                phi->setValue(6 * n + 3 + c, j, R.getValue(c, n * m + j));
            }
    return phi;
}

} // namespace

FeLib_MtxContent::FeLib_MtxContent() : nodeList(std::make_unique<FeLib_FeNodeContainer>(roomForNodes)) {}

FeLib_MtxContent::~FeLib_MtxContent() = default;

void FeLib_MtxContent::setInvariant(unsigned number, std::unique_ptr<MBM_GeneralDenseMatrix> matrix) {
    invariants[number - 1] = std::move(matrix);
}

void FeLib_MtxContent::setGenStiff(std::unique_ptr<MBM_GeneralDenseMatrix> matrix) {
    genStiff = std::move(matrix);
}

void FeLib_MtxContent::buildModes(const MBM_GeneralDenseMatrix& selMod, const MBM_GeneralDenseMatrix& tMode,
                                  const MBM_GeneralDenseMatrix& rMode,
                                  const std::vector<std::uint32_t>& labels) {
    if (!nodeList)
        return;
    nodeIndexMapper = std::make_unique<FeLib_FeNodeLabel2NodeIndexMapper>(*nodeList);
    nodeSubset = std::make_unique<FeLib_FeNodeSubset>(*nodeList);
    modes = std::make_unique<FeLib_FeModes>(*nodeList);
    if (auto phi = makeShapes(tMode, rMode, nodeList->nodes.size(), selMod.rows))
        modes->setShapes(std::move(phi), labels);
    modes->frequencies = std::make_unique<MBM_DenseStandAloneVector>(selMod.rows);
    for (unsigned j = 0; j < modes->frequencies->size; ++j)
        modes->frequencies->data[j] = selMod.getValue(j, 0);
}

} // namespace velmora
