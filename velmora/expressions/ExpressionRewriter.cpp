#include "velmora/expressions/ExpressionRewriter.h"

#include "velmora/data_objects/MBS_StepFunction.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr std::size_t largestNumOfStepPieces = 6;

/// The trimmed pieces between commas; one more than `most` stands for all that are too many.
std::vector<std::string> splitAtCommas(std::string text, std::size_t most) {
    std::vector<std::string> pieces;
    std::string left, right;
    while (pieces.size() <= most && splitAtDelimiter(text, ",", &left, &right)) {
        pieces.push_back(left);
        text = right;
    }
    trimString(text);
    pieces.push_back(text);
    return pieces;
}

/// Index of the object with this label; the size of the list if there is none.
template <class Object>
std::size_t findLabel(const std::vector<Object*>& objects, const std::string& label) {
    return static_cast<std::size_t>(
        std::ranges::find_if(objects, [&](const Object* object) { return object->label == label; }) -
        objects.begin());
}

std::string symbol(const char* name, std::size_t index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

} // namespace

ExpressionRewriter::ExpressionRewriter(RewrittenText& rewritten, MBS_Model* owner,
                                       const MBS_ModelLookUp& objects, AddFunction add)
    : target(rewritten),
      model(owner),
      lookUp(objects),
      addFunction(std::move(add)) {}

void ExpressionRewriter::report(std::initializer_list<std::string> messages) {
    target.errors.insert(target.errors.end(), messages);
}

// "spl[" is part of "akispl[" and "zccspl[", which go first.
void ExpressionRewriter::rewriteAll() {
    rewrite("parval", &ExpressionRewriter::takeParameter);
    rewrite("step", &ExpressionRewriter::takeStep);
    rewrite("zccspl", &ExpressionRewriter::takeZeroClampedSpline);
    rewrite("akispl", &ExpressionRewriter::takeAkimaSpline);
    rewrite("spl", &ExpressionRewriter::takeDefaultSpline);
    rewrite("meaval", &ExpressionRewriter::takeMeasure);
    rewrite("simtime", &ExpressionRewriter::takeTime);
}

void ExpressionRewriter::rewrite(const std::string& keyword, Action action) {
    std::string& text = target.text;
    for (;;) {
        const std::size_t begin = text.find(keyword + "[");
        if (begin == std::string::npos)
            return;
        std::size_t end = 0;
        const std::string content = findContent(begin + keyword.size(), end);
        std::string replacement;
        if (!(this->*action)(content, replacement))
            return;
        text.replace(begin, end - begin, replacement);
    }
}

/// What stands between this bracket and the one that closes it; `end` is the place behind that.
std::string ExpressionRewriter::findContent(std::size_t openingBracket, std::size_t& end) {
    const std::string& text = target.text;
    end = std::min(openingBracket + 2, text.size());
    if (std::ranges::count(text, '[') != std::ranges::count(text, ']')) {
        report({"ERROR: wrong number of brackets in expression <" + text + ">!\n"});
        return {};
    }
    int depth = 0;
    for (std::size_t i = openingBracket; i < text.size(); ++i) {
        depth += (text[i] == '[') - (text[i] == ']');
        if (depth > 0)
            continue;
        end = i + 1;
        return text.substr(openingBracket + 1, i - openingBracket - 1);
    }
    return {};
}

bool ExpressionRewriter::takeParameter(const std::string& label, std::string& replacement) {
    const std::size_t index = findLabel(target.parameters, label);
    if (index == target.parameters.size()) {
        MBS_DataObject* parameter = lookUp.getDataObjectByLabel(label);
        if (!parameter) {
            report({"Parameter <" + label +
                    "> not found in model! Check for typos like c_1 instead of c1, etc!\n"});
            return false;
        }
        if (parameter->getClassName() != "MBS_Parameter") {
            report({"Given label <" + label + "> not of type Parameter!\n"});
            return false;
        }
        target.parameters.push_back(parameter);
    }
    replacement = symbol("par", index);
    return true;
}

bool ExpressionRewriter::takeMeasure(const std::string& label, std::string& replacement) {
    const std::size_t index = findLabel(target.measures, label);
    if (index == target.measures.size()) {
        MBS_Measure* measure = lookUp.getMeasureByLabel(label);
        if (!measure) {
            report({"Measure <" + label +
                    "> not found in model! Check for typos like disp_X instead of dispX, etc!\n"});
            return false;
        }
        target.measures.push_back(measure);
    }
    replacement = symbol("mea", index);
    return true;
}

bool ExpressionRewriter::takeTime(const std::string&, std::string& replacement) {
    target.usesTime = true;
    replacement = "time";
    return true;
}

// Without a mode the last value stands in its place, which is none of the known words: a hard step.
bool ExpressionRewriter::takeStep(const std::string& content, std::string& replacement) {
    std::vector<std::string> pieces = splitAtCommas(content, largestNumOfStepPieces);
    if (pieces.size() != largestNumOfStepPieces && pieces.size() != largestNumOfStepPieces - 1) {
        report({"ERROR: Number of step arguments is wrong, 5 or 6 required!\n", "1...indep.var.expression\n",
                "2...begin of step\n", "3...initial value of step\n", "4...end of step\n",
                "5...final value of step\n", "6...mode of step (hard, polynomial, cosine)\n"});
        return false;
    }
    pieces.push_back(pieces.back());
    IO_DataModelBlock block("DataObject", "noUUID",
                            "stepfunction_" + std::to_string(lookUp.getNumOfDataObjects()), "");
    block.type = "StepFunction";
    constexpr std::array keys = {"Begin", "InitialValue", "End", "FinalValue", "Mode"};
    for (std::size_t i = 0; i < keys.size(); ++i)
        block.addKeyValue(keys[i], pieces[i + 1]);
    target.stepFunctions.push_back(std::make_unique<MBS_StepFunction>(&block, model));
    takeFunction(target.stepFunctions.back().get(), pieces.front(), 0, replacement);
    return true;
}

bool ExpressionRewriter::takeSpline(const std::string& content, std::string& replacement, int splineType) {
    const std::vector<std::string> pieces = splitAtCommas(content, 2);
    if (pieces.size() != 2) {
        report({"ERROR: Number of spline arguments is wrong, 2 required!\n", "1...indep.var.expression\n",
                "2...label of spline data object\n"});
        return false;
    }
    auto* function = dynamic_cast<MBS_1D_DataObject*>(lookUp.getDataObjectByLabel(pieces[1]));
    if (!function) {
        report({"ERROR: " + pieces[1] + " no spline data!\n"});
        return false;
    }
    takeFunction(function, pieces[0], splineType, replacement);
    return true;
}

bool ExpressionRewriter::takeDefaultSpline(const std::string& content, std::string& replacement) {
    return takeSpline(content, replacement, -1);
}

bool ExpressionRewriter::takeAkimaSpline(const std::string& content, std::string& replacement) {
    return takeSpline(content, replacement, 0);
}

bool ExpressionRewriter::takeZeroClampedSpline(const std::string& content, std::string& replacement) {
    return takeSpline(content, replacement, 1);
}

void ExpressionRewriter::takeFunction(MBS_1D_DataObject* function, const std::string& argument,
                                      int splineType, std::string& replacement) {
    replacement = symbol("funx", numOfFunctions++);
    if (const std::string error = addFunction(function, argument, splineType); !error.empty())
        report({error});
}

} // namespace velmora
