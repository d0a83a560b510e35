#include "velmora/measures/MBS_RiBoRiBoMeasure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>

namespace velmora {

MBS_RiBoRiBoMeasure_Difference::MBS_RiBoRiBoMeasure_Difference(IO_DataModelBlock* block, MBS_Model* owner,
                                                               const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure(block, owner) {
    if (isErrorOccured())
        return;
    std::vector<std::string> ids;
    block->getValue("BodyIDs", &ids);
    if (reportBlockErrors(*block))
        return;
    ids.resize(std::max<std::size_t>(ids.size(), 2));
    for (Body i : {0, 1}) {
        MBS_Body* body = lookUp.getBodyByUUID(ids[i]);
        if (!body) {
            refuse(*block,
                   "ERROR: Body" + std::to_string(i + 1) + " not found using bodyID: " + ids[i] + "!\n");
            return;
        }
        addBody(*body);
        bodyIndices[i] = body->bodyIndex;
    }
}

bool MBS_RiBoRiBoMeasure_Difference::readPoints(IO_DataModelBlock& block) {
    block.getValue("MeasureLocation_Body1", measureLocation1.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("MeasureLocation_Body2", measureLocation2.data.data(), IO_ValueCode::DoubleVector3);
    if (reportBlockErrors(block))
        return false;
    localPoint1 = toLocalPoint(*measureBodies[0], measureLocation1);
    localPoint2 = toLocalPoint(*measureBodies[1], measureLocation2);
    return true;
}

unsigned MBS_RiBoRiBoMeasure_Difference::readComponent(IO_DataModelBlock& block, const std::string& intro) {
    std::string coordinate;
    block.getValue("MeasureCoordinate", &coordinate, IO_ValueCode::String);
    if (reportBlockErrors(block))
        return 0;
    for (unsigned c : {0u, 1u, 2u})
        if (coordinate == std::string(1, "XYZ"[c]))
            return c;
    refuse(block, intro + "MeasureCoordinate <" + coordinate + "> not valid!\n");
    return 0;
}

void MBS_RiBoRiBoMeasure_Difference::getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned,
                                                   Row row) {
    std::ranges::fill(row, 0.0);
}

void MBS_RiBoRiBoMeasure_Difference::getMeasure_qdd(double, const P*, const P*, const P*, const C*, unsigned,
                                                    Row row) {
    std::ranges::fill(row, 0.0);
}

std::optional<MBS_RiBoRiBoMeasure_Difference::Body>
MBS_RiBoRiBoMeasure_Difference::startRow(unsigned bodyIndex, Row row) const {
    std::ranges::fill(row, 0.0);
    for (Body i : {0, 1})
        if (bodyIndices[i] == bodyIndex)
            return i;
    return std::nullopt;
}

void MBS_RiBoRiBoMeasure_Difference::setRow(Row row, const Vec3& trans, const Vec4& rot) {
    trans.to(row.data());
    rot.to(row.data() + 3);
}

MBS_RiBoRiBoMeasure_Difference::Body MBS_RiBoRiBoMeasure_Difference::bodyOf(unsigned bodyIndex) const {
    return bodyIndex == bodyIndices[1] ? 1 : 0;
}

Vec3 MBS_RiBoRiBoMeasure_Difference::transOf(Body i, const P* x) const {
    return Vec3::from(x->bodyData(bodyIndices[i]));
}

Vec4 MBS_RiBoRiBoMeasure_Difference::rotOf(Body i, const P* x) const {
    return Vec4::from(x->bodyData(bodyIndices[i]) + 3);
}

const Mat3& MBS_RiBoRiBoMeasure_Difference::rotation(Body i) const {
    return measureBodyCommons[i]->A;
}

Vec3 MBS_RiBoRiBoMeasure_Difference::pointOf(Body i, const P* q) const {
    return transOf(i, q) + rotation(i) * localPoint(i);
}

Vec3 MBS_RiBoRiBoMeasure_Difference::velocityOf(Body i, const P* q, const P* qd) const {
    return transOf(i, qd) + pointJ(i, q) * rotOf(i, qd);
}

Mat34 MBS_RiBoRiBoMeasure_Difference::pointJ(Body i, const P* x) const {
    return J(rotOf(i, x), localPoint(i));
}

} // namespace velmora
