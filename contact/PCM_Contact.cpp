#include <velmora/platform/PCM_Contact.h>

#include "contact/Contact.h"

#include <cstdio>
#include <exception>

using velmora::contact::BodyInput;
using velmora::contact::Contact;
using velmora::contact::Mat3;
using velmora::contact::Vec3;

namespace {

Contact& contactOf(void* handle) {
    return *static_cast<Contact*>(handle);
}

Vec3 toVector(const double* x) {
    return {x[0], x[1], x[2]};
}

Mat3 toMatrix(const double* x) {
    return {toVector(x), toVector(x + 3), toVector(x + 6)};
}

enum Quantity : unsigned { Force, Torque1, Torque2 };

double* jacobianOf(void* handle, Quantity quantity, int body, int kind) {
    return contactOf(handle).jacobians.at(quantity)[body == 1 ? 0 : 1][kind == 1 ? 0 : 1].data();
}

} // namespace

extern "C" {

void* PCM_Contact_Create(int task, const char* contactName, const char* surfacePath1,
                         const char* surfacePath2, double youngsModulus1, double youngsModulus2,
                         double poissonsRatio1, double poissonsRatio2, double layerThickness1,
                         double layerThickness2, double maxPenetration, double dampingCompression,
                         double dampingExpansion, int modeOfDampingTransition,
                         double depthOfDampingTransition, double slidingFrictionCoeff,
                         double frictionRegularizationVelocity, const double* position1,
                         const double* orientation1, const double* position2, const double* orientation2,
                         const double* positionGraphics1, const double* orientationGraphics1,
                         const double* positionGraphics2, const double* orientationGraphics2) {
    try {
        const BodyInput body1{surfacePath1,
                              youngsModulus1,
                              poissonsRatio1,
                              layerThickness1,
                              toVector(position1),
                              toMatrix(orientation1),
                              toVector(positionGraphics1),
                              toMatrix(orientationGraphics1)};
        const BodyInput body2{surfacePath2,
                              youngsModulus2,
                              poissonsRatio2,
                              layerThickness2,
                              toVector(position2),
                              toMatrix(orientation2),
                              toVector(positionGraphics2),
                              toMatrix(orientationGraphics2)};
        return Contact::create({task,
                                {body1, body2},
                                maxPenetration,
                                dampingCompression,
                                dampingExpansion,
                                modeOfDampingTransition,
                                depthOfDampingTransition,
                                slidingFrictionCoeff,
                                frictionRegularizationVelocity});
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "ERROR in contact <%s>: not enough memory\n", contactName);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ERROR in contact <%s>: %s\n", contactName, error.what());
    }
    return nullptr;
}

double* PCM_Contact_GetContactForce(void* handle) {
    return contactOf(handle).force.data();
}

double* PCM_Contact_GetContactTorque_E(void* handle) {
    return contactOf(handle).torque1.data();
}

double* PCM_Contact_GetContactTorque_F(void* handle) {
    return contactOf(handle).torque2.data();
}

double* PCM_Contact_GetWeightedContactPosition(void* handle) {
    return contactOf(handle).contactPoint.data();
}

void PCM_Contact_UpdateContactForce(void* handle, const double* q1, const double* q2, const double* qd1,
                                    const double* qd2) {
    contactOf(handle).updateForce(q1, q2, qd1, qd2);
}

int PCM_Contact_IsInContact(void* handle) {
    return contactOf(handle).isInContact ? 1 : 0;
}

void PCM_Contact_UpdateContactForceJacobian(void* handle, const double* q1, const double* q2,
                                            const double* qd1, const double* qd2) {
    contactOf(handle).updateJacobian(q1, q2, qd1, qd2);
}

double* PCM_Contact_GetContactForce_Jac(void* handle, int body, int kind) {
    return jacobianOf(handle, Force, body, kind);
}

double* PCM_Contact_GetContactTorque_E_Jac(void* handle, int body, int kind) {
    return jacobianOf(handle, Torque1, body, kind);
}

double* PCM_Contact_GetContactTorque_F_Jac(void* handle, int body, int kind) {
    return jacobianOf(handle, Torque2, body, kind);
}

} // extern "C"
