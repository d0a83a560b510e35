#pragma once

#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/measures/MBS_MeasureTypes.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>
#include <array>
#include <gmock/gmock.h>

namespace velmora::test {

using KeyList = std::vector<std::pair<const char*, std::string>>;

/// Three rigid bodies "one", "two", "three", and measures made by the table of types.
class MeasureBench : public ModelFixture {
  protected:
    MeasureBench() {
        addRigidBody(data, "one");
        addRigidBody(data, "two",
                     {{"LocationCenterMass", "-0.4, 0.7, 0.2"},
                      {"OrientationPAI", "0, 1, 0, -0.6, 0, 0.8, 0.8, 0, 0.6"}});
        addRigidBody(data, "three", {{"LocationCenterMass", "1, 1, 1"}});
        build();
    }

    const MBS_ModelLookUp& lookUp() const { return dynamic_cast<const MBS_ModelLookUp&>(*model); }

    /// `choice`: type, "ground" or "body", mode and coordinate, joined by blanks; "-" for an empty one.
    std::unique_ptr<MBS_Measure> make(const std::string& choice, const KeyList& keys) {
        IO_DataModelBlock* block = addBlock(data, "Measure", "", "measure", {});
        for (const auto& [key, value] : keys)
            block->addKeyValue(key, value);
        for (const auto& row : MBS_measureChoices()) {
            const auto text = [](std::string_view part) { return part.empty() ? "-" : std::string(part); };
            const std::string name = std::string(row.type) + (row.isToGround ? " ground " : " body ") +
                                     text(row.mode) + " " + text(row.coordinate);
            if (name != choice)
                continue;
            if (!block->isKeyInBlock("BodyIDs"))
                block->addKeyValue("BodyIDs", row.isToGround ? "one, 0" : "one, two");
            block->addKeyValue("MeasureCoordinate", std::string(row.coordinate));
            return row.create(block, model.get(), lookUp());
        }
        ADD_FAILURE() << "no measure is called " << choice;
        return nullptr;
    }

    void update(MBS_Measure& m, State& s) {
        model->updateMatricesForEquationOfMotion(s.t, &s.q, &s.qd, &s.qdd);
        m.updateMeasure(s.t, &s.q, &s.qd, &s.qdd);
    }
    double valueAt(MBS_Measure& m, State& s) {
        update(m, s);
        return m.measureValue;
    }
};

} // namespace velmora::test
