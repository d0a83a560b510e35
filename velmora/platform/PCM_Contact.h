#pragma once

/// \file
/// What the kernel asks of a contact library: eleven functions with C linkage. The kernel links a library
/// that has them; any other with the same functions can take its place.
///
/// Coordinates: q points to the 7 coordinates of a body, the position r and the Euler parameters e0 to e3
/// with e0 the scalar part; qd to their rates. 3x3 matrices stand column after column, first axis first.
/// Units are the model's, without conversion.
///
/// Nothing but `PCM_Contact_Create` can fail. The arrays that the Get functions return keep their address as
/// long as the handle lives, and hold the values of the last update. Two handles don't share anything; one
/// handle is used by one thread at a time.

#if defined(_WIN32)
#if defined(PCM_CONTACT_BUILDING)
#define PCM_CONTACT_EXPORT __declspec(dllexport)
#else
#define PCM_CONTACT_EXPORT __declspec(dllimport)
#endif
#else
#define PCM_CONTACT_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

/// Makes a contact between surface 1 on body 1 and surface 2 on body 2. `position` and `orientation` of the
/// bodies are r and A(e) at the initial state; what the graphics frames stand for is the library's business.
/// All arguments live for the call only.
///
/// Returns the handle: one block of memory, to be released with std::free, or null with the reason on
/// standard error.
PCM_CONTACT_EXPORT void*
PCM_Contact_Create(int task, const char* contactName, const char* surfacePath1, const char* surfacePath2,
                   double youngsModulus1, double youngsModulus2, double poissonsRatio1, double poissonsRatio2,
                   double layerThickness1, double layerThickness2, double maxPenetration,
                   double dampingCompression, double dampingExpansion, int modeOfDampingTransition,
                   double depthOfDampingTransition, double slidingFrictionCoeff,
                   double frictionRegularizationVelocity, const double* position1, const double* orientation1,
                   const double* position2, const double* orientation2, const double* positionGraphics1,
                   const double* orientationGraphics1, const double* positionGraphics2,
                   const double* orientationGraphics2);

/// Force F on body 1, global frame; -F acts on body 2. 3 values.
PCM_CONTACT_EXPORT double* PCM_Contact_GetContactForce(void* handle);

/// Torque on body 1 about its position r1, global frame. 3 values.
PCM_CONTACT_EXPORT double* PCM_Contact_GetContactTorque_E(void* handle);

/// Torque on body 2 about its position r2, global frame. 3 values.
PCM_CONTACT_EXPORT double* PCM_Contact_GetContactTorque_F(void* handle);

/// The point that stands for the contact, global frame. 3 values.
PCM_CONTACT_EXPORT double* PCM_Contact_GetWeightedContactPosition(void* handle);

/// Computes force, torques, contact point and the state of contact.
PCM_CONTACT_EXPORT void PCM_Contact_UpdateContactForce(void* handle, const double* q1, const double* q2,
                                                       const double* qd1, const double* qd2);

/// Not 0 if the bodies touched at the last update.
PCM_CONTACT_EXPORT int PCM_Contact_IsInContact(void* handle);

/// Computes the derivatives of force and torques. Force, torques and state are as after an update of the
/// force.
PCM_CONTACT_EXPORT void PCM_Contact_UpdateContactForceJacobian(void* handle, const double* q1,
                                                               const double* q2, const double* qd1,
                                                               const double* qd2);

/// Derivative of F with respect to q (kind 1) or qd (kind 2) of body 1 or 2: 3x7, column after column.
PCM_CONTACT_EXPORT double* PCM_Contact_GetContactForce_Jac(void* handle, int body, int kind);

/// Derivative of the torque on body 1, as above.
PCM_CONTACT_EXPORT double* PCM_Contact_GetContactTorque_E_Jac(void* handle, int body, int kind);

/// Derivative of the torque on body 2, as above.
PCM_CONTACT_EXPORT double* PCM_Contact_GetContactTorque_F_Jac(void* handle, int body, int kind);

} // extern "C"
