#include "velmora/platform/Export.h"

extern "C" VELMORA_EXPORT double thrice(double x) {
    return 3.0 * x;
}
