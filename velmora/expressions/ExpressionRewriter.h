#pragma once

#include <initializer_list>
#include <string>

namespace velmora {

class MBS_1D_DataObject;
class MBS_FunctionExpression;
class MBS_Model;
class MBS_ModelLookUp;

/// Turns the kernel's words in the text of an expression into symbols of the parser, and gives the expression
/// the objects that they name. Errors go to the expression; what is faulty stays in the text.
class ExpressionRewriter {
  public:
    ExpressionRewriter(MBS_FunctionExpression& expression, MBS_Model* model, const MBS_ModelLookUp& lookUp);

    /// One pass over the text per word.
    void rewriteAll();

  private:
    /// Gives the replacement of a word and its brackets; false if the text is faulty.
    using Action = bool (ExpressionRewriter::*)(const std::string& content, std::string& replacement);

    void rewrite(const std::string& keyword, Action action);
    std::string findContent(std::size_t openingBracket, std::size_t& end);
    void report(const std::string& message);
    void report(std::initializer_list<const char*> messages);

    bool takeParameter(const std::string& content, std::string& replacement);
    bool takeMeasure(const std::string& content, std::string& replacement);
    bool takeTime(const std::string& content, std::string& replacement);
    bool takeStep(const std::string& content, std::string& replacement);
    bool takeSpline(const std::string& content, std::string& replacement, int splineType);
    bool takeDefaultSpline(const std::string& content, std::string& replacement);
    bool takeAkimaSpline(const std::string& content, std::string& replacement);
    bool takeZeroClampedSpline(const std::string& content, std::string& replacement);
    void addFunction(MBS_1D_DataObject* function, const std::string& argument, int splineType,
                     std::string& replacement);

    MBS_FunctionExpression& target;
    MBS_Model* model; // not owned
    const MBS_ModelLookUp& lookUp;
};

} // namespace velmora
