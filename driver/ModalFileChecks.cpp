// Relations that hold for the invariants of any mass distribution, with s = position and phi_j = shape j of a
// point, and tilde(a) b = a x b:
//
// (1)  INVAR7 = integral of |s|^2 1 - s s' is symmetric, and no moment exceeds the sum of the others
//
// (2)  INVAR5, rows of axis c = integral of (phi_j x phi_k)_c, is skew in j and k
//
// (3)  INVAR9(j, k) = integral of tilde(phi_j) tilde(phi_k) is the transpose of INVAR9(k, j), of
//      trace -2 INVAR6(j, k)
//
// (4)  INVAR8(j) = integral of tilde(s) tilde(phi_j): its skew part is that of INVAR4(j) = integral of
//      s x phi_j
//
// (5)  modes that leave the centre of mass and the moment of momentum alone: INVAR3 = 0, INVAR4 = 0
//
// (6)  the radius of gyration is no longer than the way to the farthest point

#include "driver/ModalFileChecks.h"

#include "driver/ModalFileForm.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

namespace velmora::driver {

namespace {

using Matrix = MBM_GeneralDenseMatrix;

constexpr double rounding = 1e-6;       // share of the largest element: files have six digits at least
constexpr double frequencyShare = 1e-3; // of a frequency by which it may miss stiffness and mass
constexpr double rigidFrequency = 1e-3; // Hz; below it nothing elastic vibrates

double largest(const Matrix& m) {
    double result = 0.0;
    for (std::size_t k = 0; k < std::size_t{m.rows} * m.cols; ++k)
        result = std::max(result, std::fabs(m.data[k]));
    return result;
}

class Checker : ModalFindings {
  public:
    explicit Checker(const ModalFile& modalFile) : ModalFindings(modalFile), M(modalFile.getNumOfModes()) {}

    std::vector<Finding> check() {
        if (checkForm(*this)) {
            checkMass();
            checkModalMatrices();
            checkFrequencies();
            checkCouplings();
            checkReferencePoint();
            checkNodes();
            checkRigidModes();
        }
        std::ranges::stable_sort(findings, {}, &Finding::line);
        return std::move(findings);
    }

  private:
    void checkMass();
    void checkModalMatrices();
    void checkSymmetric(const char* block, const Matrix& m);
    void checkFrequencies();
    void checkCouplings();
    void checkSquareInertia(const Matrix& invariant);
    void checkReferencePoint();
    void checkNodes();
    void checkRigidModes();
    bool isRigid(unsigned mode) const;
    /// Displacement and turn of a node in a mode.
    std::array<double, 6> shape(std::size_t node, unsigned mode) const;

