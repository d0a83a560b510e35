#include "driver/Stability.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

// Notation: K the stiffness and M the mass matrix, both on the movements x with Cq x = 0; K x = mu M x.
//
// With a shift s the operator B = s (K + s M)^-1 M has the eigenvalues s / (mu + s): between 0 and 1 for mu >
// 0, 1 for free movements, above 1 or negative for mu < 0. The ends of its spectrum, where all unstable
// movements are, are found first by the Lanczos method in the metric of M (Ericsson and Ruhe, Math. Comp. 35
// (1980)).

namespace velmora::driver {

namespace {

constexpr unsigned numOfLanczosSteps = 30;
constexpr double shiftFactors[] = {1.0, 100.0, 1e4};
constexpr double negligible = 1e-10;    // parts of a vector
constexpr double smallestGrowth = 1e-6; // of the shift

using Vector = MBS_ModelPhysicalDofVector;

double multiply(const Vector& a, const Vector& b) {
    return std::inner_product(a.dofVector->data, a.dofVector->data + a.getNumOfDof(), b.dofVector->data, 0.0);
}

void addTo(Vector& y, double factor, const Vector& x) {
    for (unsigned i = 0; i < y.getNumOfDof(); ++i)
        y.dofVector->data[i] += factor * x.dofVector->data[i];
}

/// Lanczos vectors of B with the present factorisation, and their products with M.
class Lanczos {
  public:
    explicit Lanczos(HHTSystem& equations)
        : system(equations),
          noViolation(equations.getModel()),
          next(equations.getModel()),
          nextTimesMass(equations.getModel()) {
        std::fill_n(noViolation.dofVector->data, noViolation.getNumOfConstraints(), 0.0);
    }

    void run() {
        std::minstd_rand random(1); // the same in each run of the program
        std::uniform_real_distribution<double> numbers(-1.0, 1.0);
        std::generate_n(next.dofVector->data, next.getNumOfDof(), [&] { return numbers(random); });
        system.multiplyByMass(next, nextTimesMass);
        applyTo(nextTimesMass); // fulfils the constraints
        if (!takeNext())
            return;
        while (vectors.size() < numOfLanczosSteps) {
            applyTo(products.back());
            diagonal.push_back(multiply(next, products.back()));
            for (unsigned twice = 0; twice < 2; ++twice)
                for (std::size_t i = 0; i < vectors.size(); ++i)
                    addTo(next, -multiply(next, products[i]), vectors[i]);
            if (!takeNext())
                return;
        }
        applyTo(products.back());
        diagonal.push_back(multiply(next, products.back()));
    }

    /// Eigenvalue of the most unstable movement, which goes to `direction`; 1 if there is none.
    double getEnd(Vector& direction) const {
        const auto size = static_cast<Eigen::Index>(diagonal.size());
        if (size == 0)
            return 1.0;
        Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen;
        eigen.computeFromTridiagonal(Eigen::Map<const Eigen::VectorXd>(diagonal.data(), size),
                                     Eigen::Map<const Eigen::VectorXd>(offDiagonal.data(), size - 1));
        // mu = s (1 / theta - 1): below 0 the eigenvalue nearest to 0 is the worst, above 1 the largest.
        const double lowest = eigen.eigenvalues()[0], highest = eigen.eigenvalues()[size - 1];
        const Eigen::Index column = lowest < -smallestGrowth ? 0 : size - 1;
        std::fill_n(direction.dofVector->data, direction.getNumOfDof(), 0.0);
        for (Eigen::Index i = 0; i < size; ++i)
            addTo(direction, eigen.eigenvectors()(i, column), vectors[static_cast<std::size_t>(i)]);
        return column == 0 ? lowest : std::max(highest, 1.0);
    }

  private:
    void applyTo(const Vector& product) {
        for (unsigned i = 0; i < next.getNumOfDof(); ++i)
            nextTimesMass.dofVector->data[i] = -product.dofVector->data[i];
        system.solve(nextTimesMass.dofVector->data, noViolation.dofVector->data);
        std::copy_n(system.getCorrection().data(), next.getNumOfDof(), next.dofVector->data);
    }
    /// False if nothing but rounding is left.
    bool takeNext() {
        system.multiplyByMass(next, nextTimesMass);
        const double length = std::sqrt(std::max(multiply(next, nextTimesMass), 0.0));
        if (!(length > negligible))
            return false;
        if (!vectors.empty())
            offDiagonal.push_back(length);
        for (Vector* vector : {&next, &nextTimesMass})
            for (unsigned i = 0; i < next.getNumOfDof(); ++i)
                vector->dofVector->data[i] /= length;
        vectors.push_back(next);
        products.push_back(nextTimesMass);
        return true;
    }

    HHTSystem& system;
    MBS_ModelConstraintDofVector noViolation;
    Vector next, nextTimesMass;
    std::vector<Vector> vectors, products;
    std::vector<double> diagonal, offDiagonal;
};

} // namespace

Instability findInstability(HHTSystem& system, const HHTState& state, double scale, Vector& direction) {
    Vector found(direction);
    Instability worst;
    for (const double factor : shiftFactors) {
        const double shift = factor * scale;
        if (!system.refreshMatrix(state, 0.0, 1.0 / shift))
            continue; // the shift meets a growth exactly, or the stiffness is out of its reach
        Lanczos lanczos(system);
        lanczos.run();
        const double growth = shift * (1.0 - 1.0 / lanczos.getEnd(found));
        if (growth > std::max(smallestGrowth * shift, worst.growth)) {
            worst = {true, growth};
            direction = found;
        }
    }
    return worst;
}

} // namespace velmora::driver
