#pragma once

#include "driver/StartState.h"

#include <velmora/velmora.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora::driver {

/// One finding about a model file, in the style of a compiler: "model.toml:12: error: text".
struct Finding {
    enum class Severity { Error, Warning };
    Severity severity = Severity::Error;
    unsigned line = 0; ///< 0: the file as a whole
    std::string text;
};

/// The finding as a line of text, without a line feed.
std::string format(const Finding& finding, const std::string& fileName);

/// Which kinds of TOML values the value of a key is made of; more than one in a list of unlike values.
struct ValueKinds {
    bool hasText = false;
    bool hasNumber = false;
    bool hasFlag = false; ///< true or false
};

/// Where a key stands in the file, and what its value was before it became text.
struct KeyPlace {
    std::string key;
    unsigned line = 0;
    ValueKinds kinds;
};

/// Where a block and its keys stand in the file, for findings; parallel to IO_DataModel::blocks.
struct BlockPlace {
    unsigned line = 0;          ///< of the block's head
    std::vector<KeyPlace> keys; ///< in the order of the file, "type", "uuid" and "label" among them

    /// Null if the block doesn't hold the key.
    const KeyPlace* find(std::string_view key) const;
};

/// The section [simulation]; what isn't given keeps its default.
struct SimulationSection {
    std::optional<double> endTime;
    double step = 1e-3;
    bool fixedStep = false;
    std::optional<double> maxStep;
    double tolerance = 1e-6;
    double alpha = -0.05;
    double startCorrectionLimit = 1e-3;
    bool refuseRedundant = false; ///< redundant = "error"
};

/// One [[Change]]: keys that a data object takes at a time of the run.
struct ModelChange {
    double time = 0.0;
    unsigned line = 0; ///< of the change's head
    std::string uuid;  ///< of the data object
    std::vector<KeyPlace> keys;
    std::vector<std::string> texts;           ///< values of these keys
    std::shared_ptr<IO_DataModelBlock> block; ///< the object's block with these values; null if there is none
};

/// A model file as it was read. The data model is complete as far as the findings allow.
struct ModelFile {
    std::string fileName;
    std::string stem; ///< file name without directory and extension
    std::unique_ptr<IO_DataModel> dataModel;
    std::vector<BlockPlace> places;
    SimulationSection simulation;
    std::vector<ModelChange> changes; ///< in rising order of time
    std::vector<BodyStart> starts;    ///< in the order of the file
    std::vector<std::pair<std::string, std::string>>
        resultKeys;                       ///< section [results], as texts for the kernel
    bool isTableOfMeasuresWanted = false; ///< csv = true
    unsigned resultsLine = 0; ///< on which the table after [results] begins, or the last; 0 without [results]
    std::vector<Finding> findings;
};

} // namespace velmora::driver
