#pragma once

#include "velmora/fe_import/FeLib_FeNode.h"

#include <memory>
#include <vector>

namespace velmora {

/// A list of nodes in the order of the file.
class VELMORA_EXPORT FeLib_FeNodeList : public FeLib_Item {
  public:
    std::string getClassName() const override { return "FeLib_FeNodeList"; }

    std::vector<FeLib_FeNode*> nodes; ///< not owned by the list as such
    bool isSorted = true;             ///< labels ascend
};

/// The list that owns its nodes.
class VELMORA_EXPORT FeLib_FeNodeContainer : public FeLib_FeNodeList {
  public:
    /// Room for a number of nodes; more may be added.
    explicit FeLib_FeNodeContainer(std::size_t room);
    FeLib_FeNodeContainer(const FeLib_FeNodeContainer&) = delete;
    FeLib_FeNodeContainer& operator=(const FeLib_FeNodeContainer&) = delete;
    std::string getClassName() const override { return "FeLib_FeNodeContainer"; }

    /// Appends the node. A label below that of the last node clears `isSorted`.
    void add(std::unique_ptr<FeLib_FeNode> node);

  private:
    std::vector<std::unique_ptr<FeLib_FeNode>> ownedNodes;
};

/// Some nodes of a container, which must outlive the subset.
class VELMORA_EXPORT FeLib_FeNodeSubset : public FeLib_FeNodeList {
  public:
    /// All nodes of the list.
    explicit FeLib_FeNodeSubset(const FeLib_FeNodeList& list);
    std::string getClassName() const override { return "FeLib_FeNodeSubset"; }

    std::string name;
};

} // namespace velmora
