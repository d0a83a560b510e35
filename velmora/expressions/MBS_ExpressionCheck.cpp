#include "velmora/expressions/MBS_ExpressionCheck.h"

#include "velmora/functions/exprTk_Interface.h"
#include "velmora/io/StringHelpers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

namespace velmora {

namespace {

using Finding = MBS_ExpressionFinding;
using Mention = MBS_ExpressionMention;

constexpr unsigned numOfSamples = 8;
constexpr double goldenShare = 0.6180339887498949;

/// One of the kernel's words: what it turns to, and how many commas stand between its brackets.
struct Word {
    const char* name;
    const char* symbol;
    std::size_t leastCommas, mostCommas;
};

constexpr std::array words = {Word{"parval", "par", 0, 0},    Word{"meaval", "mea", 0, 0},
                              Word{"simtime", "time", 0, 99}, Word{"step", "funx", 4, 5},
                              Word{"zccspl", "funx", 1, 1},   Word{"akispl", "funx", 1, 1},
                              Word{"spl", "funx", 1, 1}};

/// A text for the parser, with the column of the user's text for each of its characters.
class Rewriting {
  public:
    explicit Rewriting(std::string userText) : text(std::move(userText)) { toLowerCase(text); }

    Finding run() {
        if (const std::size_t place = findUnbalanced(); place != std::string::npos)
            fail("brackets aren't balanced", place);
        for (std::size_t i = 0; i < text.size() && finding.message.empty();)
            i = takeNext(i);
        if (finding.message.empty())
            compile();
        return std::move(finding);
    }

  private:
    void fail(std::string message, std::size_t column) {
        finding.message = std::move(message);
        finding.column = column;
    }
    void append(const std::string& piece, std::size_t column) {
        rewritten += piece;
        columns.insert(columns.end(), piece.size(), column);
    }
    std::size_t findUnbalanced() const;
    std::size_t findClosing(std::size_t open) const;
    std::size_t takeNext(std::size_t i);
    void take(const Word& word, std::size_t begin, std::size_t end, std::size_t keyword);
    void takeLabel(Mention::Kind kind, std::size_t begin, std::size_t end);
    void checkArgument(std::size_t begin, std::size_t end);
    void compile();
    bool hasValue(exprTk_Interface& parser);

    std::string text;
    std::string rewritten;
    std::vector<std::size_t> columns;
    std::vector<double> values; // of measures, parameters and functions alike
    std::vector<bool> isFunction;
    double time = 0.0;
    Finding finding;
};

std::size_t Rewriting::findUnbalanced() const {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '[')
            open.push_back(i);
        if (text[i] == ']') {
            if (open.empty())
                return i;
            open.pop_back();
        }
    }
    return open.empty() ? std::string::npos : open.back();
}

std::size_t Rewriting::findClosing(std::size_t open) const {
    int depth = 0;
    for (std::size_t i = open; i < text.size(); ++i) {
        depth += (text[i] == '[') - (text[i] == ']');
        if (depth == 0)
            return i;
    }
    return text.size();
}

/// Takes over a word of the kernel or one character; the place behind it.
std::size_t Rewriting::takeNext(std::size_t i) {
    for (const Word& word : words) {
        const std::string head = std::string(word.name) + "[";
        if (text.compare(i, head.size(), head) != 0)
            continue;
        const std::size_t begin = i + head.size(), end = findClosing(begin - 1);
        take(word, begin, end, i);
        return end + 1;
    }
    append(text.substr(i, 1), i);
    return i + 1;
}

void Rewriting::take(const Word& word, std::size_t begin, std::size_t end, std::size_t keyword) {
    const std::string name = word.name, symbol = word.symbol;
    const auto commas =
        static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(begin),
                                            text.begin() + static_cast<std::ptrdiff_t>(end), ','));
    if (commas < word.leastCommas || commas > word.mostCommas)
        return fail(
            name == "step" ? "step takes an argument, begin, initial value, end, final value and, if it is "
                             "not a hard one, polynomial or cosine"
            : word.mostCommas == 1 ? name + " takes an argument without a comma and the label of a spline"
                                   : name + " takes one label",
            keyword);
    if (symbol == "time")
        return append("time", keyword);
    append("values[" + std::to_string(values.size()) + "]", keyword);
    values.push_back(0.0);
    isFunction.push_back(symbol == "funx");
    const std::size_t comma = std::min(text.find(',', begin), end);
    if (name == "parval")
        takeLabel(Mention::Parameter, begin, end);
    else if (name == "meaval")
        takeLabel(Mention::Measure, begin, end);
    else
        checkArgument(begin, comma);
    if (word.mostCommas == 1)
        takeLabel(Mention::Function, comma + 1, end);
}

/// Labels of splines stand between blanks; those of measures and parameters are taken as they stand.
void Rewriting::takeLabel(Mention::Kind kind, std::size_t begin, std::size_t end) {
    while (kind == Mention::Function && begin < end && std::isspace(static_cast<unsigned char>(text[begin])))
        ++begin;
    std::string label = text.substr(begin, end - begin);
    if (kind == Mention::Function)
        trimString(label);
    finding.mentions.push_back({kind, std::move(label), begin});
}

/// The argument of a function is an expression of its own, which sees no parameters.
void Rewriting::checkArgument(std::size_t begin, std::size_t end) {
    const std::string argument = text.substr(begin, end - begin);
    if (const std::size_t place = argument.find("parval["); place != std::string::npos)
        return fail("a parameter can't stand in the argument of a function", begin + place);
    Finding inner = MBS_checkExpression(argument);
    for (Mention& mention : inner.mentions) {
        mention.column += begin;
        finding.mentions.push_back(std::move(mention));
    }
    if (!inner.message.empty())
        fail(inner.message, begin + inner.column);
}

bool Rewriting::hasValue(exprTk_Interface& parser) {
    for (unsigned sample = 0; sample < numOfSamples; ++sample) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            const double x = static_cast<double>(j + 1 + sample * values.size()) * goldenShare;
            values[j] = isFunction[j] ? 0.0 : 0.25 + 0.5 * (x - std::floor(x)); // as a model tries it
        }
        if (std::isfinite(parser.evaluateExpression()))
            return true;
    }
    return false;
}

void Rewriting::compile() {
    if (rewritten.find_first_not_of(" \t\r\n") == std::string::npos)
        return; // the constant 0
    exprTk_Interface parser;
    const std::string timeName = "time", valuesName = "values";
    const int size = static_cast<int>(values.size());
    parser.addVariableSymbol(&timeName, &time);
    parser.addVectorSymbol(&valuesName, values.data(), &size);
    parser.setExpression(&rewritten);
    if (parser.isExpressionValid()) {
        if (!hasValue(parser))
            fail("gives no finite number for any of the sample values tried", 0);
        return;
    }
    std::string message = parser.getErrorText(); // "ERR042 - what is wrong"
    if (const std::size_t dash = message.find(" - "); message.starts_with("ERR") && dash != std::string::npos)
        message.erase(0, dash + 3);
    const std::size_t place = parser.getErrorColumn();
    fail(std::move(message), place < columns.size() ? columns[place] : text.size());
}

} // namespace

MBS_ExpressionFinding MBS_checkExpression(const std::string& text) {
    return Rewriting(text).run();
}

} // namespace velmora
