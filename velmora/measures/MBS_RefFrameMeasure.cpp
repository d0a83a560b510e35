#include "velmora/measures/MBS_RefFrameMeasure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>

namespace velmora {

MBS_RefFrameMeasure::MBS_RefFrameMeasure(IO_DataModelBlock* block, MBS_Model* owner,
                                         const MBS_ModelLookUp& lookUp)
    : MBS_Measure(block, owner) {
    if (isErrorOccured())
        return;
    std::vector<std::string> ids;
    block->getValue("BodyIDs", &ids);
    if (reportBlockErrors(*block))
        return;
    const std::string id = ids.empty() ? "" : ids[0];
    MBS_Body* body = lookUp.getBodyByUUID(id);
    if (!body) {
        appendErrorString("ERROR: Body not found using bodyID: " + id + "!\n");
        return;
    }
    addBody(*body);
    bodyIndex = body->bodyIndex;
}

void MBS_RefFrameMeasure::getMeasure_q(double, const P*, const P*, const P*, const C*, unsigned, Row row) {
    std::ranges::fill(row, 0.0);
}

void MBS_RefFrameMeasure::getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned, Row row) {
    std::ranges::fill(row, 0.0);
}

void MBS_RefFrameMeasure::getMeasure_qdd(double, const P*, const P*, const P*, const C*, unsigned, Row row) {
    std::ranges::fill(row, 0.0);
}

bool MBS_RefFrameMeasure::startRow(unsigned body, Row row) const {
    std::ranges::fill(row, 0.0);
    return body == bodyIndex;
}

void MBS_RefFrameMeasure::setRow(Row row, const Vec3& trans, const Vec4& rot) {
    trans.to(row.data());
    rot.to(row.data() + 3);
}

Vec3 MBS_RefFrameMeasure::transOf(const P* x) const {
    return Vec3::from(x->bodyData(bodyIndex));
}

Vec4 MBS_RefFrameMeasure::rotOf(const P* x) const {
    return Vec4::from(x->bodyData(bodyIndex) + 3);
}

} // namespace velmora
