#pragma once

#include "driver/Options.h"
#include "driver/SimulationSettings.h"

#include <string>
#include <vector>

// What several commands of the program need.

namespace velmora::driver {

struct ModelFile;

/// The settings of a model file; options go before them.
SimulationSettings makeSettings(const Options& options, const ModelFile& file);

/// Makes a folder for results, with those above it; false, and told, if that can't be done.
bool makeResultDirectory(const std::string& directory);

/// Warns of equations that were left out, if there are any.
void warnOfRedundancy(const std::vector<std::string>& equations, const std::string& modelFile);

/// A text as a field of a file of comma-separated values: in quotes if it holds what separates fields, with
/// quotes of its own doubled.
std::string toCsvField(const std::string& text);

} // namespace velmora::driver
