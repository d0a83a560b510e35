#pragma once

#include "velmora/platform/Export.h"

#include <string>
#include <vector>

namespace velmora {

/// Types of value that a typed read may ask for.
enum IO_ValueCode : unsigned {
    Bool = 1,
    Int = 2,
    IntArray2 = 3,
    IntArray3 = 4,
    Unsigned = 5,
    UnsignedArray2 = 6,
    UnsignedArray3 = 7,
    Double = 8,
    String = 9,
    StringPair = 10,
    DoubleVector2 = 11,
    DoubleVector3 = 12,
    DoubleVector4 = 13,
    DoubleMatrix3x3 = 14, ///< nine numbers, column after column
    FilePath = 15,
    DoubleArray = 16 ///< count given by the caller
};

/// One block of input: a small dictionary of text keys and text values, with a kind, a type, a UUID and a
/// label.
///
/// Typed reads convert on each call. A read that fails leaves its output untouched and appends one of the
/// texts below to the block's error text; it never throws. A constructor reads all its keys, then asks
/// `isErrorOccured` once. Keys are compared exactly, and the first of two equal keys wins.
class VELMORA_EXPORT IO_DataModelBlock {
  public:
    IO_DataModelBlock(std::string blockKind, std::string blockUuid, std::string blockLabel,
                      std::string directory);
    virtual ~IO_DataModelBlock() = default;
    virtual std::string getClassName() const { return "IO_DataModelBlock"; }

    /// Appends a key and its value; no test for duplicates.
    void addKeyValue(std::string key, std::string value);
    /// Optional keys are read behind this test.
    bool isKeyInBlock(const std::string& key) const;
    /// Sets the value of a key that exists; nothing otherwise.
    void replaceValue(const std::string& key, std::string value);

    bool isErrorOccured() const { return !errorString.empty(); }
    /// "In Block <kind> prior to line number n:" and a line feed, then all errors so far.
    void getErrorString(std::string* text) const;

    const std::string& getKind() const { return kind; }
    const std::string& getType() const { return type; }
    const std::string& getUuid() const { return uuid; }
    const std::string& getLabel() const { return label; }

    // Typed reads. Errors: key missing, failed conversion, wrong number of values, null output or a code that
    // the overload doesn't take.

    /// "yes" or "no" in any case.
    void getValue(std::string key, bool* value);
    void getValue(std::string key, int* value);
    void getValue(std::string key, unsigned* value);
    /// Codes Double, DoubleVector2 to DoubleVector4, DoubleMatrix3x3; values are separated by commas. A piece
    /// that fails is reported, and the others are stored all the same.
    void getValue(std::string key, double* values, unsigned code);
    /// `count` numbers (code DoubleArray).
    void getValueArray(std::string key, double* values, unsigned count);
    /// Codes String and FilePath. A file path is taken as it stands if it can be opened, otherwise relative
    /// to `baseDirectory`, without a test.
    void getValue(std::string key, std::string* value, unsigned code);
    /// A pair of texts: two entries as a rule. Without a comma the first is empty and the second the whole
    /// text; with more than one the third is the rest.
    void getValue(std::string key, std::vector<std::string>* values);

    unsigned numOfKeys = 0;
    unsigned lineNumber = 0; ///< of the input, for the error prefix
    std::string errorString;
    std::string currentKey; ///< key of the last read
    std::string kind;       ///< family: "DataObject", "Body", "Measure", "Constraint", "Force", "Actor"
    std::string type;       ///< keyword of the concrete type
    std::string auxiliaryText = "undef";
    std::string baseDirectory; ///< file names of this block are relative to it
    std::string uuid;
    std::string label;
    std::vector<std::string> keys;
    std::vector<std::string> values;

  private:
    const std::string* findValue(const std::string& key) const;
    const std::string* beginRead(std::string key, const void* output, unsigned code, bool isCodeTaken);
    void readDoubles(const std::string& text, double* output, unsigned code, unsigned count);
    void reportProgramCode(unsigned code);
    void reportFailedConversion(const std::string& text, unsigned code);
    void reportWrongCount(const std::string& text, unsigned count);
};

} // namespace velmora
