#include "velmora/forces/ExpressionLoad.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/expressions/MBS_FunctionExpression.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/measures/MBS_Measure.h"

#include <algorithm>

namespace velmora {

ExpressionLoad::ExpressionLoad(MBS_Model* model, const MBS_ModelLookUp& lookUp, const std::string& text,
                               std::span<MBS_Body* const> ownBodies)
    : expression(std::make_unique<MBS_FunctionExpression>(model, lookUp, text)) {
    collectColumns(ownBodies);
    std::ranges::sort(columns, {}, [](const Column& column) { return column.body->bodyIndex; });
    for (Column& column : columns) {
        measureRow.resize(std::max<std::size_t>(measureRow.size(), column.body->getNumOfDof()));
        column.firstBlock = numOfBlocks;
        numOfBlocks += column.needsQd ? 2 : 1;
    }
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
        const MBS_Measure& measure = *expression->measures[j];
        for (MBS_Body* body : measure.measureBodies) {
            Column& column = columnFor(body);
            column.needsQ |= measure.measureOrder <= 1;
            column.needsQd |= measure.measureOrder == 1;
            if (column.measures.empty() || column.measures.back() != j)
                column.measures.push_back(j);
        }
    }
    std::erase_if(columns, [](const Column& column) { return !column.needsQ; });
}

ExpressionLoad::Column& ExpressionLoad::columnFor(MBS_Body* body) {
    const auto found = std::ranges::find(columns, body, &Column::body);
    return found != columns.end() ? *found : columns.emplace_back(Column{body, false, false, {}, 0});
}

void ExpressionLoad::evaluate(double t, const P* q, const P* qd) {
    value = expression->getValue(t);
    areMeasureDerivativesCurrent = false; // a residual alone doesn't need them
    unitVector->getUnitVector(q, qd, currentDirection);
}

ExpressionLoad::Mat37 ExpressionLoad::derivative(By by, double t, const P* q, const P* qd, const P* qdd,
                                                 const C* multipliers, const Column& column) {
    const unsigned x = column.body->bodyIndex;
    if (!areMeasureDerivativesCurrent)
        expression->updateMeasureDerivatives(t);
    areMeasureDerivativesCurrent = true;
    const auto row = std::span(measureRow).first(column.body->getNumOfDof());
    Mat<1, 7> g;
    for (const unsigned j : column.measures) {
        MBS_Measure& measure = *expression->measures[j];
        std::ranges::fill(row, 0.0); // some measures leave their row
        if (by == By::Q)
            measure.getMeasure_q(t, q, qd, qdd, multipliers, x, row);
        else
            measure.getMeasure_qd(t, q, qd, qdd, multipliers, x, row);
        g += expression->meaDerivatives->data[j] * Mat<1, 7>::from(row.data());
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
