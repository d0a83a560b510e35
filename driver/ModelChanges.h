#pragma once

#include "driver/ModelContents.h"

#include <toml++/toml.h>

#include <string>

namespace velmora::driver {

/// Reads one [[Change]] table: "time", "uuid" of a data object, and the keys that the object takes at that
/// time.
void readChange(const toml::table& table, ModelFile& file);

/// Makes the blocks that the kernel takes, once all blocks of the file are there. UUIDs and keys that don't
/// exist and texts in the place of numbers are findings.
void completeChanges(ModelFile& file);

} // namespace velmora::driver
