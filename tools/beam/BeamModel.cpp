#include "tools/beam/BeamModel.h"

#include "tools/modal/Modes.h"

#include <array>
#include <cmath>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Matrix12 = Eigen::Matrix<double, 12, 12>;
using Matrix3x12 = Eigen::Matrix<double, 3, 12>;

constexpr int dofPerNode = 6;
constexpr int stations = 4, pointsPerStation = 4, pointsPerElement = stations * pointsPerStation;

// Gauss-Legendre nodes and weights on [0, 1].
constexpr std::array<double, stations> gaussPlaces{0.06943184420297371, 0.33000947820757187,
                                                   0.6699905217924281, 0.9305681557970263};
constexpr std::array<double, stations> gaussWeights{0.17392742256872692, 0.32607257743127307,
                                                    0.32607257743127307, 0.17392742256872692};

/// Element stiffness in the order u, v, w, turns about x, y, z of the first node, then of the second.
Matrix12 elementStiffness(const BeamModel& beam) {
    const double L = beam.length / beam.numOfElements, E = beam.material.youngsModulus;
    const double shearModulus = 0.5 * E / (1.0 + beam.material.poissonsRatio);
    Matrix12 K = Matrix12::Zero();
    const auto addSpring = [&](Index first, double k) {
        K(first, first) += k;
        K(first + 6, first + 6) += k;
        K(first, first + 6) -= k;
        K(first + 6, first) -= k;
    };
    addSpring(0, E * beam.section.area / L);
    addSpring(3, shearModulus * beam.section.torsion / L);
    // Deflection `d` and turn `t`, with turn = sign times slope.
    const auto addBending = [&](Index d, Index t, double sign, double EI) {
        const std::array<Index, 4> dof{d, t, d + 6, t + 6};
        const double a = 12 * EI / (L * L * L), b = sign * 6 * EI / (L * L), c = 4 * EI / L;
        const double k[4][4] = {{a, b, -a, b}, {b, c, -b, 0.5 * c}, {-a, -b, a, -b}, {b, 0.5 * c, -b, c}};
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < 4; ++j)
                K(dof[i], dof[j]) += k[i][j];
    };
    addBending(1, 5, 1.0, E * beam.section.Iz);
    addBending(2, 4, -1.0, E * beam.section.Iy);
    return K;
}

/// Displacement of the point (x, y, z), x from 0 to L, per degree of freedom of the element. A section stays
/// plane and perpendicular to the axis: u_x = u - y v' - z w', u_y = v - z theta, u_z = w + y theta.
Matrix3x12 elementShapes(double L, double x, double y, double z) {
    const double s = x / L;
    const std::array<double, 4> H{1 - 3 * s * s + 2 * s * s * s, L * s * (1 - s) * (1 - s),
                                  s * s * (3 - 2 * s), L * s * s * (s - 1)};
    const std::array<double, 4> dH{6 * s * (s - 1) / L, (1 - s) * (1 - 3 * s), 6 * s * (1 - s) / L,
                                   s * (3 * s - 2)};
    Matrix3x12 N = Matrix3x12::Zero();
    for (const Index node : {0, 1}) {
        const double linear = node == 0 ? 1 - s : s;
        const Index dof = 6 * node;
        const double h = H[static_cast<std::size_t>(2 * node)], t = H[static_cast<std::size_t>(2 * node + 1)];
        const double dh = dH[static_cast<std::size_t>(2 * node)],
                     dt = dH[static_cast<std::size_t>(2 * node + 1)];
        N(0, dof) = linear;
        N.col(dof + 1) << -y * dh, h, 0.0;
        N.col(dof + 2) << -z * dh, 0.0, h;
        N.col(dof + 3) << 0.0, -z * linear, y * linear;
        N.col(dof + 4) << z * dt, 0.0, -t;
        N.col(dof + 5) << -y * dt, t, 0.0;
    }
    return N;
}

/// A point mass of an element.
struct ElementPoint {
    double x, y, z, mass;
};

std::vector<ElementPoint> elementPoints(const BeamModel& beam) {
    const double L = beam.length / beam.numOfElements;
    const double radiusY = std::sqrt(2.0 * beam.section.Iz / beam.section.area);
    const double radiusZ = std::sqrt(2.0 * beam.section.Iy / beam.section.area);
    std::vector<ElementPoint> points;
    for (std::size_t g = 0; g < stations; ++g) {
        const double x = L * gaussPlaces[g];
        const double mass =
            beam.material.density * beam.section.area * L * gaussWeights[g] / pointsPerStation;
        points.push_back({x, radiusY, 0.0, mass});
        points.push_back({x, -radiusY, 0.0, mass});
        points.push_back({x, 0.0, radiusZ, mass});
        points.push_back({x, 0.0, -radiusZ, mass});
    }
    return points;
}

} // namespace

