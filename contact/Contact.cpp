#include "contact/Contact.h"

#include "contact/ColumnIntegral.h"
#include "contact/SurfaceFile.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

/// Forces of the columns of body c on body p, with y = Ac' (x - rc) the place in the frame of c:
///
/// (1) R = Ac' Ap,  t = Ac' (rp - rc)                       placement of the patches
/// (2) w = Ac' (wc - wp),  v = Ac' (vc - vp - wp x (rc - rp))   relative velocity at y: v + w x y
/// (3) F = Ac f,  T = Ac m                                  force and torque on c about rc
/// (4) -F and -(T + (rc - rp) x F)                          force and torque on p about rp
///
/// f and m depend on R, t, v and w alone, on 18 numbers, where the coordinates of two bodies are 28. So the
/// integral is derived with respect to those 18, and the chain rule gives the rest.

namespace velmora::contact {
namespace {

constexpr int numRelative = 18, numCoordinates = 28;
using Coordinate = Dual<numCoordinates>;

template <class T>
BodyState<T> makeState(const T* q, const T* qd) {
    return {{q[0], q[1], q[2]}, {qd[0], qd[1], qd[2]}, rotationOf(q + 3), angularVelocityOf(q + 3, qd + 3)};
}

/// (1), (2)
template <class T>
RelativeMotion<T> relate(const BodyState<T>& c, const BodyState<T>& p) {
    RelativeMotion<T> motion;
    for (unsigned j = 0; j < 3; ++j)
        motion.rotation[j] = transposedTimes(c.rotation, p.rotation[j]);
    motion.position = transposedTimes(c.rotation, p.position - c.position);
    motion.angular = transposedTimes(c.rotation, c.angularVelocity - p.angularVelocity);
    motion.velocity = transposedTimes(c.rotation, c.velocity - p.velocity -
                                                      cross(p.angularVelocity, c.position - p.position));
    return motion;
}

ColumnForces<double> integrate(const ContactLaw& law, const SurfaceView& columns, const SurfaceView& patches,
                               const RelativeMotion<double>& motion) {
    return ColumnIntegral(law, columns, patches, motion, nullptr).compute();
}

/// The 18 numbers of a motion.
template <class T>
std::array<const T*, numRelative> numbersOf(const RelativeMotion<T>& motion) {
    std::array<const T*, numRelative> numbers{};
    unsigned n = 0;
    for (const Vector3<T>* vector : {&motion.rotation[0], &motion.rotation[1], &motion.rotation[2],
                                     &motion.position, &motion.velocity, &motion.angular})
        for (const T& number : *vector)
            numbers[n++] = &number;
    return numbers;
}

/// The integral with its derivatives with respect to the 18 relative numbers, then the chain rule.
ColumnForces<Coordinate> integrate(const ContactLaw& law, const SurfaceView& columns,
                                   const SurfaceView& patches, const RelativeMotion<Coordinate>& motion) {
    RelativeMotion<double> values{};
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 3; ++j)
            values.rotation[j][i] = valueOf(motion.rotation[j][i]);
        values.position[i] = valueOf(motion.position[i]);
        values.velocity[i] = valueOf(motion.velocity[i]);
        values.angular[i] = valueOf(motion.angular[i]);
    }
    ForceSlopes slopes(law, values);
    const ColumnForces<double> sum = ColumnIntegral(law, columns, patches, values, &slopes).compute();

    const auto origins = numbersOf(motion);
    const auto wrenches = numbersOf(slopes.sum);
    const auto chain = [&](const Vec3& x, unsigned first) {
        Vector3<Coordinate> y;
        for (unsigned i = 0; i < 3; ++i) {
            y[i] = x[i];
            for (unsigned k = 0; k < numRelative; ++k)
                for (unsigned n = 0; n < numCoordinates; ++n)
                    y[i].d[n] += (*wrenches[k])[first + i] * origins[k]->d[n];
        }
        return y;
    };
    return {chain(sum.force, 0), chain(sum.torque, 3), sum.area, sum.load, sum.areaMoment, sum.loadMoment};
}

template <class T>
T* copyTo(void*& memory, const std::vector<T>& items) {
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= alignof(std::max_align_t));
    auto* target = static_cast<T*>(memory);
    std::memcpy(target, items.data(), items.size() * sizeof(T));
    memory = target + items.size();
    return target;
}

} // namespace

template <class T>
struct Contact::Resultant {
    Vector3<T> force{}, torque1{}, torque2{};
    double area = 0, load = 0;
    Vec3 areaMoment{}, loadMoment{};
};

Contact::Contact(const ContactInput& input, const std::array<Surface, 2>& made, void* memoryBehind) {
    std::array<double, 2> layers{};
    for (unsigned i = 0; i < 2; ++i) {
        const BodyInput& body = input.bodies[i];
        layers[i] = layerStiffness(body.youngsModulus, body.poissonsRatio, body.layerThickness);
        surfaces[i].faces = copyTo(memoryBehind, made[i].faces);
        surfaces[i].nodes = copyTo(memoryBehind, made[i].nodes);
    }
    const auto task = static_cast<ColumnTask>(input.task);
    carriesColumns = {task != ColumnTask::Surface2, task != ColumnTask::Surface1};
    law.stiffness = inSeries(layers[0], layers[1]);
    law.compression = input.dampingCompression;
    law.expansion = input.dampingExpansion;
    law.transition = static_cast<DampingTransition>(input.modeOfDampingTransition);
    law.transitionDepth = input.depthOfDampingTransition;
    law.friction = input.slidingFrictionCoeff;
    law.regularizationVelocity = input.frictionRegularizationVelocity;
}

