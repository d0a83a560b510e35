#pragma once

#include <string>

namespace velmora::driver {

/// Shows what a modal file holds. Done, or `ModelHasErrors` for a file that can't be read whole.
int showModalFile(const std::string& fileName);
/// Says what is wrong with a modal file. Done if there are no errors.
int checkModalFile(const std::string& fileName);

} // namespace velmora::driver
