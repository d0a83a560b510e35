#include "velmora/io/IO_DataModel.h"

#include <algorithm>

namespace velmora {

IO_DataModel::IO_DataModel(std::string name) : modelName(std::move(name)) {}

IO_DataModel::~IO_DataModel() = default;

IO_DataModelBlock* IO_DataModel::addBlock(std::string kind, std::string type, std::string uuid,
                                          std::string label, std::string baseDirectory) {
    blockKinds.push_back(kind);
    blocks.push_back(std::make_unique<IO_DataModelBlock>(std::move(kind), std::move(uuid), std::move(label),
                                                         std::move(baseDirectory)));
    blocks.back()->type = std::move(type);
    return blocks.back().get();
}

unsigned IO_DataModel::getNumOfBlocks(std::string kind) const {
    return static_cast<unsigned>(std::ranges::count(blockKinds, kind));
}

IO_DataModelBlock* IO_DataModel::getBlock(std::string kind, unsigned index) const {
    for (std::size_t i = 0; i < blockKinds.size(); ++i)
        if (blockKinds[i] == kind && index-- == 0)
            return blocks[i].get();
    return nullptr;
}

std::vector<IO_DataModelBlock*> IO_DataModel::getBlocksOfKind(const std::string& kind) const {
    std::vector<IO_DataModelBlock*> found;
    for (std::size_t i = 0; i < blockKinds.size(); ++i)
        if (blockKinds[i] == kind && blocks[i])
            found.push_back(blocks[i].get());
    return found;
}

} // namespace velmora
