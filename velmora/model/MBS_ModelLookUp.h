#pragma once

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_Body;
class MBS_ConstraintGroup;
class MBS_DataObject;
class MBS_ExtConstraint;
class MBS_Force;
class MBS_Measure;
class MBS_Model;

/// What objects see of the model beside its error road: the objects built so far, by identity and in order.
/// An object keeps no reference to it beyond its construction.
class MBS_ModelLookUp {
  public:
    virtual ~MBS_ModelLookUp() = default;

    /// First body with exactly this UUID; null if there is none.
    virtual MBS_Body* getBodyByUUID(const std::string& uuid) const = 0;
    /// All bodies in model order; the index is the body index.
    virtual const std::vector<std::unique_ptr<MBS_Body>>& getBodies() const = 0;

    /// First measure with this label, in any case of letters; null if there is none.
    virtual MBS_Measure* getMeasureByLabel(const std::string& label) const = 0;
    /// First data object with this label, in any case of letters; null if there is none.
    virtual MBS_DataObject* getDataObjectByLabel(const std::string& label) const = 0;
    /// Data objects announced by blocks so far, those that could not be made among them.
    virtual unsigned getNumOfDataObjects() const = 0;
};

/// The finished lists of a model, as the global matrix and the result files walk them.
class MBS_ModelObjectLists : public MBS_ModelLookUp {
  public:
    /// All external constraints in model order; the index is the constraint index.
    virtual const std::vector<std::unique_ptr<MBS_ExtConstraint>>& getConstraints() const = 0;
    /// The same constraints class by class, as they are evaluated.
    virtual const std::vector<std::shared_ptr<MBS_ConstraintGroup>>& getConstraintGroups() const = 0;
    /// All measures in model order; the index is the measure index.
    virtual const std::vector<std::unique_ptr<MBS_Measure>>& getMeasures() const = 0;
    /// All forces in model order.
    virtual const std::vector<std::unique_ptr<MBS_Force>>& getForces() const = 0;
    /// The model with its counters and its name.
    virtual const MBS_Model& getModel() const = 0;
    /// Reports an error of something made from the model on the model's one road.
    virtual void reportError(std::string message) = 0;
};

} // namespace velmora
