#pragma once

#include "velmora/platform/Export.h"

#include <string>

namespace velmora {

/// Text attributes of the console, by the numbers of the console interface.
enum class ConsoleAttribute { Plain = 0, BrightBlue = 9, BrightRed = 12 };

/// Writes a text to standard output in the colour of the attribute. Colours are used only where standard
/// output is a terminal and the environment variable NO_COLOR is unset.
VELMORA_EXPORT void printToConsole(const std::string& text, ConsoleAttribute attribute);

} // namespace velmora
