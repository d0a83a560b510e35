#pragma once

#include "velmora/platform/Export.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

/// A label in the text of an expression.
struct MBS_ExpressionMention {
    enum Kind {
        Measure,
        Parameter,
        Function
    } kind;             ///< what has to bear it; a function is a spline or a step
    std::string label;  ///< in lower case
    std::size_t column; ///< where it begins in the text, from 0
};

/// What a look at an expression found, without a model.
struct MBS_ExpressionFinding {
    std::string message;    ///< what is wrong; empty if nothing
    std::size_t column = 0; ///< where in the text, from 0
    std::vector<MBS_ExpressionMention> mentions;
};

/// Looks at a text before a model is built: brackets, numbers of arguments, what the parser says, and a value
/// for sample values of measures and parameters. Labels are taken as known; they are for the caller to look
/// up.
///
/// A model is more lenient: it takes a text that doesn't compile as 0.0.
VELMORA_EXPORT MBS_ExpressionFinding MBS_checkExpression(const std::string& text);

} // namespace velmora
