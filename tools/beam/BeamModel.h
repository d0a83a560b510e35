#pragma once

#include "tools/modal/ModalFile.h"

#include <Eigen/Dense>

#include <string>

namespace velmora::tools {

/// Cross-section with axes y and z of symmetry.
struct Section {
    double area = 0.0;         ///< m^2
    double Iy = 0.0, Iz = 0.0; ///< m^4, second moments about y and z
    double torsion = 0.0;      ///< m^4, torsion constant

    static Section circle(double diameter);
    /// Torsion constant after Roark ("Formulas for Stress and Strain"), within 4 %.
    static Section rectangle(double sizeY, double sizeZ);
};

struct Material {
    double youngsModulus = 0.0; ///< Pa
    double poissonsRatio = 0.0;
    double density = 0.0; ///< kg/m^3
};

/// Straight beam along x between -length/2 and length/2 in Euler-Bernoulli elements of equal length: cubic
/// bending in both planes, linear stretch and torsion, consistent masses with rotary inertia (J. S.
/// Przemieniecki, "Theory of Matrix Structural Analysis", chapters 5 and 11). Six degrees of freedom per
/// node: translations and rotations x, y, z.
struct BeamModel {
    double length = 0.0; ///< m
    Section section;
    Material material;
    int numOfElements = 1;

    int numOfNodes() const { return numOfElements + 1; }
    Eigen::Vector3d nodePosition(int node) const;
    Eigen::MatrixXd stiffness() const;
    /// The mass matrix of the point masses below, which is the consistent one.
    Eigen::MatrixXd mass() const;

    /// Point masses that carry the consistent mass exactly: four Gauss stations along an element, since its
    /// terms are polynomials of degree six, with four points each at the radii of gyration of the section.
    MassField pointMasses() const;
    /// 3 rows per point mass: displacements of the points per degree of freedom.
    Eigen::MatrixXd interpolation() const;
};

enum class HeldNodes { None, First, Last, Both };

/// Modes of a beam: `count` elastic modes of the free beam, or of the beam with its interface nodes held
/// beside the static shapes of these; node labels count up from `firstLabel`. The error text is set if the
/// beam has no such modes.
ModalBody makeModalBody(const BeamModel& beam, HeldNodes held, int count, unsigned firstLabel,
                        std::string& error);

} // namespace velmora::tools