    unsigned M;
};

// (1), (6)
void Checker::checkMass() {
    const double mass = file.content.mass;
    if (!(mass > 0.0))
        error("INVAR1", "the mass is {:g}", mass);
    const Matrix& I = *file.getInvariant(7);
    checkSymmetric("INVAR7", I);
    const double trace = I.getValue(0, 0) + I.getValue(1, 1) + I.getValue(2, 2);
    for (unsigned i = 0; i < 3; ++i) {
        const double moment = I.getValue(i, i);
        if (moment < 0.0)
            error("INVAR7", "negative moment of inertia {:g}", moment);
        else if (moment > (0.5 + rounding) * trace)
            error("INVAR7", "no body has these moments: {:g} is more than the sum of the other two", moment);
    }
    double farthest = 0.0;
    for (const FeLib_FeNode* node : file.content.nodeList->nodes)
        farthest = std::max(farthest, std::hypot(node->x, node->y, node->z));
    const double gyration = std::sqrt(0.5 * trace / mass);
    if (mass > 0.0 && gyration > (1.0 + rounding) * farthest)
        warn("INVAR7", "the radius of gyration is {:g}, and no node is farther from the origin than {:g}",
             gyration, farthest);
}

void Checker::checkSymmetric(const char* block, const Matrix& m) {
    const double limit = rounding * largest(m);
    for (unsigned i = 0; i < m.rows; ++i)
        for (unsigned j = 0; j < i; ++j)
            if (std::fabs(m.getValue(i, j) - m.getValue(j, i)) > limit)
                return error(block, "not symmetric: elements ({0}, {1}) and ({1}, {0}) are {2:g} and {3:g}",
                             i + 1, j + 1, m.getValue(i, j), m.getValue(j, i));
}

void Checker::checkModalMatrices() {
    for (const auto& [block, matrix] :
         {std::pair("INVAR6", file.getInvariant(6)), {"GENSTIFF", file.content.genStiff.get()}}) {
        checkSymmetric(block, *matrix);
        const double limit = rounding * largest(*matrix);
        for (unsigned j = 0; j < M; ++j) {
            if (!(matrix->getValue(j, j) > 0.0))
                error(block, "element {} of the diagonal is {:g}", j + 1, matrix->getValue(j, j));
            for (unsigned i = 0; i < j; ++i)
                if (std::fabs(matrix->getValue(i, j)) > limit) {
                    warn(block,
                         "modes {} and {} aren't orthogonal: {:g}; the kernel takes the diagonal alone",
                         i + 1, j + 1, matrix->getValue(i, j));
                    i = j = M; // one is enough
                }
        }
    }
    if (findScaling(file) == ModalScaling::Other)
        error("INVAR6", "neither the modal mass nor the stiffness is a unit matrix to ten digits");
}

void Checker::checkFrequencies() {
    const Matrix &mass = *file.getInvariant(6), &stiffness = *file.content.genStiff;
    for (unsigned j = 0; j < M; ++j) {
        const double frequency = file.content.modes->frequencies->data[j];
        if (!(frequency > rigidFrequency) || !std::isfinite(frequency)) {
            error("SELMOD", "mode {} has the frequency {:g} Hz: a rigid mode that was left in?", j + 1,
                  frequency);
            continue;
        }
        const double ratio = stiffness.getValue(j, j) / mass.getValue(j, j);
        const double expected = std::sqrt(std::fabs(ratio)) / (2.0 * 3.141592653589793);
        if (std::fabs(expected - frequency) > frequencyShare * frequency)
            error("SELMOD", "mode {} has {:g} Hz, but GENSTIFF and INVAR6 make it {:g} Hz", j + 1, frequency,
                  expected);
    }
}

// (2), (3), (4)
void Checker::checkCouplings() {
    if (const Matrix* rotation = file.getInvariant(5)) {
        const double limit = rounding * largest(*rotation);
        for (unsigned j = 0; j < M; ++j)
            for (unsigned k = 0; k <= j; ++k)
                for (unsigned c = 0; c < 3; ++c)
                    if (std::fabs(rotation->getValue(3 * j + c, k) + rotation->getValue(3 * k + c, j)) >
                        limit) {
                        error("INVAR5", "not skew: modes {} and {}, axis {}", j + 1, k + 1, "xyz"[c]);
                        j = k = M;
                        break;
                    }
    }
    if (const Matrix* square = file.getInvariant(9))
        checkSquareInertia(*square);
    const Matrix &linear = *file.getInvariant(8), *moment = file.getInvariant(4);
    for (unsigned j = 0; moment && j < M; ++j)
        for (unsigned c = 0; c < 3; ++c) {
            const unsigned a = (c + 1) % 3, b = (c + 2) % 3;
            const double fromInertia = linear.getValue(j, 3 * b + a) - linear.getValue(j, 3 * a + b);
            if (std::fabs(fromInertia - moment->getValue(c, j)) >
                rounding * (largest(linear) + largest(*moment)))
                return error("INVAR8", "mode {} doesn't agree with INVAR4: {:g} and {:g} about {}", j + 1,
                             fromInertia, moment->getValue(c, j), "xyz"[c]);
        }
}

void Checker::checkSquareInertia(const Matrix& square) {
    const Matrix& mass = *file.getInvariant(6);
    const double limit = rounding * (largest(square) + largest(mass));
    for (unsigned j = 0; j < M; ++j)
        for (unsigned k = 0; k < M; ++k) {
            const unsigned jk = 3 * (j * M + k), kj = 3 * (k * M + j);
            const double trace =
                square.getValue(jk, 0) + square.getValue(jk + 1, 1) + square.getValue(jk + 2, 2);
            if (std::fabs(trace + 2.0 * mass.getValue(j, k)) > limit)
                return error("INVAR9", "modes {} and {}: the trace is {:g}, and INVAR6 asks for {:g}", j + 1,
                             k + 1, trace, -2.0 * mass.getValue(j, k));
            for (unsigned a = 0; a < 3; ++a)
                for (unsigned b = 0; b < 3; ++b)
                    if (std::fabs(square.getValue(jk + a, b) - square.getValue(kj + b, a)) > limit)
                        return error("INVAR9", "modes {0} and {1} aren't the transpose of modes {1} and {0}",
                                     j + 1, k + 1);
        }
}

// (5)
void Checker::checkReferencePoint() {
    const auto& center = file.content.centerOfMass;
    const double trace = file.getInvariant(7)->getValue(0, 0) + file.getInvariant(7)->getValue(1, 1) +
                         file.getInvariant(7)->getValue(2, 2);
    const double gyration = std::sqrt(std::fabs(0.5 * trace / file.content.mass));
    const double offset = std::hypot(center[0], center[1], center[2]);
    if (offset > rounding * gyration)
        warn("INVAR2", "the centre of mass is {:g} away from the origin, where the kernel takes it to be",
             offset);
    const Matrix& mass = *file.getInvariant(6);
    for (const unsigned k : {3u, 4u}) {
        const Matrix* m = file.getInvariant(k);
        for (unsigned j = 0; m && j < M; ++j) {
            const double norm = std::hypot(m->getValue(0, j), m->getValue(1, j), m->getValue(2, j));
            const double scale =
                std::sqrt(std::fabs(file.content.mass * mass.getValue(j, j))) * (k == 3 ? 1.0 : gyration);
            if (norm > 1e3 * rounding * scale) {
                warn(fmt::format("INVAR{}", k), "mode {} {}, which the kernel leaves out", j + 1,
                     k == 3 ? "moves the centre of mass" : "has a moment of momentum about the origin");
                break;
            }
        }
    }
}

void Checker::checkNodes() {
    std::set<unsigned> labels;
    for (const FeLib_FeNode* node : file.content.nodeList->nodes)
        if (!labels.insert(node->label).second)
            error("SELNOD", "two nodes have the label {}; joints would take the later one", node->label);
}

std::array<double, 6> Checker::shape(std::size_t node, unsigned mode) const {
    const Matrix& phi = *file.content.modes->shapes;
    std::array<double, 6> values{};
    for (unsigned d = 0; d < 6; ++d)
        values[d] = phi.getValue(static_cast<unsigned>(6 * node + d), mode);
    return values;
}

// Two nodes may well move like one by symmetry. A mode whose nodes all turn alike, and move as this turn and
// a translation say, doesn't deform the body.
bool Checker::isRigid(unsigned mode) const {
    const auto& nodes = file.content.nodeList->nodes;
    const std::array<double, 6> first = shape(0, mode);
    double scale = 0.0, misfit = 0.0;
    for (std::size_t n = 0; n < nodes.size(); ++n) {
        const std::array<double, 6> s = shape(n, mode);
        const double x = nodes[n]->x - nodes[0]->x, y = nodes[n]->y - nodes[0]->y,
                     z = nodes[n]->z - nodes[0]->z;
        const std::array<double, 6> rigid{first[0] + first[4] * z - first[5] * y,
                                          first[1] + first[5] * x - first[3] * z,
                                          first[2] + first[3] * y - first[4] * x,
                                          first[3],
                                          first[4],
                                          first[5]};
        for (std::size_t d = 0; d < 6; ++d) {
            scale = std::max(scale, std::fabs(s[d]));
            misfit = std::max(misfit, std::fabs(s[d] - rigid[d]));
        }
    }
    return misfit < rounding * scale;
}

void Checker::checkRigidModes() {
    for (unsigned j = 0; file.content.modes->shapes && file.content.nodeList->nodes.size() >= 3 && j < M; ++j)
        if (isRigid(j))
            error("T_MODE", "mode {} moves all nodes like a rigid body: the frame of the body does that",
                  j + 1);
}

} // namespace

std::vector<Finding> collectFindings(const ModalFile& file) {
    return Checker(file).check();
}

} // namespace velmora::driver
