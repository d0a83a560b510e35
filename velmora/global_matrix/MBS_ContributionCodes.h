#pragma once

namespace velmora {

/// Model quantities that a global matrix can hold. The numbers are the interface with the solver.
enum MBS_ContributionCode : unsigned {
    MassMatrix = 101,                ///< M
    InertiaForce_q = 102,            ///< d(M qdd)/dq
    VelInertiaForce_q = 103,         ///< dQ_velInertia/dq
    VelInertiaForce_qd = 104,        ///< dQ_velInertia/dqd
    InnerConstraintForce_q = 105,    ///< d(Cq' lambda)/dq, inner constraints
    ElasticForce_q = 106,            ///< dF_elastic/dq
    DampingForce_qd = 107,           ///< dF_damping/dqd
    ExternalForce_q = 108,           ///< dQ_external/dq
    ExternalForce_qd = 109,          ///< dQ_external/dqd
    ExternalConstraintForce_q = 110, ///< d(Cq' lambda)/dq, external constraints
    KinematicSolverMatrix = 111,     ///< A-bar of the position-level solve
    ConstraintJacobianT = 201,       ///< Cq', physical rows
    ConstraintJacobianTDot = 202,    ///< d(Cq')/dt, physical rows
    ConstraintJacobian = 301,        ///< Cq, constraint rows
    ConstraintJacobianDot = 302      ///< dCq/dt, constraint rows
};

/// Which degrees of freedom the rows and columns of a cell of the grid stand for.
enum MBS_CellKind : unsigned {
    EmptyCell = 0,
    PhysicalByPhysical = 1,
    PhysicalByConstraint = 2,
    ConstraintByPhysical = 3
};

} // namespace velmora
