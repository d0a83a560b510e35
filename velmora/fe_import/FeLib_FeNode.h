#pragma once

#include "velmora/platform/Export.h"

#include <array>
#include <cstdint>
#include <string>

namespace velmora {

/// Root of everything that is imported from a finite-element program. Errors are texts, appended without a
/// separator; an item is sound while its text is empty.
class VELMORA_EXPORT FeLib_Item {
  public:
    FeLib_Item() = default;
    FeLib_Item(const FeLib_Item&) = default;
    FeLib_Item& operator=(const FeLib_Item&) = default;
    virtual ~FeLib_Item() = default;

    /// Exact name of the concrete class.
    virtual std::string getClassName() const { return "FeLib_Item"; }
    void appendErrorString(const std::string& text) { errorString += text; }

    std::string errorString;
};

/// An item with the number that the finite-element program gave it. Labels are neither dense nor sorted.
class VELMORA_EXPORT FeLib_LabeledObject : public FeLib_Item {
  public:
    explicit FeLib_LabeledObject(std::uint32_t itsLabel) : label(itsLabel) {}
    std::string getClassName() const override { return "FeLib_LabeledObject"; }

    std::uint32_t label;
};

/// A node of the mesh.
class VELMORA_EXPORT FeLib_FeNode : public FeLib_LabeledObject {
  public:
    /// Position in the body frame, in the length unit of the file; the node has all six DOF.
    FeLib_FeNode(std::uint32_t itsLabel, double positionX, double positionY, double positionZ)
        : FeLib_LabeledObject(itsLabel),
          x(positionX),
          y(positionY),
          z(positionZ) {}
    std::string getClassName() const override { return "FeLib_FeNode"; }

    std::string name;
    double x;
    double y;
    double z;
    /// DOF that the node has: translations x, y, z, then rotations x, y, z.
    std::array<bool, 6> dofFlags{true, true, true, true, true, true};
    std::uint16_t numOfDof = 6;
};

} // namespace velmora
