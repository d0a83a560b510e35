#include "velmora/fe_import/FeLib_FeNodeList.h"

namespace velmora {

FeLib_FeNodeContainer::FeLib_FeNodeContainer(std::size_t room) {
    nodes.reserve(room);
    ownedNodes.reserve(room);
}

void FeLib_FeNodeContainer::add(std::unique_ptr<FeLib_FeNode> node) {
    if (!nodes.empty() && node->label < nodes.back()->label)
        isSorted = false;
    ownedNodes.push_back(std::move(node));
    nodes.push_back(ownedNodes.back().get());
}

FeLib_FeNodeSubset::FeLib_FeNodeSubset(const FeLib_FeNodeList& list) {
    nodes = list.nodes;
    isSorted = list.isSorted;
}

} // namespace velmora
