#pragma once

#include <cstddef>
#include <string>

namespace velmora {

/// The text with each index name[i], i no plain number, as name[max(0, min(name[] - 1, i))], where name[] is
/// the parser's word for the size. An index that is a NaN becomes the last one. A local vector that starts as
/// another vector, var name[n] := other, becomes var name[n]; name := other, so that elements beyond those of
/// the other are 0.0.
std::string guardIndices(const std::string& text);

/// Number of elements of all local vectors that the text declares. It is `most` + 1, and `place` where that
/// size stands, if they are more or a size is no plain number.
std::size_t countLocalElements(const std::string& text, std::size_t most, std::size_t& place);

/// Number of words in the text that begin a loop.
unsigned countLoops(const std::string& text);

} // namespace velmora
