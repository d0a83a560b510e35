#pragma once

#include "velmora/functions/FL_FunctionExpression.h"
#include "velmora/matrix/MBM_Vector.h"
#include "velmora/model/MBS_Item.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_1D_DataObject;
class MBS_1D_Function;
class MBS_DataObject;
class MBS_Measure;
class MBS_Model;
class MBS_ModelLookUp;
class MBS_StepFunction;

/// A function F of time, measures and parameters, given as text.
///
/// The text is the language of the parser with words of the kernel's own, in any case of letters:
///
///     parval[label]                       value of a parameter                     -> par[k]
///     meaval[label]                       value of a measure, as last updated      -> mea[j]
///     simtime[]                           time                                     -> time
///     step[x, begin, y0, end, y1, mode]   step of x; "polynomial", "cosine", hard  -> funx[i]
///     spl[x, label]                       spline of a data object at x             -> funx[i]
///     akispl[x, label], zccspl[x, label]  the same as Akima or zero-clamped spline -> funx[i]
///
/// where x is an expression of its own. Errors of the text stand on the expression alone, for its owner to
/// ask at construction. A text that doesn't compile is none: its value is 0.0.
///
/// Derivatives are differences of the outer expression by its own symbols; what stands in the argument of a
/// function is reached by derivatives with respect to time alone.
class MBS_FunctionExpression : public MBS_Item {
  public:
    /// Compiles the text and tries it out once, with sample values for the measures. Neither model nor
    /// look-up is kept. Errors: unknown labels, wrong numbers of arguments or brackets, a value that isn't
    /// finite.
    MBS_FunctionExpression(MBS_Model* model, const MBS_ModelLookUp& lookUp, std::string text);
    MBS_FunctionExpression(const MBS_FunctionExpression&) = delete;
    MBS_FunctionExpression& operator=(const MBS_FunctionExpression&) = delete;
    ~MBS_FunctionExpression() override;

    std::string getClassName() const override { return "MBS_FunctionExpression"; }

    /// F at a time, with the present values of measures and parameters.
    double getValue(double t);
    /// Partial derivatives of F by time; 0.0 if time doesn't occur. The second one has no terms in second
    /// derivatives of the outer expression by its functions.
    double getFirstTimeDerivative(double t);
    double getSecondTimeDerivative(double t);
    /// dF/dm_j of all measures, into `meaDerivatives`.
    void updateMeasureDerivatives(double t);
    /// dF/dp_k of all parameters, into `parDerivatives`.
    void updateParameterDerivatives(double t);

    bool usesTime = false; ///< the text, or the argument of one of its functions, holds simtime[]
    unsigned numOfMeasures = 0;
    unsigned numOfParameters = 0;
    unsigned numOfFunctions = 0;
    double time = 0.0; ///< of the last evaluation
    double firstTimeDerivative = 0.0;
    double secondTimeDerivative = 0.0;
    std::vector<double> meaValues, parValues, funxValues;    ///< what the parser sees; never resized
    std::string expression;                                  ///< the text as rewritten
    std::vector<MBS_Measure*> measures;                      ///< in order of first mention; not owned
    std::vector<MBS_DataObject*> parameters;                 ///< in order of first mention; not owned
    std::vector<std::unique_ptr<MBS_1D_Function>> functions; ///< one per mention, in order of rewriting
    std::vector<std::unique_ptr<MBS_StepFunction>> stepFunctions;
    std::unique_ptr<FL_FunctionExpression> evaluator;
    std::unique_ptr<MBM_DenseStandAloneVector> meaDerivatives;  ///< null without measures
    std::unique_ptr<MBM_DenseStandAloneVector> parDerivatives;  ///< null without parameters
    std::unique_ptr<MBM_DenseStandAloneVector> funxDerivatives; ///< null without functions

  private:
    void rewrite(MBS_Model* model, const MBS_ModelLookUp& lookUp);
    void bindSymbols();
    void tryOut();
    void takeSampleValues(unsigned sample);
    void refresh(double t);
    /// Sum over the functions of time of dF/dfunx times what `rate` gives for one.
    template <class Rate>
    double sumOverFunctions(double t, Rate rate);
};

/// One call of a function of one variable inside an expression: a data object g, and an expression x of its
/// own for the argument.
class MBS_1D_Function : public MBS_Item {
  public:
    /// `type` 0 Akima, 1 zero-clamped cubic, -1 as the data object says. Errors are those of the argument.
    MBS_1D_Function(MBS_Model* model, const MBS_ModelLookUp& lookUp, MBS_1D_DataObject* function,
                    std::string argumentText, int type);
    ~MBS_1D_Function() override;
    std::string getClassName() const override { return "MBS_1D_Function"; }

    /// g(x(t)).
    double getValue(double t);
    /// g' x'.
    double getFirstTimeDerivative(double t);
    /// g'' x'^2 + g' x''.
    double getSecondTimeDerivative(double t);

    double lastArgument = 0.0; ///< x at the last derivative
    std::unique_ptr<MBS_FunctionExpression> argument;
    MBS_1D_DataObject* dataObject; ///< not owned
    int splineType;

  private:
    double getFirstDerivative(double x);
    double getSecondDerivative(double x);
};

} // namespace velmora
