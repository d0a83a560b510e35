#include "velmora/matrix/MBM_DenseMatrixIO.h"

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/platform/FileSystem.h"

#include <cstdint>

namespace velmora {

namespace {

void setError(MBM_DenseMatrix& matrix, int code, const char* text) {
    matrix.errorCode = code;
    matrix.errorString = text;
}

/// Number of bytes from the present position to the end of the file.
std::uint64_t remainingBytes(std::FILE* file) {
    const long position = std::ftell(file);
    std::fseek(file, 0, SEEK_END);
    const long end = std::ftell(file);
    std::fseek(file, position, SEEK_SET);
    return static_cast<std::uint64_t>(end - position);
}

} // namespace

void MBM_DenseMatrixIO::readMatFromFile(const std::string& path, MBM_DenseMatrix& matrix) {
    fileName = path;
    file = openFile(path, "r");
    if (!file) {
        setError(matrix, 2, "Matrix reading from file: could not open file");
        if (verbose) {
            std::printf("could not open %s\n", path.c_str());
            errorString = "Could not open file";
        }
        return;
    }
    readMatrix(matrix);
    std::fclose(file);
    file = nullptr;
}

void MBM_DenseMatrixIO::readMatrix(MBM_DenseMatrix& matrix) {
    unsigned rows = 0;
    unsigned cols = 0;
    const bool squareOnly = matrix.isSymmetric() || matrix.isSkewSymmetric();
    if (!readDimension(rows) || !readDimension(cols) || (squareOnly && rows != cols)) {
        setError(matrix, 3, "Matrix reading from file: dimensions in the file are not valid");
        return;
    }
    if (rows != matrix.rows || cols != matrix.cols) {
        auto* owner = dynamic_cast<MBM_DenseStandAloneMatrix*>(&matrix);
        if (!owner) {
            setError(matrix, 11, "Submatrix dimensions do not fit to matrix dimensions of file");
            return;
        }
        // A number takes at least one character and a separator: no storage for what the file can't hold.
        const std::uint64_t count = std::uint64_t{rows} * cols;
        const bool fits = count <= UINT32_MAX;
        if (fits && count > (remainingBytes(file) + 1) / 2) {
            setError(matrix, 4,
                     "Matrix reading from file: file holds fewer values than its dimensions ask for");
            return;
        }
        if (!owner->setDimensions(rows, cols))
            return;
    }
    readElements(matrix);
}

void MBM_DenseMatrixIO::readElements(MBM_DenseMatrix& matrix) {
    for (unsigned i = 0; i < matrix.rows; ++i) {
        for (unsigned j = 0; j < matrix.cols; ++j) {
            double value = 0.0;
            if (std::fscanf(file, "%lf", &value) != 1) {
                setError(matrix, 4,
                         "Matrix reading from file: file holds fewer values than its dimensions ask for");
                return;
            }
            matrix.setValue(i, j, value);
        }
    }
}

bool MBM_DenseMatrixIO::readDimension(unsigned& dimension) {
    double number = 0.0;
    if (std::fscanf(file, "%lf", &number) != 1 || !(number >= 0.0 && number < 4294967296.0))
        return false;
    dimension = static_cast<unsigned>(number);
    return true;
}

} // namespace velmora
