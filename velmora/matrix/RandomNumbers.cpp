#include "velmora/matrix/RandomNumbers.h"

#include <ctime>

namespace velmora {

RandomNumbers::RandomNumbers() : generator(static_cast<std::mt19937::result_type>(std::time(nullptr))) {}

double RandomNumbers::next() {
    const double magnitude = static_cast<double>(generator() % 32768) / 32767.0;
    return generator() % 2 == 1 ? magnitude : -magnitude;
}

} // namespace velmora
