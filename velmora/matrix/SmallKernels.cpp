#include "velmora/matrix/SmallKernels.h"

namespace velmora::small {

void multiplyLaderman(const double* A, const double* B, double* C, double alpha) {
    // clang-format off
    const double a11 = A[0], a12 = A[3], a13 = A[6],   b11 = B[0], b12 = B[3], b13 = B[6];
    const double a21 = A[1], a22 = A[4], a23 = A[7],   b21 = B[1], b22 = B[4], b23 = B[7];
    const double a31 = A[2], a32 = A[5], a33 = A[8],   b31 = B[2], b32 = B[5], b33 = B[8];

    const double m1  = (a11 + a12 + a13 - a21 - a22 - a32 - a33) * b22;
    const double m2  = (a11 - a21) * (b22 - b12);
    const double m3  = a22 * (b12 - b11 + b21 - b22 - b23 - b31 + b33);
    const double m4  = (a21 - a11 + a22) * (b11 - b12 + b22);
    const double m5  = (a21 + a22) * (b12 - b11);
    const double m6  = a11 * b11;
    const double m7  = (a31 - a11 + a32) * (b11 - b13 + b23);
    const double m8  = (a31 - a11) * (b13 - b23);
    const double m9  = (a31 + a32) * (b13 - b11);
    const double m10 = (a11 + a12 + a13 - a22 - a23 - a31 - a32) * b23;
    const double m11 = a32 * (b13 - b11 + b21 - b22 - b23 - b31 + b32);
    const double m12 = (a32 - a13 + a33) * (b22 + b31 - b32);
    const double m13 = (a13 - a33) * (b22 - b32);
    const double m14 = a13 * b31;
    const double m15 = (a32 + a33) * (b32 - b31);
    const double m16 = (a22 - a13 + a23) * (b23 + b31 - b33);
    const double m17 = (a13 - a23) * (b23 - b33);
    const double m18 = (a22 + a23) * (b33 - b31);
    const double m19 = a12 * b21;
    const double m20 = a23 * b32;
    const double m21 = a21 * b13;
    const double m22 = a31 * b12;
    const double m23 = a33 * b33;

    C[0] = m6 + m14 + m19;
    C[1] = m2 + m3 + m4 + m6 + m14 + m16 + m17;
    C[2] = m6 + m7 + m8 + m11 + m12 + m13 + m14;
    C[3] = m1 + m4 + m5 + m6 + m12 + m14 + m15;
    C[4] = m2 + m4 + m5 + m6 + m20;
    C[5] = m12 + m13 + m14 + m15 + m22;
    C[6] = m6 + m7 + m9 + m10 + m14 + m16 + m18;
    C[7] = m14 + m16 + m17 + m18 + m21;
    C[8] = m6 + m7 + m8 + m9 + m23;
    // clang-format on
    if (alpha != 1.0)
        for (unsigned i = 0; i < 9; ++i)
            C[i] *= alpha;
}

} // namespace velmora::small
