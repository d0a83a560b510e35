#pragma once

#include "driver/ModelContents.h"

#include <memory>
#include <span>
#include <string>

namespace velmora::driver {

/// Reads a TOML model file. Null if the file can't be read at all, with name and reason in `error`
/// ("model.toml: no such file"); everything else is a finding. Findings come in the order of their lines.
std::unique_ptr<ModelFile> readModelFile(const std::string& fileName, std::string& error);

/// Checks a model file for what the kernel takes without a word, and appends the findings: unknown keys and
/// types, duplicate and missing UUIDs, references to nothing, directions that aren't unit vectors,
/// orientations and inertias that no body can have, types that create nothing. All of them are errors.
void checkStrictly(ModelFile& file);
/// The same with block types other than the kernel's.
void checkStrictly(ModelFile& file, std::span<const MBS_BlockTypeInfo> vocabulary);

} // namespace velmora::driver