Contact* Contact::create(const ContactInput& input) {
    static_assert(std::is_trivially_destructible_v<Contact>);
    static_assert(sizeof(Contact) % alignof(Face) == 0 && sizeof(Face) % alignof(Node) == 0);
    checkInput(input);
    std::array<Surface, 2> made;
    std::size_t bytes = sizeof(Contact);
    for (unsigned i = 0; i < 2; ++i) {
        const BodyInput& body = input.bodies[i];
        Mat3 orientation{};
        for (unsigned j = 0; j < 3; ++j)
            orientation[j] = transposedTimes(body.orientation, body.graphicsOrientation[j]);
        const Vec3 position = transposedTimes(body.orientation, body.graphicsPosition - body.position);
        made[i] = makeSurface(readSurface(body.surfacePath), position, orientation, input.maxPenetration);
        bytes += made[i].faces.size() * sizeof(Face) + made[i].nodes.size() * sizeof(Node);
    }
    void* block = std::malloc(bytes);
    if (!block)
        throw std::bad_alloc();
    return new (block) Contact(input, made, static_cast<char*>(block) + sizeof(Contact));
}

/// (3), (4)
template <class T>
void Contact::addColumnsOf(unsigned columnBody, const std::array<BodyState<T>, 2>& bodies,
                           Resultant<T>& result) const {
    const unsigned patchBody = 1 - columnBody;
    const BodyState<T>&c = bodies[columnBody], &p = bodies[patchBody];
    const RelativeMotion<T> motion = relate(c, p);
    const ColumnForces<T> sum = integrate(law, surfaces[columnBody], surfaces[patchBody], motion);
    const double share = carriesColumns[patchBody] ? 0.5 : 1.0;
    const Vector3<T> pressing = (c.rotation * sum.force) * share, torque = (c.rotation * sum.torque) * share;
    const Vector3<T> counterTorque = torque + cross(c.position - p.position, pressing);
    result.force += pressing * (columnBody == 0 ? 1.0 : -1.0);
    (columnBody == 0 ? result.torque1 : result.torque2) += torque;
    (columnBody == 0 ? result.torque2 : result.torque1) += counterTorque * -1.0;

    Vec3 origin{};
    Mat3 axes{};
    for (unsigned i = 0; i < 3; ++i) {
        origin[i] = valueOf(c.position[i]);
        for (unsigned j = 0; j < 3; ++j)
            axes[j][i] = valueOf(c.rotation[j][i]);
    }
    result.area += sum.area * share;
    result.load += sum.load * share;
    result.areaMoment += (origin * sum.area + axes * sum.areaMoment) * share;
    result.loadMoment += (origin * sum.load + axes * sum.loadMoment) * share;
}

template <class T>
void Contact::compute(const std::array<BodyState<T>, 2>& bodies, Resultant<T>& result) const {
    for (unsigned body = 0; body < 2; ++body)
        if (carriesColumns[body])
            addColumnsOf(body, bodies, result);
}

template <class T>
void Contact::store(const Resultant<T>& result) {
    for (unsigned i = 0; i < 3; ++i) {
        force[i] = valueOf(result.force[i]);
        torque1[i] = valueOf(result.torque1[i]);
        torque2[i] = valueOf(result.torque2[i]);
    }
    isInContact = result.area > 0;
    contactPoint = {};
    if (result.load > 0)
        contactPoint = result.loadMoment * (1 / result.load);
    else if (isInContact)
        contactPoint = result.areaMoment * (1 / result.area);
}

void Contact::updateForce(const double* q1, const double* q2, const double* qd1, const double* qd2) {
    Resultant<double> result;
    compute<double>({makeState(q1, qd1), makeState(q2, qd2)}, result);
    store(result);
}

void Contact::updateJacobian(const double* q1, const double* q2, const double* qd1, const double* qd2) {
    // Variables in the order q1, q2, qd1, qd2.
    std::array<Coordinate, numCoordinates> x;
    const std::array<const double*, 4> sources{q1, q2, qd1, qd2};
    for (unsigned n = 0; n < numCoordinates; ++n)
        x[n] = Coordinate::variable(sources[n / 7][n % 7], n);
    Resultant<Coordinate> result;
    compute<Coordinate>({makeState(&x[0], &x[14]), makeState(&x[7], &x[21])}, result);
    store(result);
    const std::array<const Vector3<Coordinate>*, 3> vectors{&result.force, &result.torque1, &result.torque2};
    for (unsigned v = 0; v < 3; ++v)
        for (unsigned n = 0; n < numCoordinates; ++n)
            for (unsigned i = 0; i < 3; ++i)
                jacobians[v][(n / 7) % 2][n / 14][3 * (n % 7) + i] = (*vectors[v])[i].d[n];
}

} // namespace velmora::contact
