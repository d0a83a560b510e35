#pragma once

#include <velmora/velmora.h>

#include <random>
#include <string>
#include <vector>

namespace velmora::test {

/// Full matrix of run-time size, zero-based, for comparisons.
struct Table {
    Table(unsigned numRows, unsigned numCols)
        : rows(numRows),
          cols(numCols),
          data(std::size_t{numRows} * numCols) {}
    double& operator()(unsigned i, unsigned j) { return data[std::size_t{i} * cols + j]; }
    double operator()(unsigned i, unsigned j) const { return data[std::size_t{i} * cols + j]; }
    unsigned rows, cols;
    std::vector<double> data;
};

/// A point at which derivatives are taken.
struct State {
    explicit State(MBS_Model& model) : q(&model), qd(&model), qdd(&model), lambda(&model) {}
    double t = 0.3;
    MBS_ModelPhysicalDofVector q, qd, qdd;
    MBS_ModelConstraintDofVector lambda;
};

/// Random numbers in [-1, 1] everywhere, Euler parameters of norm 0.9 to 1.1.
State randomState(MBS_Model& model, std::mt19937& random);

/// What is known beforehand of a code on a model.
enum class Expected {
    NonZero, ///< the matrix must not vanish at a random state
    Zero     ///< the matrix vanishes (no such object in the model)
};

/// A block whose analytic value is meant to differ from the difference.
struct KnownDeviation {
    unsigned code;
    std::string rowLabel; ///< as in the checker's messages, for example "body 0 rot"
    std::string colLabel;
};

/// Compares every matrix that a code stands for with central differences of the vector that it derives from,
/// through the model's public interface alone.
///
/// It names the block that fails, and fails too if a matrix that should not vanish is zero, or if a block
/// equals the difference bit by bit (then it was computed by it).
class DerivativeChecker {
  public:
    explicit DerivativeChecker(MBS_Model& checkedModel, std::vector<KnownDeviation> deviations = {});

    /// Messages about all that is wrong at `numStates` random states; empty if all is well.
    std::vector<std::string> check(unsigned code, Expected expected, unsigned numStates = 3);
    /// The four products with a transposed derivative against the matrices of the codes.
    std::vector<std::string> checkTransposedProducts();

    /// The kernel's matrix of one code at a state.
    Table analytic(unsigned code, State& s);
    /// Central differences of what the code derives from.
    Table difference(unsigned code, State& s);

    /// Relative to the largest element of the matrix and 1: rounding of the differences, with a margin.
    double tolerance = 2e-7;

  private:
    using Vector = std::vector<double>;

    void evaluate(State& s);
    Vector valueOf(unsigned code, State& s);
    Table differenceBy(MBM_DenseVector& variable, unsigned code, State& s);
    Table rateOfJacobian(unsigned code, State& s);
    void compare(unsigned code, const Table& a, const Table& d, std::vector<std::string>& messages) const;
    std::vector<std::string> labels(bool isConstraint) const;

    MBS_Model& model;
    std::vector<KnownDeviation> knownDeviations;
    std::mt19937 random{20240607};
};

} // namespace velmora::test
