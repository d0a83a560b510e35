#pragma once

#include <string>

namespace velmora {

/// The text with each index name[i], i no plain number, as name[max(0, min(name[] - 1, i))], where name[] is
/// the parser's word for the size. An index that is a NaN becomes the last one. Declarations of vectors stay.
std::string guardIndices(const std::string& text);

/// Number of words in the text that begin a loop.
unsigned countLoops(const std::string& text);

} // namespace velmora
