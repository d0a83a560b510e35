#include "velmora/io/IO_DataModel.h"
#include "velmora/model/internal/MBS_InternalModel.h"
#include "velmora/model/internal/MBS_ModelBuilder.h"

namespace velmora {

MBS_Model* MBS_Model::makeModel(IO_DataModel* dataModel, IO_OutputManager* outputManager) {
    if (!dataModel)
        return nullptr;
    auto model = std::make_unique<MBS_InternalModel>(dataModel, outputManager);
    MBS_ModelBuilder(*model, *dataModel).buildAll();
    model->sumUpDof();
    return model.release();
}

} // namespace velmora
