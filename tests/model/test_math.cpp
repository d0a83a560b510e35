#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_General_CqT.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/MBS_ModelDofVector.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmora {
namespace {

using testing::ElementsAre;

std::vector<double> elements(const MBM_DenseMatrix& m) {
    return {m.data, m.data + m.rows * m.cols};
}

TEST(BlockMatrix, ShapesFollowTheCounts) {
    MBS_BodyBodyMatrixInstance m(3, 4, 2, 3, 4, 0);
    EXPECT_EQ(m.block[Flex][Rot]->rows, 2u);
    EXPECT_EQ(m.block[Trans][Flex], nullptr);
    m.setBlockMatrix(Trans, Trans, "MBM_DiagonalDenseMatrix", 3, 3, 2.0);
    EXPECT_TRUE(m.block[Trans][Trans]->isDiagonal());
    EXPECT_THAT(elements(*m.block[Trans][Trans]), ElementsAre(2, 0, 0, 0, 2, 0, 0, 0, 2));
    m.setBlockMatrix(Rot, Rot, "no such class", 2, 2, 5.0);
    EXPECT_THAT(elements(*m.block[Rot][Rot]), ElementsAre(0, 5, -5, 0));
    m.keepOnly({{Rot, Rot}});
    EXPECT_EQ(m.block[Trans][Trans], nullptr);
    EXPECT_NE(m.block[Rot][Rot], nullptr);
}

TEST(Math, SumsOfBlockMatricesGrowTheBlocksThatOccur) {
    MBS_BodyBodyMatrixInstance source(1, 2, 0, 1, 2, 0), sum(1, 2, 0, 1, 2, 0);
    sum.keepOnly({});
    source.keepOnly({{Rot, Rot}});
    for (unsigned k = 0; k < 4; ++k)
        source.block[Rot][Rot]->data[k] = k + 1.0;
    MBS_Math::matMatInPlaceSum(&sum, &source, 0.0);
    MBS_Math::matMatInPlaceSum(&sum, nullptr, 1.0);
    EXPECT_EQ(sum.block[Rot][Rot], nullptr);
    MBS_Math::matMatInPlaceSum(&sum, &source, 2.0);
    MBS_Math::matMatInPlaceSum(&sum, &source, -0.5);
    EXPECT_THAT(elements(*sum.block[Rot][Rot]), ElementsAre(1.5, 3, 4.5, 6));
    EXPECT_EQ(sum.block[Trans][Trans], nullptr);
    double size = 0.0;
    MBS_Math::euclideanNormOfGeneralBodyBodyMatrix(&source, &size);
    EXPECT_DOUBLE_EQ(size, std::sqrt(30.0));
    MBS_Math::matScaling(&sum, 2.0);
    EXPECT_THAT(elements(*sum.block[Rot][Rot]), ElementsAre(3, 6, 9, 12));
    MBS_Math::matScaling(&sum, 0.0);
    EXPECT_THAT(elements(*sum.block[Rot][Rot]), testing::Each(0.0));
    MBS_Math::matScaling(static_cast<MBS_BodyBodyMatrixInstance*>(nullptr), 2.0);
}

TEST(Math, ProductTakesAllNineBlocks) {
    MBS_BodyBodyMatrixInstance m(1, 2, 1, 1, 2, 1);
    double number = 0.0;
    for (auto& row : m.block)
        for (auto& block : row)
            for (unsigned k = 0; k < block->rows * block->cols; ++k)
                block->data[k] = ++number;
    m.deleteBlock(Trans, Rot);
    MBM_DenseStandAloneVector x(4), y(4, 99.0);
    for (unsigned i = 0; i < 4; ++i)
        x.data[i] = i + 1.0;
    MBS_Math::matVecMult(&m, &x, &y);
    EXPECT_THAT(std::vector(y.data, y.data + 4),
                ElementsAre(1 + 4 * 4, 5 + 7 * 2 + 9 * 3 + 11 * 4, 6 + 8 * 2 + 10 * 3 + 12 * 4,
                            13 + 14 * 2 + 15 * 3 + 16 * 4));
}

TEST(Math, VectorsAreCombined) {
    const std::vector<unsigned> one{1}, none{0};
    MBS_ModelPhysicalDofVector a(&one, &one, &none), b(a), c(a);
    a.dofVector->data[0] = 3.0;
    a.dofVector->data[1] = 5.0;
    b.dofVector->data[0] = 1.0;
    b.dofVector->data[1] = 10.0;
    MBS_Math::vecVecSum(&a, &b, &c);
    EXPECT_THAT(std::vector(c.dofVector->data, c.dofVector->data + 2), ElementsAre(4, 15));
    MBS_Math::vecVecSub(&a, &b, &c);
    EXPECT_THAT(std::vector(c.dofVector->data, c.dofVector->data + 2), ElementsAre(2, -5));
    MBS_Math::vecVecSumInPlaceScaling(&a, &b, 2.0, -1.0);
    EXPECT_THAT(std::vector(b.dofVector->data, b.dofVector->data + 2), ElementsAre(5, 0));
    const std::vector<unsigned> empty;
    MBS_ModelConstraintDofVector without(&empty, &empty);
    MBS_Math::vecVecSum(&without, &without, &without);
    MBS_Math::vecVecSumInPlaceScaling(&without, &without, 1.0, 1.0);
}

TEST(Math, OrthonormalizationKeepsTheFirstDirectionAndTheHandedness) {
    MBM_GeneralDenseMatrix R(3, 3, 0.0);
    const auto orthonormalized = [&](std::vector<double> columns) {
        std::copy(columns.begin(), columns.end(), R.data);
        MBS_Math::performOrthonormalization(&R);
        return elements(R);
    };
    EXPECT_THAT(orthonormalized({1, 0, 0, 1, 1, 0, 1, 1, 1}), ElementsAre(1, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_THAT(orthonormalized({0, 3, 0, 2, 5, 0, 1, 1, -4}), ElementsAre(0, 1, 0, 1, 0, 0, 0, 0, -1));
}

TEST(CqT, PatternNamesEveryPlaceOnce) {
    MBS_General_CqT cqT(1, 2, 0, 2);
    EXPECT_EQ(cqT.fPart, nullptr);
    std::vector<unsigned> rows, cols;
    cqT.tPart.reset();
    cqT.addPatternOfCqT(rows, cols, 10, 20);
    EXPECT_THAT(rows, ElementsAre(12, 13, 12, 13));
    EXPECT_THAT(cols, ElementsAre(21, 21, 22, 22));
    std::vector<unsigned> rowsOfCq, colsOfCq;
    cqT.addPatternOfCq(rowsOfCq, colsOfCq, 20, 10);
    EXPECT_EQ(rowsOfCq, cols);
    EXPECT_EQ(colsOfCq, rows);
}

} // namespace
} // namespace velmora
