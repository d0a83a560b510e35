#pragma once

#include "driver/ModelContents.h"

#include <toml++/toml.h>

namespace velmora::driver {

/// Reads one [[Start]] table: the "uuid" of a body, and where it is at the start.
void readStart(const toml::table& table, ModelFile& file);

/// Finds the bodies, once all blocks of the file are there. UUIDs that don't exist or come twice are
/// findings.
void completeStarts(ModelFile& file);

/// Appends findings about modal coordinates that aren't as many as the body has.
void checkStarts(const MBS_Model& model, ModelFile& file);

} // namespace velmora::driver
