// A user library that lacks some functions.

#include "velmora/external_forces/ExternalSubroutine.h"

extern "C" {

void createExteralSubroutine(const uint32_t*, const char*, int32_t* id) {
    *id = 1;
}
void get3x1ForceVector(const int32_t*, const double*, const double*, double* out) {
    out[0] = out[1] = out[2] = 0.0;
}
void setTimeOfLastSuccessfulStep(const int32_t*, const double*) {}
void getHistory(const int32_t*, uint32_t* size, double*) {
    *size = 0;
}

} // extern "C"
