#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora::driver {

/// Number of letters that have to be inserted, left out, replaced or swapped with their neighbour to turn
/// one text into the other, whatever their case (optimal string alignment; Damerau, "A technique for computer
/// detection and correction of spelling errors", Communications of the ACM 7, 1964).
unsigned getEditDistance(std::string_view a, std::string_view b);

/// The name that was probably meant: the first of the nearest ones, if at most a third of the letters
/// differ. Empty if none is near.
std::string findNearName(std::string_view text, const std::vector<std::string>& names);

/// "; did you mean <name>?", or an empty text if no name is near.
std::string suggestNearName(std::string_view text, const std::vector<std::string>& names);

} // namespace velmora::driver
