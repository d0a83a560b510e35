#pragma once

#include "driver/HHTSystem.h"

#include <Eigen/SparseCore>

#include <string>
#include <vector>

namespace velmora::driver {

/// Axes along which small motions of bodies are counted.
enum class PerturbationFrame {
    Global, ///< coefficients stay constant where what spins is a body of rotation, in bearings that don't
            ///< spin
    Body    ///< coefficients stay constant where everything turns as one, as the blades of a rotor
};

/// The small motions that bodies can make, dq = T x: per body x holds 3 translations in m, 3 turns in rad,
/// then the changes of the modal coordinates. T depends on the state and changes with it:
///
///     translations  dr = u,      turns  dp = (0, w) * p / 2      axes of the global frame
///                   dr = A u,           dp = p * (0, w) / 2      axes of the body's frame
///
/// with * for the product of quaternions (Nikravesh, "Computer-Aided Analysis of Mechanical Systems", 1988,
/// chapter 6). p has norm 1 and keeps it.
class SmallMotions {
  public:
    using Matrix = Eigen::SparseMatrix<double>;

    /// The model isn't owned.
    SmallMotions(const MBS_Model* model, PerturbationFrame frame);

    /// Computes T, its rate and its acceleration along the motion.
    void update(const HHTState& state);

    Matrix T, rate, acceleration;     ///< coordinates of the model by small motions
    std::vector<unsigned> bodyOffset; ///< per body its first small motion, and their number at the end

    unsigned getNumOfMotions() const { return bodyOffset.back(); }

  private:
    PerturbationFrame frame;
    unsigned numOfPhysicalDof = 0;
    std::vector<unsigned> numOfModes; // per body
};

/// "x", "y", "z", "turn x", "turn y", "turn z", "eta1", ... for a small motion of a body, from 0.
std::string getMotionName(unsigned index);

} // namespace velmora::driver
