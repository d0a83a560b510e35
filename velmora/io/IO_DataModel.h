#pragma once

#include "velmora/io/IO_DataModelBlock.h"

#include <memory>

namespace velmora {

/// All input of a model: blocks in input order. The driver fills and owns it; it lives at least until
/// `MBS_Model::makeModel` returns.
class VELMORA_EXPORT IO_DataModel {
  public:
    explicit IO_DataModel(std::string name);
    IO_DataModel(const IO_DataModel&) = delete;
    IO_DataModel& operator=(const IO_DataModel&) = delete;
    ~IO_DataModel();

    /// Adds an empty block, owned by the data model; the caller fills in keys and `lineNumber`.
    IO_DataModelBlock* addBlock(std::string kind, std::string type, std::string uuid, std::string label,
                                std::string baseDirectory);
    /// Number of blocks of a kind.
    unsigned getNumOfBlocks(std::string kind) const;
    /// The index-th block of a kind in input order; null if there are fewer.
    IO_DataModelBlock* getBlock(std::string kind, unsigned index) const;
    /// All blocks of a kind in input order, not owned. One walk over the blocks, as each of the two above
    /// takes.
    std::vector<IO_DataModelBlock*> getBlocksOfKind(const std::string& kind) const;

    std::string modelName;
    std::vector<std::string> blockKinds;                    ///< parallel to `blocks`
    std::vector<std::unique_ptr<IO_DataModelBlock>> blocks; ///< in input order
};

} // namespace velmora
