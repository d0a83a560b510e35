#pragma once

#include <random>

namespace velmora {

/// Random numbers s r / 32767 in [-1, 1] with a 15-bit r and a random sign s, seeded by the clock.
class RandomNumbers {
  public:
    RandomNumbers();
    double next();

  private:
    std::mt19937 generator;
};

} // namespace velmora
