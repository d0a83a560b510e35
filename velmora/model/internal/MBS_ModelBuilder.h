#pragma once

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class IO_DataModel;
class IO_DataModelBlock;
class MBS_ExtConstraint;
struct MBS_MeasureChoice;
class MBS_InternalModel;

/// Builds a model's objects from the blocks of a data model, kind after kind in a fixed order: a reference
/// can only point to an object of an earlier kind. A faulty block is reported and left out; the build goes
/// on.
///
/// Messages have the form: the block's prefix and read errors so far, then the builder's text.
class MBS_ModelBuilder {
  public:
    MBS_ModelBuilder(MBS_InternalModel& target, IO_DataModel& source) : model(target), data(source) {}

    /// Data objects, bodies, measures, constraints, forces, actors. Throws a `std::string` for an unknown
    /// type of data object.
    void buildAll();

  private:
    using Block = IO_DataModelBlock;

    void buildDataObject(Block& block);
    void buildBody(Block& block);
    void buildMeasure(Block& block);
    void buildTranslationalMeasure(Block& block, bool isToGround);
    void buildRotationalMeasure(Block& block, bool isToGround);
    void buildFlexTranslationalMeasure(Block& block, bool isToGround);
    void addMeasure(Block& block, const MBS_MeasureChoice* choice);
    void buildConstraint(Block& block);
    void buildGenericConstraint(Block& block, const std::vector<std::string>& ids);
    /// Adds the constraint if it has no error, and tells so.
    bool addConstraint(std::unique_ptr<MBS_ExtConstraint> constraint, bool isForResults);
    bool areBodiesOfWeld(const Block& block, const std::vector<std::string>& ids);
    void buildForce(Block& block);
    void buildActor(Block& block);

    /// Reads "BodyIDs"; false, and reported, if the block has an error then. Two entries at least.
    bool readBodyIDs(Block& block, std::vector<std::string>& ids);
    /// Reports the block's text and a line feed if it has an error.
    bool reportReadErrors(Block& block);
    void refuse(const Block& block, const std::string& text);
    void refuseUnavailable(Block& block, const std::string& what);

    MBS_InternalModel& model;
    IO_DataModel& data;
};

} // namespace velmora
