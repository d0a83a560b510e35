#pragma once

#include "velmora/fe_import/FeLib_FeNode.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace velmora {

class FeLib_FeNodeList;

/// Numbers by label, for the labels from the lowest to the highest of a list. A table serves a range of up to
/// 10^7 labels; a wider one, which few labels can span, is kept as a hash map.
class VELMORA_EXPORT LabelTable {
  public:
    static constexpr std::uint32_t absent = 0xffffffff;

    /// The range of the labels of the nodes, by scan; an empty list has the range 0 to 0.
    explicit LabelTable(const FeLib_FeNodeList& list);

    /// The label must be within the range.
    void set(std::uint32_t label, std::uint32_t number);
    /// `absent` for a label that was not set, within the range or outside.
    std::uint32_t find(std::uint32_t label) const;
    /// Labels of the range.
    std::uint64_t size() const { return std::uint64_t{maxLabel} - minLabel + 1; }

    std::uint32_t minLabel = 0;
    std::uint32_t maxLabel = 0;

  private:
    bool isTable() const { return !table.empty(); }

    std::vector<std::uint32_t> table;
    std::unordered_map<std::uint32_t, std::uint32_t> map;
};

/// What the rows of a vector over all DOF of a list of nodes belong to: node by node, and within a node the
/// DOF that it has in ascending order.
class VELMORA_EXPORT FeLib_FeNodeDofVecPattern : public FeLib_Item {
  public:
    explicit FeLib_FeNodeDofVecPattern(const FeLib_FeNodeList& list);
    std::string getClassName() const override { return "FeLib_FeNodeDofVecPattern"; }

    std::uint32_t size = 0;                 ///< rows
    std::vector<std::uint32_t> nodeIndices; ///< per row: index of the node in the list
    std::vector<std::uint16_t> localDofs;   ///< per row: DOF 0 to 5 of the node
};

/// From the label of a node to its index in the list. Of two nodes with one label the later one counts.
class VELMORA_EXPORT FeLib_FeNodeLabel2NodeIndexMapper : public FeLib_Item {
  public:
    explicit FeLib_FeNodeLabel2NodeIndexMapper(const FeLib_FeNodeList& list);
    std::string getClassName() const override { return "FeLib_FeNodeLabel2NodeIndexMapper"; }

    /// 0xffffffff if there is no such node.
    std::uint32_t getNodeIndex(std::uint32_t label) const { return nodeIndices.find(label); }

    LabelTable nodeIndices;
    std::uint32_t minLabel;
    std::uint32_t maxLabel;
};

/// From the label of a node to its rows in the DOF vector. Of two nodes with one label the later one counts.
class VELMORA_EXPORT FeLib_FeNodeLabel2DofVecIndexMapper : public FeLib_Item {
  public:
    /// Per DOF 0 to 5: its row, or `undefinedRow` where the node doesn't have the DOF.
    using Record = std::array<std::uint32_t, 6>;

    /// The pattern must be of the same list.
    FeLib_FeNodeLabel2DofVecIndexMapper(const FeLib_FeNodeDofVecPattern& pattern,
                                        const FeLib_FeNodeList& list);
    std::string getClassName() const override { return "FeLib_FeNodeLabel2DofVecIndexMapper"; }

    /// Null if there is no such node, or none with a DOF.
    const Record* findRecord(std::uint32_t label) const;

    std::uint32_t undefinedRow; ///< no row of the pattern
    LabelTable recordOfLabel;   ///< index into `records`
    std::uint32_t minLabel;
    std::uint32_t maxLabel;
    std::vector<Record> records;
};

} // namespace velmora
