// A user library for the tests. Vectors are polynomials of the measures with exact derivatives; every call is
// written into a log. The build makes two libraries of it: with the plain names, and with those per body.

#include "velmora/external_forces/ExternalSubroutine.h"

#include <string>

namespace {

std::string callLog;
uint32_t numOfMeasures = 0;
double timeOfLastStep = 0.0;

void note(const std::string& text) {
    callLog += text + "\n";
}

double at(const double* measures, uint32_t k) {
    return k < numOfMeasures ? measures[k] : 0.0;
}

// v_i = c_i + t + a_i m_0 + b_i m_0 m_1 + d_i m_2, with numbers of each vector its own
void vector(int kind, const double* t, const double* m, double* out) {
    for (int i = 0; i < 3; ++i) {
        const double n = 1.0 + kind + 0.3 * i;
        out[i] =
            0.4 * n + *t + (0.7 - 0.2 * n) * at(m, 0) + 0.15 * n * at(m, 0) * at(m, 1) + 0.25 * n * at(m, 2);
    }
}

void derivative(int kind, const double* m, uint32_t k, double* out) {
    for (int i = 0; i < 3; ++i) {
        const double n = 1.0 + kind + 0.3 * i;
        out[i] = k == 0 ? 0.7 - 0.2 * n + 0.15 * n * at(m, 1) : k == 1 ? 0.15 * n * at(m, 0) : 0.25 * n;
    }
}

} // namespace

extern "C" {

VELMORA_USER_FUNCTION const char* takeLog() {
    static std::string taken;
    taken = callLog;
    callLog.clear();
    return taken.c_str();
}

void createExteralSubroutine(const uint32_t* measures, const char* path, int32_t* id) {
    static int32_t count = 0;
    numOfMeasures = *measures;
    *id = ++count;
    const std::string text = path;
    note("create " + std::to_string(*measures) + " <" + text.substr(text.rfind('/') + 1) + ">");
}

void get3x1ForceAndTorqueVector4ResultFile(const int32_t*, double* force, double* torque) {
    note("result");
    for (int i = 0; i < 3; ++i) {
        force[i] = 1.0 + i;
        torque[i] = 4.0 + i;
    }
}

void setTimeOfLastSuccessfulStep(const int32_t*, const double* t) {
    note("time " + std::to_string(*t));
    timeOfLastStep = *t;
}

void getHistory(const int32_t*, uint32_t* size, double* numbers) {
    *size = 2;
    if (numbers) {
        numbers[0] = 7.0;
        numbers[1] = timeOfLastStep;
    }
}

void setHistory(const int32_t*, const uint32_t* size, const double* numbers) {
    note("history " + std::to_string(*size) + " " + std::to_string(numbers[0]) + " " +
         std::to_string(numbers[1]));
}

#if defined(PER_BODY)
void get3x1ForceVector_Body1(const int32_t*, const double* t, const double* m, double* out) {
    note("force_Body1");
    vector(0, t, m, out);
}
void get3x1TorqueVector_Body1(const int32_t*, const double* t, const double* m, double* out) {
    note("torque_Body1");
    vector(1, t, m, out);
}
void get3x1ForceDerivative_Body1(const int32_t*, const double*, const double* m, const uint32_t* k,
                                 double* out) {
    note("dforce_Body1 " + std::to_string(*k));
    derivative(0, m, *k, out);
}
void get3x1TorqueDerivative_Body1(const int32_t*, const double*, const double* m, const uint32_t* k,
                                  double* out) {
    note("dtorque_Body1 " + std::to_string(*k));
    derivative(1, m, *k, out);
}
void get3x1ForceVector_Body2(const int32_t*, const double* t, const double* m, double* out) {
    note("force_Body2");
    vector(2, t, m, out);
}
void get3x1TorqueVector_Body2(const int32_t*, const double* t, const double* m, double* out) {
    note("torque_Body2");
    vector(3, t, m, out);
}
void get3x1ForceDerivative_Body2(const int32_t*, const double*, const double* m, const uint32_t* k,
                                 double* out) {
    note("dforce_Body2 " + std::to_string(*k));
    derivative(2, m, *k, out);
}
void get3x1TorqueDerivative_Body2(const int32_t*, const double*, const double* m, const uint32_t* k,
                                  double* out) {
    note("dtorque_Body2 " + std::to_string(*k));
    derivative(3, m, *k, out);
}
#else
void get3x1ForceVector(const int32_t*, const double* t, const double* m, double* out) {
    note("force");
    vector(0, t, m, out);
}
void get3x1TorqueVector(const int32_t*, const double* t, const double* m, double* out) {
    note("torque");
    vector(1, t, m, out);
}
void get3x1ForceDerivative(const int32_t*, const double*, const double* m, const uint32_t* k, double* out) {
    note("dforce " + std::to_string(*k));
    derivative(0, m, *k, out);
}
void get3x1TorqueDerivative(const int32_t*, const double*, const double* m, const uint32_t* k, double* out) {
    note("dtorque " + std::to_string(*k));
    derivative(1, m, *k, out);
}
#endif

} // extern "C"
