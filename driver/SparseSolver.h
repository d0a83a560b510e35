#pragma once

#include <klu.h>

#include <memory>
#include <vector>

namespace velmora {
class MBM_SparseMat_CSR3;
class MBS_History;
} // namespace velmora

namespace velmora::driver {

/// Direct solver for one square sparse matrix whose values change and whose pattern doesn't.
///
/// The compressed rows of J are handed to KLU as the compressed columns of J', and J x = b is solved with the
/// transpose of that factorisation (Davis and Palamadai Natarajan, "Algorithm 907: KLU", 2010). The order of
/// elimination is found once (approximate minimum degree). The first factorisation chooses pivots; later ones
/// keep them, at a third of the cost, as long as they stay accurate. Some equations may be left out, together
/// with the unknowns of the same numbers.
class SparseSolver {
  public:
    /// Analyses the pattern. The matrix isn't owned and must outlive the solver.
    explicit SparseSolver(const MBM_SparseMat_CSR3* matrix);

    /// Analyses the pattern without these equations and their unknowns, which `solve` sets to 0. Replaces an
    /// earlier choice; allocates.
    void leaveOut(const std::vector<unsigned>& equations);

    /// Factorises the present values; false if the matrix is singular: `singularEquation` then tells where.
    bool factorise();
    /// Solves J x = b for the unknowns x, with the matrix of the last successful `factorise`. Both may be the
    /// same array.
    void solve(const double* rightHandSide, double* unknowns);

    /// Row, from 0, without a pivot after a failing `factorise`; the number of rows if it isn't known.
    unsigned getSingularEquation() const { return singularEquation; }

    /// Names the values of the last factorisation and of that which chose its pivots. Taking them back
    /// repeats both: solutions are the same to the last bit.
    void exchangeHistory(MBS_History& history);

    unsigned long getNumOfFactorisations() const { return factorisations; }
    unsigned long getNumOfRefactorisations() const { return refactorisations; }

  private:
    struct FreeSymbolic {
        klu_common* common;
        void operator()(klu_symbolic* analysis) const { klu_free_symbolic(&analysis, common); }
    };
    struct FreeNumeric {
        klu_common* common;
        void operator()(klu_numeric* factors) const { klu_free_numeric(&factors, common); }
    };

    void analyse();
    double* gatherValues();
    void scatterValues(const std::vector<double>& factorised);
    bool refactoriseWithOldPivots(double* values);
    bool repeatFactorisations(std::vector<double>& ofPivots, const std::vector<double>& refactorised);
    bool isPivotGrowthGood(double* values);
    bool factoriseWithNewPivots(double* values);
    double measurePivotGrowth(double* values);
    double takePivots();
    void substitute(double* x) const;
    unsigned findSmallestPivot() const;
    unsigned getEquation(int row) const;

    const MBM_SparseMat_CSR3* matrix;    // not owned
    int size = 0;                        // of what is factorised
    std::vector<int> rowStarts, columns; // zero-based pattern of what is factorised
    std::vector<double> permuted;        // unknowns in the order of elimination
    std::vector<double> reciprocals;     // of the pivots
    // These are empty if nothing is left out.
    std::vector<unsigned> kept;    // equation per row of what is factorised
    std::vector<unsigned> sources; // place in the matrix per value of what is factorised
    std::vector<double> values;
    std::unique_ptr<klu_common> common; // at a fixed address: the two below refer to it
    std::unique_ptr<klu_symbolic, FreeSymbolic> symbolic;
    std::unique_ptr<klu_numeric, FreeNumeric> numeric;
    std::vector<double> valuesOfPivots; // from which the pivots were chosen
    bool hasOldPivots = false;          // the last factorisation kept them
    double pivotGrowthAtFactorisation = 1.0;
    double pivotRatioAtFactorisation = 1.0; // smallest over largest
    unsigned singularEquation = 0;
    unsigned long factorisations = 0;
    unsigned long refactorisations = 0;
};

} // namespace velmora::driver
