#pragma once

#include "driver/ModelFile.h"
#include "driver/Options.h"

#include <memory>
#include <string>

namespace velmora::driver {

/// A model file with the model that the kernel has made of it.
struct LoadedModel {
    std::unique_ptr<ModelFile> file;          ///< null if the file couldn't be read
    std::unique_ptr<IO_OutputManager> output; ///< its messages go to standard error
    std::unique_ptr<MBS_Model> model;         ///< null or free of errors
    int exitCode = Done;                      ///< why there is no model
};

/// Reads and checks a model file and has the kernel build it. All that is wrong goes to standard error; the
/// kernel is asked also after findings, so that one pass tells everything. With `isForRun` an end time must
/// be given, by the file or the options, and the file must hold a body.
LoadedModel loadModel(const Options& options, bool isForRun);

/// Where the results of a run go: the directory of the options, or results/<stem>.
std::string getResultDirectory(const Options& options, const ModelFile& file);

} // namespace velmora::driver
