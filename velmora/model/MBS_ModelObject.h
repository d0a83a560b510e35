#pragma once

#include "velmora/model/MBS_Item.h"

namespace velmora {

class IO_DataModelBlock;
class MBS_History;
class MBS_Model;
class MBS_ModelPhysicalDofVector;

/// Root of all that a model contains: bodies, constraints, forces, measures, actors, data objects.
class MBS_ModelObject : public MBS_Item {
  public:
    /// Copies uuid and label (in lower case) from the block and reads the optional key "active" (bool).
    MBS_ModelObject(IO_DataModelBlock* block, MBS_Model* owner);
    MBS_ModelObject(const MBS_ModelObject&) = delete;
    MBS_ModelObject& operator=(const MBS_ModelObject&) = delete;
    ~MBS_ModelObject() override = default;

    std::string getClassName() const override { return "MBS_ModelObject"; }

    /// Takes over the block's label, as it stands, and the key "active" where the block holds it.
    virtual void modifyModelElement(IO_DataModelBlock* block);
    /// Writes the object's present data back into the block; nothing for most objects.
    virtual void getDataModelOfObject(MBS_ModelPhysicalDofVector* q, IO_DataModelBlock* block);

    /// Names the numbers by which evaluations to come depend on those before; none for most objects.
    virtual void exchangeHistory(MBS_History&) {}

    bool active = true;
    std::string uuid;  ///< identity by which other objects refer to this one
    std::string label; ///< name by which expressions and measures refer to this one, lower case

  protected:
    /// An error of an object stands on the object and in the model's collected text.
    void appendErrorString(std::string message) override;
    void appendErrorString(std::string* message) override;

    /// Reports the block's collected read errors, if there are any; true if there were.
    bool reportBlockErrors(const IO_DataModelBlock& block);

    MBS_Model* model; // not owned
};

} // namespace velmora
