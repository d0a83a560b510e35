#pragma once

#include "driver/ModelContents.h"

#include <toml++/toml.h>

#include <string>

namespace velmora::driver {

/// Reads the section [model] with its key "name" into the data model.
void readModelSection(const toml::table& section, ModelFile& file);

/// Reads the section [simulation]. A value out of its range is a finding and isn't stored.
void readSimulationSection(const toml::table& section, ModelFile& file);

/// Reads the section [results]: the keys of the result manager, as texts.
void readResultsSection(const toml::table& section, ModelFile& file);

} // namespace velmora::driver
