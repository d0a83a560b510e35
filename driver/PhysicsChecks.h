#pragma once

#include <array>
#include <string>

namespace velmora::driver {

// Whether numbers can be what they stand for. Each function returns what is wrong, or an empty text.

/// A direction; its length may differ from 1 by 1.00001e-5, as in the kernel.
std::string checkUnitVector(const std::array<double, 3>& direction);

/// A frame, axis after axis. Lengths and scalar products of the axes may be off by 1e-3, so that data rounded
/// to four digits pass: the kernel makes them orthonormal.
std::string checkOrientation(const std::array<double, 9>& axes);

/// A mass in the model's unit of mass.
std::string checkMass(double mass);

/// Principal moments of inertia of a body of this mass. Each is at most the sum of the other two, up to 1e-3
/// of itself: for rounded data of thin plates, where the sum is reached.
std::string checkInertia(const std::array<double, 3>& moments, double mass);

} // namespace velmora::driver
