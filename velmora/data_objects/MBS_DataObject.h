#pragma once

#include "velmora/model/MBS_ModelObject.h"

namespace velmora {

/// Root of all data objects: named data of a model, which expressions refer to by label and a driver changes
/// between steps.
class MBS_DataObject : public MBS_ModelObject {
  public:
    /// Forwards read errors that stand on the block.
    MBS_DataObject(IO_DataModelBlock* block, MBS_Model* owner);
    std::string getClassName() const override { return "MBS_DataObject"; }

    /// Takes over label, "active" and, in the classes below, all data anew; errors of the block are reported.
    /// Nothing for a null block.
    void modifyModelElement(IO_DataModelBlock* block) override;
    /// Value of a parameter; of no meaning for other data objects.
    virtual double getParameterValue() const { return 0.0; }
};

/// A number.
class MBS_Parameter final : public MBS_DataObject {
  public:
    /// Reads "InitialValue".
    MBS_Parameter(IO_DataModelBlock* block, MBS_Model* owner);
    std::string getClassName() const override { return "MBS_Parameter"; }
    /// Reads "InitialValue" again; the value stays if it can't be read.
    void modifyModelElement(IO_DataModelBlock* block) override;
    double getParameterValue() const override { return value; }

    double value = 0.0;
};

} // namespace velmora
