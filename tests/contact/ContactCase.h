#pragma once

#include "velmora/platform/PCM_Contact.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace velmora::test {

using V3 = std::array<double, 3>;
using V7 = std::array<double, 7>;

/// A folder for surface files, gone with the object.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "contactXXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~ScratchFolder() { std::filesystem::remove_all(path); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(path / name, std::ios::binary) << content;
        return (path / name).string();
    }

  private:
    std::filesystem::path path;
};

/// The faces of a cube from -1 to 1, n by n squares each, every vertex moved to map(vertex).
template <class Map>
std::string cubeObj(int n, const Map& map) {
    std::string text;
    for (unsigned axis = 0; axis < 3; ++axis)
        for (const double side : {-1.0, 1.0})
            for (int i = 0; i < n * n * 4; ++i) {
                const int corner = i % 4, square = i / 4;
                const double a = 2.0 * (square % n + (corner == 1 || corner == 2 ? 1 : 0)) / n - 1;
                const double b = 2.0 * (square / n + (corner > 1 ? 1 : 0)) / n - 1;
                V3 x{};
                x[axis] = side;
                x[(axis + 1) % 3] = side > 0 ? a : b;
                x[(axis + 2) % 3] = side > 0 ? b : a;
                x = map(x);
                char line[100];
                std::snprintf(line, sizeof line, "v %.17g %.17g %.17g\n", x[0], x[1], x[2]);
                text += line;
                if (corner == 3)
                    text += "f -4// -3// -2// -1//\n";
            }
    return text;
}

inline std::string boxObj(const V3& half, int n = 1) {
    return cubeObj(n, [&](const V3& x) { return V3{x[0] * half[0], x[1] * half[1], x[2] * half[2]}; });
}

/// Squares of equal angle, so that the triangles are of like size.
inline std::string ballObj(double radius, int n) {
    return cubeObj(n, [&](const V3& x) {
        const V3 y{std::tan(x[0] * M_PI / 4), std::tan(x[1] * M_PI / 4), std::tan(x[2] * M_PI / 4)};
        const double scale = radius / std::sqrt(y[0] * y[0] + y[1] * y[1] + y[2] * y[2]);
        return V3{y[0] * scale, y[1] * scale, y[2] * scale};
    });
}

/// A contact with usual inputs; bodies, surface frames and global frame coincide at first.
struct ContactCase {
    int task = 0;
    std::string path1, path2;
    double young1 = 2e6, young2 = 1e6, poisson1 = 0.25, poisson2 = 0.3, layer1 = 0.1, layer2 = 0.2;
    double maxPenetration = 0.1, compression = 0, expansion = 0;
    int mode = 0;
    double transitionDepth = 0, friction = 0, regularization = 0.01;
    V3 position1{}, graphics1{};
    std::array<double, 9> orientation1{1, 0, 0, 0, 1, 0, 0, 0, 1}, graphicsOrientation1 = orientation1;

    std::unique_ptr<void, decltype(&std::free)> create() const {
        const V3 zero{};
        const std::array<double, 9> unit{1, 0, 0, 0, 1, 0, 0, 0, 1};
        return {PCM_Contact_Create(task, "pair", path1.c_str(), path2.c_str(), young1, young2, poisson1,
                                   poisson2, layer1, layer2, maxPenetration, compression, expansion, mode,
                                   transitionDepth, friction, regularization, position1.data(),
                                   orientation1.data(), zero.data(), unit.data(), graphics1.data(),
                                   graphicsOrientation1.data(), zero.data(), unit.data()),
                &std::free};
    }

    /// Pressure per depth by the closed formula.
    double stiffness() const {
        const double k1 = (1 - poisson1) * young1 / ((1 + poisson1) * (1 - 2 * poisson1) * layer1);
        const double k2 = (1 - poisson2) * young2 / ((1 + poisson2) * (1 - 2 * poisson2) * layer2);
        return k1 * k2 / (k1 + k2);
    }
};

/// Force, both torques and the contact point.
struct Answer {
    V3 force, torque1, torque2, point;
    bool isInContact;
};

inline V3 read(const double* x) {
    return {x[0], x[1], x[2]};
}

inline Answer answerOf(void* contact) {
    return {read(PCM_Contact_GetContactForce(contact)), read(PCM_Contact_GetContactTorque_E(contact)),
            read(PCM_Contact_GetContactTorque_F(contact)),
            read(PCM_Contact_GetWeightedContactPosition(contact)), PCM_Contact_IsInContact(contact) != 0};
}

inline Answer evaluate(void* contact, const V7& q1, const V7& q2, const V7& qd1 = {}, const V7& qd2 = {}) {
    PCM_Contact_UpdateContactForce(contact, q1.data(), q2.data(), qd1.data(), qd2.data());
    return answerOf(contact);
}

inline V7 at(double x, double y, double z) {
    return {x, y, z, 1, 0, 0, 0};
}

/// Turned by an angle about an axis of length 1.
inline V7 turned(double x, double y, double z, double angle, const V3& axis) {
    const double s = std::sin(angle / 2);
    return {x, y, z, std::cos(angle / 2), s * axis[0], s * axis[1], s * axis[2]};
}

inline V3 cross(const V3& a, const V3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

} // namespace velmora::test