Section Section::circle(double diameter) {
    const double r = 0.5 * diameter;
    const double I = 0.25 * M_PI * std::pow(r, 4);
    return {M_PI * r * r, I, I, 2.0 * I};
}

Section Section::rectangle(double sizeY, double sizeZ) {
    const double a = 0.5 * std::max(sizeY, sizeZ), b = 0.5 * std::min(sizeY, sizeZ), ratio = b / a;
    const double torsion =
        a * std::pow(b, 3) * (16.0 / 3.0 - 3.36 * ratio * (1.0 - std::pow(ratio, 4) / 12.0));
    return {sizeY * sizeZ, sizeY * std::pow(sizeZ, 3) / 12.0, sizeZ * std::pow(sizeY, 3) / 12.0, torsion};
}

Eigen::Vector3d BeamModel::nodePosition(int node) const {
    return {length * (static_cast<double>(node) / numOfElements - 0.5), 0.0, 0.0};
}

MatrixXd BeamModel::stiffness() const {
    const Matrix12 K = elementStiffness(*this);
    const Index size = Index{dofPerNode} * numOfNodes();
    MatrixXd all = MatrixXd::Zero(size, size);
    for (Index e = 0; e < numOfElements; ++e)
        all.block<12, 12>(dofPerNode * e, dofPerNode * e) += K;
    return all;
}

MatrixXd BeamModel::mass() const {
    Matrix12 M = Matrix12::Zero();
    for (const ElementPoint& p : elementPoints(*this)) {
        const Matrix3x12 N = elementShapes(length / numOfElements, p.x, p.y, p.z);
        M += p.mass * N.transpose() * N;
    }
    const Index size = Index{dofPerNode} * numOfNodes();
    MatrixXd all = MatrixXd::Zero(size, size);
    for (Index e = 0; e < numOfElements; ++e)
        all.block<12, 12>(dofPerNode * e, dofPerNode * e) += M;
    return all;
}

MassField BeamModel::pointMasses() const {
    const auto points = elementPoints(*this);
    const Index count = Index{numOfElements} * pointsPerElement;
    MassField field{Eigen::Matrix3Xd(3, count), Eigen::SparseMatrix<double>(count, count)};
    Index k = 0;
    for (int e = 0; e < numOfElements; ++e)
        for (const ElementPoint& p : points) {
            field.positions.col(k) = nodePosition(e) + Eigen::Vector3d(p.x, p.y, p.z);
            field.masses.insert(k, k) = p.mass;
            ++k;
        }
    return field;
}

MatrixXd BeamModel::interpolation() const {
    const auto points = elementPoints(*this);
    MatrixXd N =
        MatrixXd::Zero(3 * Index{numOfElements} * pointsPerElement, Index{dofPerNode} * numOfNodes());
    Index row = 0;
    for (Index e = 0; e < numOfElements; ++e)
        for (const ElementPoint& p : points) {
            N.block<3, 12>(row, dofPerNode * e) = elementShapes(length / numOfElements, p.x, p.y, p.z);
            row += 3;
        }
    return N;
}

ModalBody makeModalBody(const BeamModel& beam, HeldNodes held, int count, unsigned firstLabel,
                        std::string& error) {
    std::vector<int> heldDof;
    const auto hold = [&](int node) {
        for (int i = 0; i < dofPerNode; ++i)
            heldDof.push_back(dofPerNode * node + i);
    };
    if (held == HeldNodes::First || held == HeldNodes::Both)
        hold(0);
    if (held == HeldNodes::Last || held == HeldNodes::Both)
        hold(beam.numOfElements);
    const Modes modes = heldDof.empty() ? computeFreeModes(beam.stiffness(), beam.mass(), count)
                                        : computeHeldModes(beam.stiffness(), beam.mass(), heldDof, count);
    ModalBody body;
    error = modes.error;
    if (!error.empty())
        return body;
    body.nodePositions.resize(3, beam.numOfNodes());
    for (int n = 0; n < beam.numOfNodes(); ++n) {
        body.nodeLabels.push_back(firstLabel + static_cast<unsigned>(n));
        body.nodePositions.col(n) = beam.nodePosition(n);
    }
    body.nodeShapes = modes.shapes;
    body.frequencies = modes.frequencies;
    body.invariants = computeInvariants(beam.pointMasses(), beam.interpolation() * modes.shapes);
    return body;
}

} // namespace velmora::tools
