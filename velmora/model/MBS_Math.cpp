#include "velmora/model/MBS_Math.h"

#include "velmora/matrix/FixedSize.h"
#include "velmora/matrix/MBM_Vector.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/platform/blas.h"

#include <algorithm>
#include <cstdio>

namespace velmora {

namespace {

// A constraint vector without equations has no storage.
template <class V>
int sizeOf(const V* v) {
    return v->dofVector ? static_cast<int>(v->dofVector->size) : 0;
}

template <class V>
void sum(const V* a, const V* b, V* c) {
    if (const int n = sizeOf(a); n > 0)
        blas::vdAdd(n, a->dofVector->data, b->dofVector->data, c->dofVector->data);
}

template <class V>
void difference(const V* a, const V* b, V* c) {
    if (const int n = sizeOf(a); n > 0)
        blas::vdSub(n, a->dofVector->data, b->dofVector->data, c->dofVector->data);
}

template <class V>
void sumInPlace(const V* a, V* b, double alpha, double beta) {
    if (sizeOf(a) > 0)
        MBM_Math::vecVecSumScaled(*a->dofVector, *b->dofVector, alpha, beta);
}

double normOfBlock(const MBM_DenseMatrix* block) {
    return block ? blas::dnrm2(static_cast<int>(block->rows * block->cols), block->data) : 0.0;
}

} // namespace

void MBS_Math::vecVecSum(const P* a, const P* b, P* c) {
    sum(a, b, c);
}
void MBS_Math::vecVecSum(const C* a, const C* b, C* c) {
    sum(a, b, c);
}
void MBS_Math::vecVecSub(const P* a, const P* b, P* c) {
    difference(a, b, c);
}
void MBS_Math::vecVecSub(const C* a, const C* b, C* c) {
    difference(a, b, c);
}

void MBS_Math::vecVecSumInPlaceScaling(const P* a, P* b, double alpha, double beta) {
    sumInPlace(a, b, alpha, beta);
}
void MBS_Math::vecVecSumInPlaceScaling(const C* a, C* b, double alpha, double beta) {
    sumInPlace(a, b, alpha, beta);
}

void MBS_Math::matVecMult(const MBS_GeneralBodyBodyMatrix* M, const MBM_DenseVector* x, MBM_DenseVector* y) {
    std::fill_n(y->data, y->size, 0.0);
    addProduct(*M, x->data, y->data);
}

void MBS_Math::matMatInPlaceSum(MBS_BodyBodyMatrixInstance* S, const MBS_GeneralBodyBodyMatrix* M, double s) {
    if (s == 0.0 || !M)
        return;
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 3; ++c) {
            const MBM_DenseMatrix* source = M->block[r][c].get();
            if (!source)
                continue;
            auto& target = S->block[r][c];
            if (!target)
                target = std::make_unique<MBM_GeneralDenseMatrix>(source->rows, source->cols, 0.0);
            // Both are stand-alone, so their elements lie in one run each.
            const std::size_t n = std::size_t{source->rows} * source->cols;
            for (std::size_t k = 0; k < n; ++k)
                target->data[k] += s * source->data[k];
        }
}

void MBS_Math::matScaling(MBS_BodyBodyMatrixInstance* S, double s) {
    if (!S || s == 1.0)
        return;
    if (s == 0.0) {
        S->setToZero();
        return;
    }
    for (auto& row : S->block)
        for (auto& block : row)
            if (block)
                matInPlaceScaling(*block, s);
}

void MBS_Math::matScaling(MBS_General_CqT* B, double s) {
    if (!B || s == 1.0)
        return;
    for (MBM_DenseMatrix* part : {B->tPart.get(), B->rPart.get(), B->fPart.get()})
        if (part && s == 0.0)
            part->setAllToZero();
        else if (part)
            matInPlaceScaling(*part, s);
}

void MBS_Math::CqTTmultDenseVec(const MBS_General_CqT* B, const MBM_DenseVector* x, MBM_DenseVector* y) {
    std::fill_n(y->data, y->size, 0.0);
    addTransposedProduct(*B, x->data, y->data);
}

void MBS_Math::euclideanNormOfGeneralBodyBodyMatrix(const MBS_GeneralBodyBodyMatrix* M, double* result) {
    std::array<double, 9> norms{};
    for (unsigned k = 0; k < 9; ++k)
        norms[k] = normOfBlock(M->block[k / 3][k % 3].get());
    *result = blas::dnrm2(9, norms.data());
}

void MBS_Math::printDetailedEuclidianNormInformation2Screen(const MBS_GeneralBodyBodyMatrix* M, double a,
                                                            double b, std::string name) {
    std::printf("%12g %s", a, name.c_str());
    for (const auto& row : M->block)
        for (const auto& block : row)
            std::printf(" %12g", b * normOfBlock(block.get()));
    std::printf("\n");
}

void MBS_Math::performOrthonormalization(MBM_GeneralDenseMatrix* R) {
    const Vec3 a1 = Vec3::from(R->data), a2 = Vec3::from(R->data + 3), a3 = Vec3::from(R->data + 6);
    const auto scaled = [](const Vec3& v) { return (1.0 / norm(v)) * v; };
    const Vec3 e1 = scaled(a1);
    const Vec3 e2 = scaled(a2 - dot(e1, a2) * e1);
    const Vec3 e3 = scaled(a3 - dot(e1, a3) * e1 - dot(e2, a3) * e2);
    e1.to(R->data);
    e2.to(R->data + 3);
    e3.to(R->data + 6);
}

} // namespace velmora
