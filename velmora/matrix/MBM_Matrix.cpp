#include "velmora/matrix/MBM_Matrix.h"

namespace velmora {

MBM_Matrix::MBM_Matrix(unsigned numOfRows, unsigned numOfCols) : rows(numOfRows), cols(numOfCols) {
    if (rows == 0 || cols == 0)
        setError(14, "Matrix definition with dimension 0");
}

void MBM_Matrix::setError(int code, const char* text) {
    errorCode = code;
    errorString = text;
}

} // namespace velmora
