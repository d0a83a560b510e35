#pragma once

#include "velmora/platform/Export.h"

#include <memory>
#include <string>

namespace velmora {

/// Root of all vectors.
class VELMORA_EXPORT MBM_Vector {
  public:
    virtual ~MBM_Vector() = default;
    /// Exact name of the concrete class.
    virtual std::string getClassName() const { return "MBM_Vector"; }
    /// A view into another vector.
    virtual bool isSubVector() const { return false; }

    /// Copy of the error text.
    std::string getErrorString() const { return errorString; }

    unsigned size = 0;
    double zeroTolerance = 1.0e-10; ///< largest difference that still counts as equal
    int errorCode = 0;              ///< 0 while the object is sound
    std::string errorString;        ///< empty while the object is sound

  protected:
    /// Errors: code 16 for a size of 0.
    explicit MBM_Vector(unsigned numOfEntries);
    MBM_Vector(const MBM_Vector&) = default;
    MBM_Vector& operator=(const MBM_Vector&) = default;

    void setError(int code, const char* text);
};

/// Root of all vectors with contiguous storage: element i stands at data[i].
class VELMORA_EXPORT MBM_DenseVector : public MBM_Vector {
  public:
    std::string getClassName() const override { return "MBM_DenseVector"; }
    /// "Random" fills with numbers in [-1, 1] seeded by the clock, "Unit" with 1.0; any other pattern changes
    /// nothing.
    virtual void fillWithPattern(std::string pattern);

    double* data = nullptr; ///< element 0

  protected:
    using MBM_Vector::MBM_Vector;
    MBM_DenseVector(const MBM_DenseVector&) = default;
    MBM_DenseVector& operator=(const MBM_DenseVector&) = default;
};

/// Dense vector that owns its storage.
class VELMORA_EXPORT MBM_DenseStandAloneVector : public MBM_DenseVector {
  public:
    /// All elements become value. Errors: code 16 for a size of 0.
    explicit MBM_DenseStandAloneVector(unsigned numOfEntries, double value = 0.0);
    /// Duplicates storage, tolerance and error state.
    MBM_DenseStandAloneVector(const MBM_DenseStandAloneVector& other);
    /// With equal sizes only the elements are copied; otherwise the storage is allocated anew and the error
    /// state is taken over too.
    MBM_DenseStandAloneVector& operator=(const MBM_DenseStandAloneVector& other);
    ~MBM_DenseStandAloneVector() override = default;

    std::string getClassName() const override { return "MBM_DenseStandAloneVector"; }

    /// New storage of n elements, all value. Always true.
    virtual bool setSizeAndValue(unsigned n, double value);
    /// New storage of n undefined elements. Always true.
    virtual bool setSize(unsigned n);

  private:
    std::unique_ptr<double[]> ownedData;
};

/// Header over somebody else's memory; `size` and `data` may be rewritten at any time to aim it elsewhere. A
/// copy or an assigned object looks at the same memory.
class VELMORA_EXPORT MBM_DenseVectorExternalField : public MBM_DenseVector {
  public:
    /// The memory must outlive the use. Errors: code 16 for a size of 0.
    MBM_DenseVectorExternalField(unsigned numOfEntries, double* memory);

    std::string getClassName() const override { return "MBM_DenseVectorExternalField"; }
};

/// View of a range of another vector; `size`, `offset` and `data` may be rewritten at any time to aim it
/// elsewhere. The base must outlive the view and must not be reallocated meanwhile. A copy looks at the same
/// range.
class VELMORA_EXPORT MBM_DenseSubVector : public MBM_DenseVector {
  public:
    /// View that is aimed later: no base, `data` null. Errors: code 16 for a size of 0.
    explicit MBM_DenseSubVector(unsigned numOfEntries);
    /// Elements firstEntry to firstEntry + numOfEntries - 1 of base. Errors, with `data` null: code 16 for a
    /// size of 0, code 15 if the range overruns the base.
    MBM_DenseSubVector(unsigned numOfEntries, unsigned firstEntry, MBM_DenseVector& base);

    std::string getClassName() const override { return "MBM_DenseSubVector"; }
    bool isSubVector() const override { return true; }

    MBM_Vector* baseVector = nullptr; ///< not owned
    unsigned offset = 0;              ///< entry of the base that holds entry 0
};

} // namespace velmora
