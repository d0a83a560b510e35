#pragma once

#include "velmora/platform/Export.h"

#include <cstdio>
#include <string>

namespace velmora {

class MBM_DenseMatrix;

/// Base of the readers of matrix files.
class VELMORA_EXPORT MBM_FileIO {
  public:
    virtual ~MBM_FileIO() = default;
    /// Exact name of the concrete class.
    virtual std::string getClassName() const { return "MBM_FileIO"; }
    /// True if `errorString` isn't empty.
    virtual bool isErrorOccured() const { return !errorString.empty(); }

    std::string errorString;
    std::string fileName;      ///< as given to the last read
    std::FILE* file = nullptr; ///< open only while a read runs
    bool verbose = false;      ///< also tell failures on standard output and in `errorString`

  protected:
    MBM_FileIO() = default;
    MBM_FileIO(const MBM_FileIO&) = default;
    MBM_FileIO& operator=(const MBM_FileIO&) = default;
};

/// Reader of text files with one matrix: number of rows, number of columns, then the elements row after row,
/// all separated by white space of any kind.
class VELMORA_EXPORT MBM_DenseMatrixIO : public MBM_FileIO {
  public:
    std::string getClassName() const override { return "MBM_DenseMatrixIO"; }

    /// Reads the file into the matrix. A matrix that owns its storage takes the dimensions of the file; views
    /// must have them already. Elements go in through `setValue`. Errors, on the matrix: code 1 too many
    /// elements, 2 no such file, 3 dimensions that are none or that the kind of matrix can't have, 4 fewer
    /// numbers than announced, 11 a view of other dimensions. With 3, 4 known before the first element, and
    /// 11, the matrix stays as it was.
    void readMatFromFile(const std::string& path, MBM_DenseMatrix& matrix);

  private:
    void readMatrix(MBM_DenseMatrix& matrix);
    void readElements(MBM_DenseMatrix& matrix);
    bool readDimension(unsigned& dimension);
};

} // namespace velmora
