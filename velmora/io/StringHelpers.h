#pragma once

#include "velmora/platform/Export.h"

#include <string>
#include <vector>

namespace velmora {

/// Removes leading and trailing blanks and tabs; a text that is a single line feed then becomes empty.
VELMORA_EXPORT void trimString(std::string& text);

/// Converts byte by byte with `tolower`.
VELMORA_EXPORT void toLowerCase(std::string& text);

/// Splits at the first occurrence of the delimiter, whose length is one character; both parts are trimmed.
/// False, with both parts left alone, if there is none.
VELMORA_EXPORT bool splitAtDelimiter(std::string text, std::string delimiter, std::string* left,
                                     std::string* right);

/// Appends the trimmed pieces between delimiters. A piece of length 0 between two delimiters is skipped; a
/// piece of blanks gives an empty entry.
VELMORA_EXPORT void tokenizeString(const std::string& text, std::vector<std::string>* pieces,
                                   const std::string& delimiter);

/// Appends consecutive fields of the given widths, untrimmed; false as soon as one runs past the end.
VELMORA_EXPORT bool splitByWidths(const std::string& text, std::vector<std::string>* pieces,
                                  const std::vector<unsigned>* widths);

// Conversions of a whole text; false, with the value left alone, if it isn't one. Numbers are read as a
// stream in the classic locale reads them, and nothing may stand behind them.

/// "yes" or "no" in any case.
VELMORA_EXPORT bool stringToBool(std::string text, bool* value);
VELMORA_EXPORT bool stringToInt(const std::string& text, int* value);
/// A negative number is no unsigned.
VELMORA_EXPORT bool stringToUnsigned(const std::string& text, unsigned* value);
VELMORA_EXPORT bool stringToDouble(const std::string& text, double* value);

} // namespace velmora
