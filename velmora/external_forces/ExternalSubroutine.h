#ifndef VELMORA_EXTERNAL_FORCES_EXTERNALSUBROUTINE_H
#define VELMORA_EXTERNAL_FORCES_EXTERNALSUBROUTINE_H

/* What a user's force library offers, in C or C++. The kernel loads the library when the model is built, and
 * calls the functions by these plain names, the first one spelled as it is.
 *
 * A force gives a vector F at a point of a body and a torque T, in the frame that the block asks for: that of
 * the body ("BodyFixed"; of body 1 for both bodies) or the global one ("SpaceFixed"). They depend on time and
 * on the values of the measures that the block lists, and on nothing else of the state; derivatives by the
 * measures make the Jacobian exact. All arguments are pointers; the arrays of vectors hold three numbers.
 *
 * A force between two bodies has either the functions below, and body 2 gets the negated vectors, or four
 * with "_Body1" and four with "_Body2" behind their names in place of get3x1ForceVector, get3x1TorqueVector,
 * get3x1ForceDerivative and get3x1TorqueDerivative; then nothing is negated. Derivatives are asked for only
 * if the block lists measures, and may be left out otherwise. */

#include <stdint.h>

#if defined(_WIN32)
#define VELMORA_USER_FUNCTION __declspec(dllexport)
#else
#define VELMORA_USER_FUNCTION __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Makes one force: number of measures, path of the parameter file (empty if there is none), number by which
 * the library will know the force in all other calls. */
VELMORA_USER_FUNCTION void createExteralSubroutine(const uint32_t* numOfMeasures, const char* parameterPath,
                                                   int32_t* objectId);

VELMORA_USER_FUNCTION void get3x1ForceVector(const int32_t* objectId, const double* t, const double* measures,
                                             double* force);
VELMORA_USER_FUNCTION void get3x1TorqueVector(const int32_t* objectId, const double* t,
                                              const double* measures, double* torque);

/* Derivatives by the measure with this index, from 0. */
VELMORA_USER_FUNCTION void get3x1ForceDerivative(const int32_t* objectId, const double* t,
                                                 const double* measures, const uint32_t* measure,
                                                 double* derivative);
VELMORA_USER_FUNCTION void get3x1TorqueDerivative(const int32_t* objectId, const double* t,
                                                  const double* measures, const uint32_t* measure,
                                                  double* derivative);

/* What the result file shows; time and measures are those of the last call. */
VELMORA_USER_FUNCTION void get3x1ForceAndTorqueVector4ResultFile(const int32_t* objectId, double* force,
                                                                 double* torque);

/* Once per step that the solver has accepted. */
VELMORA_USER_FUNCTION void setTimeOfLastSuccessfulStep(const int32_t* objectId, const double* t);

/* Two functions that a library may offer, and must if a force remembers more than its last call (wear, a
 * state of hysteresis, a delay): a run that is stopped and continued takes the force's memory along.
 * getHistory writes how many numbers there are, and the numbers unless the pointer to them is null;
 * setHistory gives them back to a force that was made anew. */
VELMORA_USER_FUNCTION void getHistory(const int32_t* objectId, uint32_t* size, double* numbers);
VELMORA_USER_FUNCTION void setHistory(const int32_t* objectId, const uint32_t* size, const double* numbers);

/* The other form of a force between two bodies. */
VELMORA_USER_FUNCTION void get3x1ForceVector_Body1(const int32_t* objectId, const double* t,
                                                   const double* measures, double* force);
VELMORA_USER_FUNCTION void get3x1TorqueVector_Body1(const int32_t* objectId, const double* t,
                                                    const double* measures, double* torque);
VELMORA_USER_FUNCTION void get3x1ForceDerivative_Body1(const int32_t* objectId, const double* t,
                                                       const double* measures, const uint32_t* measure,
                                                       double* derivative);
VELMORA_USER_FUNCTION void get3x1TorqueDerivative_Body1(const int32_t* objectId, const double* t,
                                                        const double* measures, const uint32_t* measure,
                                                        double* derivative);
VELMORA_USER_FUNCTION void get3x1ForceVector_Body2(const int32_t* objectId, const double* t,
                                                   const double* measures, double* force);
VELMORA_USER_FUNCTION void get3x1TorqueVector_Body2(const int32_t* objectId, const double* t,
                                                    const double* measures, double* torque);
VELMORA_USER_FUNCTION void get3x1ForceDerivative_Body2(const int32_t* objectId, const double* t,
                                                       const double* measures, const uint32_t* measure,
                                                       double* derivative);
VELMORA_USER_FUNCTION void get3x1TorqueDerivative_Body2(const int32_t* objectId, const double* t,
                                                        const double* measures, const uint32_t* measure,
                                                        double* derivative);

#ifdef __cplusplus
}
#endif

#endif
