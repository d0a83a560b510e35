#pragma once

#include "velmora/matrix/MBM_Math.h"

#include <string>

namespace velmora {

class MBM_DenseVector;
class MBM_GeneralDenseMatrix;
class MBS_BodyBodyMatrixInstance;
class MBS_GeneralBodyBodyMatrix;
class MBS_General_CqT;
class MBS_ModelConstraintDofVector;
class MBS_ModelPhysicalDofVector;
class MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure;

/// Combines the structured objects of the kernel: vectors over degrees of freedom and body-by-body matrices.
/// Results go to the last argument. Operands have fitting sizes; nothing is tested.
class VELMORA_EXPORT MBS_Math : public MBM_Math {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// c = a + b.
    static void vecVecSum(const P* a, const P* b, P* c);
    static void vecVecSum(const C* a, const C* b, C* c);
    /// c = a - b.
    static void vecVecSub(const P* a, const P* b, P* c);
    static void vecVecSub(const C* a, const C* b, C* c);
    /// b = alpha a + beta b.
    static void vecVecSumInPlaceScaling(const P* a, P* b, double alpha, double beta);
    static void vecVecSumInPlaceScaling(const C* a, C* b, double alpha, double beta);

    /// y = M x, with x and y in the order trans, rot, flex.
    static void matVecMult(const MBS_GeneralBodyBodyMatrix* M, const MBM_DenseVector* x, MBM_DenseVector* y);
    using MBM_Math::matVecMult;

    /// S = S + s M. A block that S lacks is made as s times M's; s = 0 or a null M does nothing.
    static void matMatInPlaceSum(MBS_BodyBodyMatrixInstance* S, const MBS_GeneralBodyBodyMatrix* M, double s);
    /// S = s S; a null pointer does nothing.
    static void matScaling(MBS_BodyBodyMatrixInstance* S, double s);
    /// B = s B for a transposed constraint Jacobian; a null pointer does nothing.
    static void matScaling(MBS_General_CqT* B, double s);
    /// y = B' x for a transposed constraint Jacobian: x over the coordinates of its body, y over the
    /// equations.
    static void CqTTmultDenseVec(const MBS_General_CqT* B, const MBM_DenseVector* x, MBM_DenseVector* y);
    /// y = Cq x with the objects of a map. Equations that no object reaches keep their value.
    static void Cq_mult_PhysDofVec(const MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure* map, const P* x,
                                   C* y);
    /// Norm of all elements of all blocks as one long vector.
    static void euclideanNormOfGeneralBodyBodyMatrix(const MBS_GeneralBodyBodyMatrix* M, double* result);
    /// One line to standard output: a, the name, then b times the norm of each of the nine blocks.
    static void printDetailedEuclidianNormInformation2Screen(const MBS_GeneralBodyBodyMatrix* M, double a,
                                                             double b, std::string name);
    /// Classical Gram-Schmidt on the columns of a 3x3 matrix, in their order. The first column keeps its
    /// direction, and the handedness stays. A singular matrix divides by zero.
    static void performOrthonormalization(MBM_GeneralDenseMatrix* R);
};

} // namespace velmora
