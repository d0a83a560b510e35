#pragma once

#include "velmora/data_objects/MBS_1D_DataObject.h"

#include <memory>

namespace velmora {

class FL_Step;

/// A hard or smooth step; 0.0 everywhere if its block is faulty.
class MBS_StepFunction final : public MBS_1D_DataObject {
  public:
    /// Reads "Begin", "InitialValue", "End", "FinalValue" and, optional, "Mode": "polynomial" or "cosine", to
    /// the letter; any other makes a hard step.
    MBS_StepFunction(IO_DataModelBlock* block, MBS_Model* owner);
    ~MBS_StepFunction() override;
    std::string getClassName() const override { return "MBS_StepFunction"; }
    void modifyModelElement(IO_DataModelBlock* block) override;

    double getValue(double x, int) override { return getValue(x); }
    double getValue(double x) override;
    double getFirstDerivative(double x, int) override { return getFirstDerivative(x); }
    double getFirstDerivative(double x) override;
    double getSecondDerivative(double x, int) override { return getSecondDerivative(x); }
    double getSecondDerivative(double x) override;

    std::unique_ptr<FL_Step> step; ///< null if the block is faulty; an earlier one stays then

  private:
    void read(IO_DataModelBlock& block);
};

} // namespace velmora
