#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_1D_DataObject;
class MBS_DataObject;
class MBS_Measure;
class MBS_Model;
class MBS_ModelLookUp;
class MBS_StepFunction;

/// The text of an expression with symbols of the parser in the place of the kernel's words, and what they
/// stand for.
struct RewrittenText {
    std::string text;
    bool usesTime = false;                   ///< simtime[] stood in the text itself
    std::vector<MBS_Measure*> measures;      ///< in order of first mention; not owned
    std::vector<MBS_DataObject*> parameters; ///< in order of first mention; not owned
    std::vector<std::unique_ptr<MBS_StepFunction>> stepFunctions;
    std::vector<std::string> errors; ///< in order
};

/// Rewrites a text. What is faulty stays in it.
class ExpressionRewriter {
  public:
    /// Makes the call of a function of one variable with this argument, and gives its error text. Type: 0
    /// Akima, 1 zero-clamped, -1 as the object says.
    using AddFunction = std::function<std::string(MBS_1D_DataObject*, const std::string& argument, int type)>;

    /// `rewritten` holds the text; nothing is owned.
    ExpressionRewriter(RewrittenText& rewritten, MBS_Model* model, const MBS_ModelLookUp& lookUp,
                       AddFunction addFunction);

    /// One pass over the text per word.
    void rewriteAll();

  private:
    /// Gives the replacement of a word and its brackets; false if the text is faulty.
    using Action = bool (ExpressionRewriter::*)(const std::string& content, std::string& replacement);

    void rewrite(const std::string& keyword, Action action);
    std::string findContent(std::size_t openingBracket, std::size_t& end);
    void report(std::initializer_list<std::string> messages);

    bool takeParameter(const std::string& content, std::string& replacement);
    bool takeMeasure(const std::string& content, std::string& replacement);
    bool takeTime(const std::string& content, std::string& replacement);
    bool takeStep(const std::string& content, std::string& replacement);
    bool takeSpline(const std::string& content, std::string& replacement, int splineType);
    bool takeDefaultSpline(const std::string& content, std::string& replacement);
    bool takeAkimaSpline(const std::string& content, std::string& replacement);
    bool takeZeroClampedSpline(const std::string& content, std::string& replacement);
    void takeFunction(MBS_1D_DataObject* function, const std::string& argument, int splineType,
                      std::string& replacement);

    RewrittenText& target;
    MBS_Model* model; // not owned
    const MBS_ModelLookUp& lookUp;
    AddFunction addFunction;
    std::size_t numOfFunctions = 0;
};

} // namespace velmora
