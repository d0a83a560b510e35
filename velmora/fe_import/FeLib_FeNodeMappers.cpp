#include "velmora/fe_import/FeLib_FeNodeMappers.h"

#include "velmora/fe_import/FeLib_FeNodeList.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr std::uint64_t longestTable = 10'000'000;

} // namespace

LabelTable::LabelTable(const FeLib_FeNodeList& list) {
    const auto [lowest, highest] = std::ranges::minmax_element(list.nodes, {}, &FeLib_FeNode::label);
    if (lowest != list.nodes.end()) {
        minLabel = (*lowest)->label;
        maxLabel = (*highest)->label;
    }
    if (size() <= longestTable)
        table.assign(size(), absent);
}

void LabelTable::set(std::uint32_t label, std::uint32_t number) {
    if (isTable())
        table[label - minLabel] = number;
    else
        map[label] = number;
}

std::uint32_t LabelTable::find(std::uint32_t label) const {
    if (label < minLabel || label > maxLabel)
        return absent;
    if (isTable())
        return table[label - minLabel];
    const auto place = map.find(label);
    return place == map.end() ? absent : place->second;
}

FeLib_FeNodeDofVecPattern::FeLib_FeNodeDofVecPattern(const FeLib_FeNodeList& list) {
    nodeIndices.reserve(6 * list.nodes.size());
    localDofs.reserve(6 * list.nodes.size());
    for (std::uint32_t node = 0; node < list.nodes.size(); ++node)
        for (std::uint16_t dof = 0; dof < 6; ++dof)
            if (list.nodes[node]->dofFlags[dof]) {
                nodeIndices.push_back(node);
                localDofs.push_back(dof);
            }
    size = static_cast<std::uint32_t>(nodeIndices.size());
}

FeLib_FeNodeLabel2NodeIndexMapper::FeLib_FeNodeLabel2NodeIndexMapper(const FeLib_FeNodeList& list)
    : nodeIndices(list),
      minLabel(nodeIndices.minLabel),
      maxLabel(nodeIndices.maxLabel) {
    for (std::uint32_t node = 0; node < list.nodes.size(); ++node)
        nodeIndices.set(list.nodes[node]->label, node);
}

FeLib_FeNodeLabel2DofVecIndexMapper::FeLib_FeNodeLabel2DofVecIndexMapper(
    const FeLib_FeNodeDofVecPattern& pattern, const FeLib_FeNodeList& list)
    : undefinedRow(pattern.size + 10),
      recordOfLabel(list),
      minLabel(recordOfLabel.minLabel),
      maxLabel(recordOfLabel.maxLabel) {
    for (std::uint32_t row = 0; row < pattern.size; ++row) {
        const std::uint32_t node = pattern.nodeIndices[row];
        if (row == 0 || node != pattern.nodeIndices[row - 1]) {
            recordOfLabel.set(list.nodes[node]->label, static_cast<std::uint32_t>(records.size()));
            records.emplace_back().fill(undefinedRow);
        }
        records.back()[pattern.localDofs[row]] = row;
    }
}

const FeLib_FeNodeLabel2DofVecIndexMapper::Record*
FeLib_FeNodeLabel2DofVecIndexMapper::findRecord(std::uint32_t label) const {
    const std::uint32_t record = recordOfLabel.find(label);
    return record == LabelTable::absent ? nullptr : &records[record];
}

} // namespace velmora
