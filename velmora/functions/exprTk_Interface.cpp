#include "velmora/functions/exprTk_Interface.h"

#include "velmora/functions/IndexGuard.h"

#include <cmath>
#include <limits>

// What the language doesn't need, and what could reach beyond numbers.
#define exprtk_disable_string_capabilities
#define exprtk_disable_return_statement
#define exprtk_disable_rtl_io
#define exprtk_disable_rtl_io_file
#define exprtk_disable_rtl_vecops
#define exprtk_disable_caseinsensitivity
#define exprtk_disable_comments
#include <exprtk.hpp>

namespace velmora {

namespace {

constexpr double mostIterations = 1e6;
constexpr std::size_t mostLocalElements = 10000;
constexpr double mostElementsInLoops = 1e8;

/// Stops loops that don't end. A loop counts its own iterations from its beginning; with n loops in a text,
/// each gets the n-th root of what all may do together, which is less if local vectors may be worked on.
struct LoopLimit final : exprtk::loop_runtime_check {
    LoopLimit() { loop_set = e_all_loops; }
    void setLimit(unsigned numOfLoops, std::size_t numOfLocalElements) {
        const double inAll =
            std::min(mostIterations, mostElementsInLoops / static_cast<double>(1 + numOfLocalElements));
        max_loop_iterations =
            static_cast<unsigned long long>(std::pow(inAll, 1.0 / std::max(numOfLoops, 1U)));
    }
    void handle_runtime_violation(const violation_context&) override { throw LoopViolation(); }

    struct LoopViolation {};
};

} // namespace

// The parser itself is large, and gone once a text is compiled.
struct exprTk_Interface::Parser {
    /// False, with the reason kept, if the text doesn't compile.
    bool compile(const std::string& text) {
        const std::size_t numOfLocalElements = countLocalElements(text, mostLocalElements, errorColumn);
        if (numOfLocalElements > mostLocalElements) {
            errorText =
                "The size of a local vector must be a plain number, at most 10000 for all of them together";
            return false;
        }
        exprtk::parser<double> compiler;
        compiler.register_loop_runtime_check(limit);
        limit.setLimit(countLoops(text), numOfLocalElements);
        exprtk::expression<double> candidate;
        candidate.register_symbol_table(symbols);
        if (compiler.compile(text, candidate)) {
            expression = candidate;
            return true;
        }
        errorText = "the text can't be understood";
        if (compiler.error_count() > 0) {
            const exprtk::parser_error::type error = compiler.get_error(0);
            errorText = error.diagnostic;
            errorColumn = std::min(error.token.position, text.size());
        }
        return false;
    }

    exprtk::symbol_table<double> symbols;
    LoopLimit limit;
    exprtk::expression<double> expression;
    bool isValid = false;
    std::string errorText;
    std::size_t errorColumn = 0;
};

exprTk_Interface::exprTk_Interface() : parser(std::make_unique<Parser>()) {
    parser->symbols.add_constants();
}

exprTk_Interface::~exprTk_Interface() = default;

void exprTk_Interface::addVariableSymbol(const std::string* name, double* value) {
    parser->symbols.add_variable(*name, *value);
}

void exprTk_Interface::addVectorSymbol(const std::string* name, double* values, const int* size) {
    if (*size > 0)
        parser->symbols.add_vector(*name, values, static_cast<std::size_t>(*size));
}

// The text is compiled as it stands first, so that errors have their places in it, and then with indices that
// can't leave their vectors.
void exprTk_Interface::setExpression(const std::string* text) {
    Parser& p = *parser;
    p.isValid = false;
    p.errorText.clear();
    p.errorColumn = 0;
    try {
        if (p.compile(*text)) {
            const std::string guarded = guardIndices(*text);
            p.isValid = guarded == *text || p.compile(guarded);
            p.errorColumn = std::min(p.errorColumn, text->size());
        }
    } catch (const std::bad_alloc&) {
        p.errorText = "the text asks for more memory than there is";
    }
}

bool exprTk_Interface::isExpressionValid() const {
    return parser->isValid;
}

double exprTk_Interface::evaluateExpression() {
    if (!parser->isValid)
        return 0.0;
    try {
        return parser->expression.value();
    } catch (const LoopLimit::LoopViolation&) {
        return std::numeric_limits<double>::quiet_NaN();
    }
}

const std::string& exprTk_Interface::getErrorText() const {
    return parser->errorText;
}

std::size_t exprTk_Interface::getErrorColumn() const {
    return parser->errorColumn;
}

} // namespace velmora
