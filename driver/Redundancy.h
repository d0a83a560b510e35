#pragma once

#include "driver/ConstraintRank.h"
#include "driver/EquationNames.h"
#include "driver/HHTSystem.h"

#include <string>
#include <vector>

namespace velmora::driver {

/// The constraint equations that repeat what others say: finds them, leaves them out of the system, names
/// them, and watches whether they stay fulfilled.
class Redundancy {
  public:
    /// Neither is owned; both must outlive the object.
    Redundancy(HHTSystem* equations, const EquationNames* equationNames)
        : system(equations),
          names(equationNames) {}

    /// Looks for dependent equations at the system's last refreshed Jacobian and leaves them out; true if
    /// they aren't those that were left out before. With a larger tolerance also what is nearly dependent.
    bool leaveOutDependentEquations(double tolerance = sameEquation);

    /// Names the choice; taking it back leaves the equations out of the system.
    void exchangeHistory(MBS_History& history);

    /// Number of independent constraint equations, those of the Euler parameters among them.
    unsigned getRank() const { return found.rank; }
    unsigned getNumOfDependentEquations() const { return static_cast<unsigned>(found.dependent.size()); }
    /// Per dependent equation: "dzFixed of hinge-b (link1, link2) repeats hinge-a, hinge-c".
    std::vector<std::string> describe() const;

    /// How far an equation is from being fulfilled: the movement that it asks for, in radii of gyration or
    /// radians.
    struct Violation {
        double size = 0.0;
        unsigned equation = 0;
    };
    /// Largest violation among the equations left out, at the last `evaluate`.
    Violation findViolationOfLeftOut() const { return findViolationOfLeftOut(getResiduals()); }
    /// The same with residuals of all constraint equations; of velocities, say.
    Violation findViolationOfLeftOut(const double* residuals) const;
    /// Largest violation among all equations but those of Euler parameters, at the last `evaluate`.
    Violation findLargestViolation() const;

  private:
    bool leaveOutFound();
    bool isSound() const;
    const double* getResiduals() const { return system->constraintResidual.dofVector->data; }

    HHTSystem* system;          // not owned
    const EquationNames* names; // not owned
    ConstraintRank found;
    std::vector<double> rowLengths; // per constraint equation
};

/// So many equations a message names; more would hide the rest of it.
constexpr std::size_t numOfNamedEquations = 10;

/// The texts joined by "; "; of more than `largestNumber` only the first ones, and how many more there are.
std::string joinShortly(const std::vector<std::string>& texts, std::size_t largestNumber,
                        const char* separator = "; ");

} // namespace velmora::driver
