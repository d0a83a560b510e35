#pragma once

#include "velmora/platform/Export.h"

#include <string>

namespace velmora {

/// Root of everything that can report an error. An item has failed exactly when its error text isn't empty;
/// the text only grows.
class VELMORA_EXPORT MBS_Item {
  public:
    MBS_Item() = default;
    MBS_Item(const MBS_Item&) = default;
    MBS_Item(MBS_Item&&) = default;
    MBS_Item& operator=(const MBS_Item&) = default;
    MBS_Item& operator=(MBS_Item&&) = default;
    virtual ~MBS_Item() = default;

    /// Exact name of the concrete class.
    virtual std::string getClassName() const { return "MBS_Item"; }

    /// True once an error has been reported on this item.
    bool isErrorOccured() const { return !errorString.empty(); }
    /// Copy of all error texts reported on this item, in order.
    std::string getErrorString() const { return errorString; }

  protected:
    /// Appends the message to the error text.
    virtual void appendErrorString(std::string message) { errorString += message; }
    /// Appends the message behind the pointer; the argument stays as it is.
    virtual void appendErrorString(std::string* message) { errorString += *message; }

    std::string errorString;
};

} // namespace velmora
