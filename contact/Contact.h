#pragma once

#include "contact/ContactLaw.h"
#include "contact/Surface.h"

namespace velmora::contact {

/// One of the two bodies as the library is given it.
struct BodyInput {
    std::string surfacePath;
    double youngsModulus, poissonsRatio, layerThickness;
    Vec3 position;            ///< at the initial state
    Mat3 orientation;         ///< at the initial state
    Vec3 graphicsPosition;    ///< of the surface's frame, global frame at the initial state
    Mat3 graphicsOrientation; ///< of the surface's frame, as above
};

/// All that defines a contact.
struct ContactInput {
    int task;
    std::array<BodyInput, 2> bodies;
    double maxPenetration, dampingCompression, dampingExpansion;
    int modeOfDampingTransition;
    double depthOfDampingTransition, slidingFrictionCoeff, frictionRegularizationVelocity;
};

/// Throws InputError with the name of the first input that is out of its range. Files aren't looked at.
void checkInput(const ContactInput& input);

/// Coordinates of a body over double or Dual numbers: r, e and their rates.
template <class T>
struct BodyState {
    Vector3<T> position, velocity;
    Matrix3<T> rotation;
    Vector3<T> angularVelocity; ///< global frame
};

/// A contact with all that belongs to it in one block of memory: this object, then faces and nodes. It has no
/// destructor; std::free of its address releases everything.
class Contact {
  public:
    /// Derivatives of a vector with respect to q or qd of a body, column after column.
    using Jacobian = std::array<double, 21>;

    /// Throws InputError with the name of the wrong input, or std::bad_alloc.
    static Contact* create(const ContactInput& input);

    void updateForce(const double* q1, const double* q2, const double* qd1, const double* qd2);
    void updateJacobian(const double* q1, const double* q2, const double* qd1, const double* qd2);

    Vec3 force{}, torque1{}, torque2{}, contactPoint{};
    bool isInContact = false;
    /// [force, torque on body 1, torque on body 2][body - 1][0 for q, 1 for qd]
    std::array<std::array<std::array<Jacobian, 2>, 2>, 3> jacobians{};

  private:
    /// Sums over the surfaces that carry columns, global frame.
    template <class T>
    struct Resultant;

    ContactLaw law;
    std::array<SurfaceView, 2> surfaces{};
    std::array<bool, 2> carriesColumns{};

    Contact(const ContactInput& input, const std::array<Surface, 2>& made, void* memoryBehind);

    template <class T>
    void compute(const std::array<BodyState<T>, 2>& bodies, Resultant<T>& result) const;
    template <class T>
    void addColumnsOf(unsigned columnBody, const std::array<BodyState<T>, 2>& bodies,
                      Resultant<T>& result) const;
    template <class T>
    void store(const Resultant<T>& result);
};

} // namespace velmora::contact
