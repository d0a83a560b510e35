#include "velmora/forces/ExpressionLoad.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/expressions/MBS_FunctionExpression.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/FetchAhead.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr std::size_t measureBytes = 384, evaluatorBytes = 384; // what they read of themselves, about

} // namespace

ExpressionLoad::ExpressionLoad(MBS_Model* model, const MBS_ModelLookUp& lookUp, const std::string& text,
                               std::span<MBS_Body* const> ownBodies)
    : expression(std::make_unique<MBS_FunctionExpression>(model, lookUp, text)),
      measureDerivatives(expression->meaDerivatives ? expression->meaDerivatives->data : nullptr) {
    collectColumns(ownBodies);
    numberColumns();
}

ExpressionLoad::~ExpressionLoad() = default;

const std::vector<MBS_Measure*>& ExpressionLoad::measures() const {
    return expression->measures;
}

// Bodies of measures that call for no block, such as those of an acceleration alone, are dropped again.
void ExpressionLoad::collectColumns(std::span<MBS_Body* const> ownBodies) {
    for (MBS_Body* body : ownBodies)
        columnFor(body).needsQ = true;
    for (unsigned j = 0; j < expression->numOfMeasures; ++j) {
        MBS_Measure* measure = expression->measures[j];
        for (MBS_Body* body : measure->measureBodies) {
            Column& column = columnFor(body);
            column.needsQ |= measure->measureOrder <= 1;
            column.needsQd |= measure->measureOrder == 1;
            if (parts.empty() || parts.back().body != body || parts.back().j != j)
                parts.push_back({body, measure, j});
        }
    }
    std::erase_if(columns, [](const Column& column) { return !column.needsQ; });
}

// Sorts columns, and parts with them, by body.
void ExpressionLoad::numberColumns() {
    std::ranges::sort(columns, {}, &Column::bodyIndex);
    const auto indexOf = [](const Part& part) { return part.body->bodyIndex; };
    std::ranges::stable_sort(parts, {}, indexOf);
    for (Column& column : columns) {
        const auto first = std::ranges::lower_bound(parts, column.bodyIndex, {}, indexOf);
        const auto end = std::ranges::upper_bound(parts, column.bodyIndex, {}, indexOf);
        column.firstPart = static_cast<unsigned>(first - parts.begin());
        column.endOfParts = static_cast<unsigned>(end - parts.begin());
        column.firstBlock = numOfBlocks;
        numOfBlocks += column.needsQd ? 2 : 1;
        measureRow.resize(std::max<std::size_t>(measureRow.size(), column.numOfDof));
    }
}

ExpressionLoad::Column& ExpressionLoad::columnFor(MBS_Body* body) {
    const auto found = std::ranges::find(columns, body, &Column::body);
    if (found != columns.end())
        return *found;
    return columns.emplace_back(
        Column{.body = body, .bodyIndex = body->bodyIndex, .numOfDof = body->getNumOfDof()});
}

void ExpressionLoad::fetchAhead(unsigned step, bool isForBlocks) const {
    if (step == 1) {
        fetch(expression.get(), sizeof(MBS_FunctionExpression));
        fetch(unitVector.get(), sizeof(MBS_3DUnitVector_BodyBody));
        if (!isForBlocks)
            return;
        fetch(columns.data(), columns.size() * sizeof(Column));
        fetch(parts.data(), parts.size() * sizeof(Part));
        fetch(measureRow.data(), measureRow.size() * sizeof(double));
        fetch(measureDerivatives, 1);
        return;
    }
    fetch(expression->evaluator.get(), evaluatorBytes);
    fetch(expression->meaValues.data(), 1);
    for (unsigned k = 0; isForBlocks && k < parts.size(); ++k)
        fetch(parts[k].measure, measureBytes);
}

void ExpressionLoad::evaluate(double t, const P* q, const P* qd) {
    value = expression->getValue(t);
    areMeasureDerivativesCurrent = false; // a residual alone doesn't need them
    unitVector->getUnitVector(q, qd, currentDirection);
}

ExpressionLoad::Mat37 ExpressionLoad::derivative(By by, double t, const P* q, const P* qd, const P* qdd,
                                                 const C* multipliers, const Column& column) {
    const unsigned x = column.bodyIndex;
    if (!areMeasureDerivativesCurrent && !parts.empty())
        expression->updateMeasureDerivatives(t);
    areMeasureDerivativesCurrent = true;
    const auto row = std::span(measureRow).first(column.numOfDof);
    Mat<1, 7> g;
    for (unsigned k = column.firstPart; k < column.endOfParts; ++k) {
        MBS_Measure& measure = *parts[k].measure;
        std::ranges::fill(row, 0.0); // some measures leave their row
        if (by == By::Q)
            measure.getMeasure_q(t, q, qd, qdd, multipliers, x, row);
        else
            measure.getMeasure_qd(t, q, qd, qdd, multipliers, x, row);
        g += measureDerivatives[parts[k].j] * Mat<1, 7>::from(row.data());
    }
    Mat37 D;
    if (by == By::Q)
        unitVector->getUnitVector_q(q, qd, x, D);
    else
        unitVector->getUnitVector_qd(q, qd, x, D);
    D *= value;
    return D += currentDirection * g;
}

bool ExpressionLoad::parameterDerivative(double t, const P* q, const P* qd, const std::string& label,
                                         Vec3& result) {
    std::string wanted = label;
    toLowerCase(wanted);
    const auto& parameters = expression->parameters;
    const auto found = std::ranges::find(parameters, wanted, [](const auto* p) { return p->label; });
    if (found == parameters.end())
        return false;
    expression->updateParameterDerivatives(t);
    unitVector->getUnitVector(q, qd, currentDirection);
    result = expression->parDerivatives->data[found - parameters.begin()] * currentDirection;
    return true;
}

} // namespace velmora
