#include "velmora/external_forces/ExtSubForce.h"

#include "velmora/forces/LoadBlocks.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"
#include "velmora/platform/FileSystem.h"

#include <algorithm>

namespace velmora {

std::string ExtSubForceState::build(IO_DataModelBlock& block, const MBS_ModelLookUp& lookUp,
                                    const char* className, const std::vector<MBS_Body*>& bodies) {
    Vec3 points[2];
    const bool hasParameters = block.isKeyInBlock("Path2Par");
    block.getValue("Path2Dll", &dllPath, IO_ValueCode::FilePath);
    if (hasParameters)
        block.getValue("Path2Par", &parameterPath, IO_ValueCode::FilePath);
    for (std::size_t i = 0; i < bodies.size(); ++i)
        block.getValue("PointOfApplication_Body" + std::to_string(i + 1), points[i].data.data(),
                       IO_ValueCode::DoubleVector3);
    readMeasures(block, lookUp);
    const std::string prefix = std::string("ERROR in ") + className + ": path to ";
    if (!canOpenForReading(dllPath))
        return prefix + "dll does not exist!";
    if (hasParameters && !canOpenForReading(parameterPath))
        return prefix + "force parameter file does not exist!";
    if (block.isErrorOccured()) {
        std::string text;
        block.getErrorString(&text);
        return text;
    }
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        const double* q = bodies[i]->initialPositions.data();
        localPoints[i] = transposeTimes(A(Vec4::from(q + 3)), points[i] - Vec3::from(q));
    }
    library =
        std::make_unique<ExtSubLibrary>(dllPath, static_cast<unsigned>(bodies.size()), numOfMeasures > 0);
    if (library->error.empty())
        library->create(numOfMeasures, parameterPath);
    return library->error;
}

void ExtSubForceState::readMeasures(IO_DataModelBlock& block, const MBS_ModelLookUp& lookUp) {
    for (; block.isKeyInBlock("Measure_" + std::to_string(numOfMeasures)); ++numOfMeasures) {
        std::string label;
        block.getValue("Measure_" + std::to_string(numOfMeasures), &label, IO_ValueCode::String);
        if (MBS_Measure* measure = lookUp.getMeasureByLabel(label))
            measures.push_back(measure);
    }
    measureValues.assign(numOfMeasures, 0.0);
    for (const MBS_Measure* measure : measures)
        for (const MBS_Body* body : measure->measureBodies)
            measureRow.resize(std::max<std::size_t>(measureRow.size(), body->getNumOfDof()));
}

void ExtSubForceState::refreshMeasures() {
    for (std::size_t k = 0; k < measures.size(); ++k)
        measureValues[k] = measures[k]->measureValue;
}

ExtSubForceState::Derivatives ExtSubForceState::derivatives(ExtSubBy by, unsigned body, double t, const P* q,
                                                            const P* qd, const P* qdd, const C* multipliers,
                                                            const MBS_Body& column) {
    Derivatives sum;
    refreshMeasures();
    for (std::size_t k = 0; k < measures.size(); ++k) {
        if (std::ranges::find(measures[k]->measureBodies, &column) == measures[k]->measureBodies.end())
            continue;
        const auto row = std::span(measureRow).first(column.getNumOfDof());
        std::ranges::fill(row, 0.0); // some measures leave their row
        if (by == ExtSubBy::Q)
            measures[k]->getMeasure_q(t, q, qd, qdd, multipliers, column.bodyIndex, row);
        else
            measures[k]->getMeasure_qd(t, q, qd, qdd, multipliers, column.bodyIndex, row);
        const auto dm = Mat<1, 7>::from(row.data());
        const ExtSubVectors d =
            library->derivatives(body, t, measureValues.data(), static_cast<std::uint32_t>(k));
        sum.force += d.force * dm;
        sum.torque += d.torque * dm;
    }
    return sum;
}

bool ExtSubForceState::dependsOn(const MBS_Body& body, unsigned order) const {
    return std::ranges::any_of(measures, [&](const MBS_Measure* m) {
        return m->measureOrder == order &&
               std::ranges::find(m->measureBodies, &body) != m->measureBodies.end();
    });
}

void fillBodyFixed(MBS_GeneralBodyBodyMatrix& block, const MBS_BodyCommons& commons, const Vec3& u,
                   const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) {
    Mat<3, 7> D = commons.A * d.force;
    Mat<4, 7> R = transposeTimes(commons.Gbar(), d.torque + skew(u) * d.force);
    if (own) {
        addRotational(D, J(commons.p, own->force));
        addRotational(R, 2.0 * S(own->torque + cross(u, own->force))); // Gbar(e)' w = 2 S(w) e
    }
    setRows(block, D, R);
}

void fillSpaceFixed(MBS_GeneralBodyBodyMatrix& block, const MBS_BodyCommons& commons, const Vec3& u,
                    const ExtSubForceState::Derivatives& d, const ExtSubVectors* own) {
    Mat<4, 7> R = transposeTimes(commons.G(), d.torque) + transposeTimes(J(commons.p, u), d.force);
    if (own)
        addRotational(R, H(own->torque) + E(own->force, u));
    setRows(block, d.force, R);
}

} // namespace velmora
