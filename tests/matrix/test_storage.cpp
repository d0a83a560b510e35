#include "tests/matrix/DenseForms.h"
#include "velmora/matrix/MBM_DenseMatrixIO.h"
#include "velmora/matrix/MBM_Math.h"
#include "velmora/matrix/MBM_Vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <numeric>

namespace velmora::test {
namespace {

constexpr const char* overrun = "Dimensions of submatrix exceed surrounding base matrix";
constexpr const char* onDiagonal = "Dimensions of submatrix hit the main diagonal of the base matrix";
constexpr const char* zeroMatrix = "Matrix definition with dimension 0";
constexpr const char* zeroVector = "Vector definition with dimension 0";
constexpr const char* overflow =
    "Matrix allocation failed: number of matrix entries is largen than the numeric limits of unsigned int!";
constexpr const char* otherShape =
    "ERROR: Assign operator for MBM_DenseMatrix_ExternalDatas fails in case of non matching dimensions!";

/// The error state, and no storage.
template <class T>
void expectRefused(const T& object, int code, const char* text) {
    EXPECT_EQ(object.errorCode, code) << object.getClassName();
    EXPECT_EQ(object.getErrorString(), text);
    EXPECT_EQ(object.data, nullptr);
}

TEST(DenseStorage, ErrorsAtConstruction) {
    MBM_SymmetricDenseMatrix base(6);
    MBM_DenseStandAloneVector vector(5);
    expectRefused(MBM_GeneralDenseMatrix(0, 3), 14, zeroMatrix);
    expectRefused(MBM_DiagonalDenseMatrix(0), 14, zeroMatrix);
    expectRefused(MBM_GeneralDenseMatrix(70000, 70000, 0.0), 1, overflow);
    expectRefused(MBM_SkewSymmetricDenseMatrix(65536), 1, overflow);
    expectRefused(MBM_GDSubM_of_GDM(0, 9, 9, 9, base), 14, zeroMatrix);
    expectRefused(MBM_GDSubM_of_GDM(2, 2, 5, 0, base), 12, overrun);
    expectRefused(MBM_GDSubM_of_GDM(2, 2, 0, 4294967295U, base), 12, overrun);
    expectRefused(MBM_SDSubM_of_SDM(4, 4, 3, 3, base), 12, overrun);
    expectRefused(MBM_GDSubM_of_SDM(3, 3, 0, 2, base), 13, onDiagonal);
    expectRefused(MBM_GDSubM_of_SDM(3, 3, 2, 0, base), 13, onDiagonal);
    expectRefused(MBM_GDSubM_of_SDM(3, 3, 1, 1, base), 0, "");
    EXPECT_EQ(MBM_GDSubM_of_SDM(3, 3, 0, 3, base).data, base.data + 18);
    EXPECT_EQ(MBM_GDSubM_of_SDM(3, 3, 3, 0, base).data, base.data + 3);
    expectRefused(MBM_DenseStandAloneVector(0), 16, zeroVector);
    expectRefused(MBM_DenseSubVector(3, 3, vector), 15,
                  "Dimensions of subvector exceed surrounding base vector");
    expectRefused(MBM_DenseSubVector(2, 4294967295U, vector), 15,
                  "Dimensions of subvector exceed surrounding base vector");
    EXPECT_EQ(MBM_DenseSubVector(3, 2, vector).data, vector.data + 2);
    expectRefused(MBM_SymmetricDenseMatrix(MBM_GeneralDenseMatrix(0, 0), "Average"), 14, zeroMatrix);
    EXPECT_EQ(MBM_SymmetricDenseMatrix(MBM_GeneralDenseMatrix(2, 3), "Average").errorCode, 17);
}

TEST(DenseStorage, AssignmentAndCopies) {
    MBM_GeneralDenseMatrix target(2, 6, 0.0);
    const Operand source(Form::General, 3, 4, 0.3);
    const auto& matrix = dynamic_cast<const MBM_GeneralDenseMatrix&>(*source);
    const double* storage = target.data;
    target = matrix;
    EXPECT_EQ(target.data, storage);
    EXPECT_EQ(Table::of(target).values, Table::of(matrix).values);
    EXPECT_EQ(target.cols, 4U);
    MBM_GeneralDenseMatrix copy(target);
    target = MBM_GeneralDenseMatrix(1, 1, 5.0);
    EXPECT_EQ(target.getValue(0, 0), 5.0);
    EXPECT_EQ(Table::of(copy).values, Table::of(matrix).values);
    const MBM_GeneralDenseMatrix tooLarge(70000, 70000);
    copy = tooLarge;
    expectRefused(copy, 1, overflow);
    expectRefused(MBM_GeneralDenseMatrix(tooLarge), 1, overflow);
    EXPECT_FALSE(target.setDimensionsAndValue(70000, 70000, 1.0));
    expectRefused(target, 1, overflow);

    MBM_DenseStandAloneVector v(3, 1.0), w(2, 7.0);
    w = v;
    v.setSizeAndValue(4, 2.0);
    EXPECT_EQ(w.size, 3U);
    EXPECT_EQ(w.data[2], 1.0);
    EXPECT_EQ(v.data[3], 2.0);
    w.fillWithPattern("Unit");
    EXPECT_EQ(std::accumulate(w.data, w.data + 3, 0.0), 3.0);
    v.fillWithPattern("Random");
    EXPECT_LE(*std::max_element(v.data, v.data + 4), 1.0);
    EXPECT_NE(v.data[0], v.data[1]);
    w = MBM_DenseStandAloneVector(0);
    expectRefused(w, 16, zeroVector);
}

TEST(DenseStorage, ExternalMemoryIsCopiedIntoAndSurvives) {
    double memory[] = {1, 2, 3, 4, 5, 6}, other[] = {6, 5, 4, 3, 2, 1};
    {
        MBM_DenseMatrix_ExternalDatas view(2, 3, memory), wider(3, 2, other), same(2, 3, other),
            unaimed(2, 3);
        view = wider;
        EXPECT_EQ(view.errorCode, 100);
        EXPECT_EQ(view.errorString, otherShape);
        EXPECT_EQ(memory[0], 1.0);
        view = unaimed;
        view = same;
    }
    EXPECT_TRUE(std::equal(memory, memory + 6, other));
}

TEST(DenseStorage, StructuredElements) {
    MBM_SymmetricDenseMatrix symmetric(3);
    symmetric.setValue(1, 2, 5.0);
    EXPECT_EQ(symmetric.getValue(2, 1), 5.0);
    MBM_SkewSymmetricDenseMatrix skew(3, 2.0);
    EXPECT_EQ(Table::of(skew).values, (std::vector<double>{0, -2, -2, 2, 0, -2, 2, 2, 0}));
    skew.setValue(1, 1, 5.0);
    skew.setValue(0, 2, 4.0);
    EXPECT_EQ(Table::of(skew).values, (std::vector<double>{0, -2, 4, 2, 0, -2, -4, 2, 0}));
    MBM_DiagonalDenseMatrix diagonal(2, 3.0);
    EXPECT_FALSE(diagonal.setValue(0, 1, 5.0));
    EXPECT_EQ(Table::of(diagonal).values, (std::vector<double>{3, 0, 0, 3}));
    EXPECT_TRUE(diagonal.setSquareDimensionAndValue(3, 4.0));
    EXPECT_EQ(Table::of(diagonal).values, (std::vector<double>{4, 0, 0, 0, 4, 0, 0, 0, 4}));
    EXPECT_TRUE(skew.setSquareDimensionAndValue(2, 1.0));
    EXPECT_EQ(Table::of(skew).values, (std::vector<double>{0, -1, 1, 0}));
}

TEST(DenseStorage, SymmetrizeField) {
    const std::pair<const char*, std::vector<double>> modes[] = {{"Average", {1, 3, 3, 3}},
                                                                 {"Lower2Upper", {1, 4, 4, 3}},
                                                                 {"Upper2Lower", {1, 2, 2, 3}},
                                                                 {"average", {1, 4, 2, 3}}};
    for (const auto& [mode, expected] : modes) {
        double field[] = {1, 4, -9, 2, 3, -9};
        symmetrizeField(2, 3, field, mode);
        EXPECT_EQ((std::vector<double>{field[0], field[1], field[3], field[4]}), expected) << mode;
        EXPECT_EQ(field[2] + field[5], -18.0);
    }
    MBM_GeneralDenseMatrix general(2, 2);
    general.setValue(0, 1, 2.0);
    general.setValue(1, 0, 4.0);
    EXPECT_EQ(MBM_SymmetricDenseMatrix(general, "Average").getValue(0, 1), 3.0);
}

/// Text of a matrix file, the kind of matrix that takes it, and what becomes of it.
struct FileCase {
    const char* content;
    Form form;
    unsigned rows, cols;
    int code;
    const char* text;
    std::vector<double> elements; ///< row after row; empty: the matrix stays as it was
};

void PrintTo(const FileCase& fileCase, std::ostream* out) {
    *out << fileCase.content;
}

constexpr const char* viewShape = "Submatrix dimensions do not fit to matrix dimensions of file";
constexpr const char* noShape = "Matrix reading from file: dimensions in the file are not valid";
constexpr const char* tooShort =
    "Matrix reading from file: file holds fewer values than its dimensions ask for";

class MatrixFileTest : public testing::TestWithParam<FileCase> {};

TEST_P(MatrixFileTest, Read) {
    const FileCase& given = GetParam();
    std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    std::replace(test.begin(), test.end(), '/', '_');
    const std::string name = testing::TempDir() + "velmora_matrix_" + test + ".txt";
    std::ofstream(name) << given.content;
    const Operand matrix(given.form, given.rows, given.cols, 0.3);
    const Table before = Table::of(*matrix);
    MBM_DenseMatrixIO reader;
    reader.readMatFromFile(name, *matrix);
    EXPECT_EQ((*matrix).errorCode, given.code);
    EXPECT_EQ((*matrix).errorString, given.text);
    if ((*matrix).data) {
        EXPECT_EQ(Table::of(*matrix).values, given.elements.empty() ? before.values : given.elements);
    }
    EXPECT_EQ(matrix.damageAroundView(), 0U);
    EXPECT_EQ(reader.file, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Files, MatrixFileTest,
    testing::Values(FileCase{"2 3\n1 2 3\n4 5 6\n", Form::General, 3, 2, 0, "", {1, 2, 3, 4, 5, 6}},
                    FileCase{"2\t2\r\n1\r\n\r\n2 3e0 -4.5", Form::MirroredView, 2, 2, 0, "", {1, 2, 3, -4.5}},
                    FileCase{"2 2  1 9 2 4", Form::Symmetric, 3, 3, 0, "", {1, 2, 2, 4}},
                    FileCase{"2 2  1 9 2 4", Form::Diagonal, 2, 2, 0, "", {1, 0, 0, 4}},
                    FileCase{"2 3 1 2 3 4 5 6", Form::WideView, 3, 2, 11, viewShape, {}},
                    FileCase{"2 3 1 2 3 4 5 6", Form::External, 3, 2, 11, viewShape, {}},
                    FileCase{"3 1 1 2 3", Form::Symmetric, 2, 2, 3, noShape, {}},
                    FileCase{"-2 3 1", Form::General, 2, 2, 3, noShape, {}},
                    FileCase{"2 x 1", Form::General, 2, 2, 3, noShape, {}},
                    FileCase{"2 nan 1", Form::General, 2, 2, 3, noShape, {}},
                    FileCase{"", Form::General, 2, 2, 3, noShape, {}},
                    FileCase{"60000 60000 1 2", Form::General, 2, 2, 4, tooShort, {}},
                    FileCase{"70000 70000 1 2", Form::General, 2, 2, 1, overflow, {}},
                    FileCase{
                        "1 3  1 2 abc", Form::External, 1, 3, 4, tooShort, {1, 2, std::sin(0.3 + 2.4)}}));

TEST(MatrixFile, MissingFile) {
    MBM_GeneralDenseMatrix matrix(2, 2, 1.0);
    MBM_DenseMatrixIO reader;
    for (const std::string& name : {testing::TempDir() + "velmora_no_such_file.txt", testing::TempDir()}) {
        reader.readMatFromFile(name, matrix);
        EXPECT_EQ(matrix.errorCode, 2);
        EXPECT_EQ(matrix.errorString, "Matrix reading from file: could not open file");
        EXPECT_FALSE(reader.isErrorOccured());
    }
    reader.verbose = true;
    testing::internal::CaptureStdout();
    reader.readMatFromFile("velmora_no_such_file.txt", matrix);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "could not open velmora_no_such_file.txt\n");
    EXPECT_EQ(reader.errorString, "Could not open file");
    EXPECT_EQ(matrix.getValue(1, 1), 1.0);
}

} // namespace
} // namespace velmora::test
