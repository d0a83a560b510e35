#include "velmora/fe_import/FeLib_FeModes.h"

#include "velmora/fe_import/FeLib_FeNodeMappers.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_Vector.h"

#include <algorithm>

namespace velmora {

FeLib_FeDisplacementShapes::FeLib_FeDisplacementShapes(const FeLib_FeNodeList& list)
    : pattern(std::make_unique<FeLib_FeNodeDofVecPattern>(list)),
      dofMapper(std::make_unique<FeLib_FeNodeLabel2DofVecIndexMapper>(*pattern, list)) {
    dofVector = std::make_unique<MBM_DenseStandAloneVector>(pattern->size);
}

FeLib_FeDisplacementShapes::~FeLib_FeDisplacementShapes() = default;

bool FeLib_FeDisplacementShapes::setShapes(std::unique_ptr<MBM_GeneralDenseMatrix> phi,
                                           const std::vector<std::uint32_t>& columnLabels) {
    if (phi->errorCode != 0 || phi->rows != pattern->size || phi->cols != columnLabels.size())
        return false;
    shapes = std::move(phi);
    modeVector = std::make_unique<MBM_DenseStandAloneVector>(shapes->cols);
    labels = columnLabels;
    return true;
}

void FeLib_FeDisplacementShapes::addNodeShapes(std::uint32_t nodeLabel, MBM_GeneralDenseMatrix& M) const {
    const auto* record = dofMapper->findRecord(nodeLabel);
    if (!record || !shapes)
        return;
    // A record is made with its first row: the rows of a node follow one another from the lowest.
    const std::uint32_t first = std::ranges::min(*record);
    const auto numOfRows = static_cast<unsigned>(6 - std::ranges::count(*record, dofMapper->undefinedRow));
    M.setDimensionsAndValue(numOfRows, shapes->cols, 0.0);
    for (unsigned mode = 0; mode < shapes->cols; ++mode)
        for (unsigned row = 0; row < numOfRows; ++row)
            M.setValue(row, mode, shapes->getValue(first + row, mode));
}

FeLib_FeModes::FeLib_FeModes(const FeLib_FeNodeList& list) : FeLib_FeDisplacementShapes(list) {}

FeLib_FeModes::~FeLib_FeModes() = default;

} // namespace velmora
