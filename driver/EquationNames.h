#pragma once

#include <string>
#include <vector>

namespace velmora {
class IO_DataModel;
class IO_DataModelBlock;
class MBS_Model;
} // namespace velmora

namespace velmora::driver {

/// What the rows of the equations of motion are called in the model file.
///
/// The rows are those of the system: first the coordinates of all bodies, then the equations of the bodies'
/// Euler parameters, then those of the constraints.
class EquationNames {
  public:
    struct Place {
        enum Kind { Coordinate, Norm, Constraint, Unknown } kind = Unknown;
        unsigned owner = 0; ///< body or constraint
        unsigned index = 0; ///< of the coordinate or equation, in its owner
    };

    /// The data model is the one that the model was made of. Neither is owned.
    EquationNames(const MBS_Model* model, IO_DataModel* dataModel);

    /// Owner of a row, from 0.
    Place locate(unsigned row) const;
    /// "body <link1>, coordinate e0", "constraint dzFixed of hinge (link1, ground)".
    std::string getName(unsigned row) const;
    /// "body <link1>", with the label if there is one.
    std::string getBodyName(unsigned body) const;

    /// Block that a constraint, counted from 0, was made of; null if that can't be told.
    const IO_DataModelBlock* getConstraintBlock(unsigned constraint) const;

    /// Constraint equation, from 0, in short: "dzFixed of hinge (link1, ground)".
    std::string getShortName(unsigned equation) const;
    /// Label of the constraint, or UUID of the body, to which a constraint equation belongs.
    std::string getOwnerName(unsigned equation) const;

  private:
    struct Source {
        IO_DataModelBlock* block; // not owned
        std::string flag;         // that called for the constraint; empty if the type does
    };
    struct Owner {
        unsigned firstRow;
        Place::Kind kind;
        unsigned index;
    };
    void collectRows();
    void collectConstraints();
    const Source* getSource(unsigned constraint) const;
    std::string getBodyUuid(unsigned body) const;

    const MBS_Model* model;  // not owned
    IO_DataModel* dataModel; // not owned
    unsigned numOfPhysicalDof;
    std::vector<Owner> owners;   // in the order of their rows
    std::vector<Source> sources; // per constraint; empty if blocks and constraints don't correspond
};

} // namespace velmora::driver
