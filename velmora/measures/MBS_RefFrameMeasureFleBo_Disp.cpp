// Notation: r, e, eta = translations, Euler parameters and modal coordinates; c = coordinate.
//
// (1) m     = r_c + (A u)_c - R_c - offset + sum of Phi(c, j) eta_j
// (2) dm/dq = [unit vector c, row c of J(e; u), row c of Phi]

#include "velmora/measures/MBS_RefFrameMeasureFleBo_Disp.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_DenseMatrixIO.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_RefFrameMeasureFleBo_Disp::MBS_RefFrameMeasureFleBo_Disp(IO_DataModelBlock* block, MBS_Model* owner,
                                                             const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasure(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    readCoordinate(*block);
    block->getValue("MeasureLocation_Body1", measureLocation.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("MeasureLocation_Body2", referencePoint.data.data(), IO_ValueCode::DoubleVector3);
    useInitialValueAsOffset = readFlag(*block, "UseInitialValueAsOffset");
    readShapes(*block);
    if (isErrorOccured())
        return;
    localPoint = toLocalPoint(*measureBodies[0], measureLocation);
    if (useInitialValueAsOffset)
        offset = measureLocation(coordinateIndex) - referencePoint(coordinateIndex);
}

void MBS_RefFrameMeasureFleBo_Disp::readCoordinate(IO_DataModelBlock& block) {
    std::string coordinate;
    block.getValue("MeasureCoordinate", &coordinate, IO_ValueCode::String);
    const std::string names = "XYZ";
    const std::size_t index = coordinate.size() == 1 ? names.find(coordinate) : std::string::npos;
    if (index != std::string::npos)
        coordinateIndex = static_cast<int>(index);
    else if (block.isKeyInBlock("MeasureCoordinate"))
        appendErrorString("MeasureCoordinate <" + coordinate + "> not valid!\n");
}

void MBS_RefFrameMeasureFleBo_Disp::readShapes(IO_DataModelBlock& block) {
    std::string path;
    block.getValue("ModeShapeFile", &path, IO_ValueCode::String);
    if (reportBlockErrors(block) || isErrorOccured())
        return;
    const MBS_Body& body = *measureBodies[0];
    if (body.isRigidBody())
        return refuse(block, "ERROR: BodyIDs <" + body.uuid + "> not valid!\n");
    MBM_DenseMatrixIO().readMatFromFile(path, modeShapes);
    if (modeShapes.errorCode != 0)
        return appendErrorString(modeShapes.getErrorString());
    if (modeShapes.rows != 3 || modeShapes.cols != body.numFlexDof)
        refuse(block, "ERROR: ModeShapeFile <" + path + "> not valid!\n");
}

// (1)
void MBS_RefFrameMeasureFleBo_Disp::updateMeasure(double, const P* q, const P*, const P*) {
    const Vec3 place = transOf(q) + commons().A * localPoint - referencePoint;
    const double* eta = q->bodyData(bodyIndex) + 7;
    double value = place(coordinateIndex) - offset;
    for (unsigned j = 0; j < modeShapes.cols; ++j)
        value += modeShapes.data[3 * j + static_cast<unsigned>(coordinateIndex)] * eta[j];
    measureValue = value;
}

// (2)
void MBS_RefFrameMeasureFleBo_Disp::getMeasure_q(double, const P* q, const P*, const P*, const C*,
                                                 unsigned body, Row row) {
    if (!startRow(body, row))
        return;
    Vec3 axis;
    axis(coordinateIndex) = 1.0;
    setRow(row, axis, transposeTimes(J(rotOf(q), localPoint), axis));
    for (unsigned j = 0; j < modeShapes.cols; ++j)
        row[7 + j] = modeShapes.data[3 * j + static_cast<unsigned>(coordinateIndex)];
}

} // namespace velmora
