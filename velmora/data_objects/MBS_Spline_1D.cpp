#include "velmora/data_objects/MBS_Spline_1D.h"

#include "velmora/functions/FL_XYSpline.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/io/IO_FileIO.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/model/MBS_History.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr int zeroClamped = 1;

} // namespace

MBS_Spline_1D::MBS_Spline_1D(IO_DataModelBlock* block, MBS_Model* owner) : MBS_1D_DataObject(block, owner) {
    read(*block);
}

MBS_Spline_1D::~MBS_Spline_1D() = default;

void MBS_Spline_1D::modifyModelElement(IO_DataModelBlock* block) {
    if (!block)
        return;
    MBS_DataObject::modifyModelElement(block);
    read(*block);
}

void MBS_Spline_1D::report(const IO_DataModelBlock& block, const std::string& message) {
    std::string prefix;
    block.getErrorString(&prefix);
    appendErrorString(prefix + message);
}

void MBS_Spline_1D::read(IO_DataModelBlock& block) {
    akimaSpline.reset();
    zeroClampedSpline.reset();
    xData.clear();
    yData.clear();
    numDataPts = 0;
    defaultType = 0;
    if (block.isKeyInBlock("InterpolationType"))
        readInterpolationType(block);
    if (block.isKeyInBlock("NumDataPts"))
        readPoints(block);
    else if (block.isKeyInBlock("PathToSplineData"))
        readPath(block);
    else
        report(block, "ERROR in MBS_Spline_1D: Either define PathToSpline or NumDataPts!");
    if (reportBlockErrors(block) || !readFromFile)
        return;
    IO_FileIO file(pathToSplineData);
    if (!file.fileExists())
        appendErrorString(file.errorString +
                          "ERROR in MBS_Spline_1D: files containing spline data does not exist!");
}

void MBS_Spline_1D::readInterpolationType(IO_DataModelBlock& block) {
    std::string type;
    block.getValue("InterpolationType", &type, IO_ValueCode::String);
    toLowerCase(type);
    if (type == "zcc" || type == "zccspl")
        defaultType = zeroClamped;
    else if (type != "akima" && type != "akispl")
        report(block,
               "ERROR in MBS_Spline_1D: Unknown InterpolationType <" + type + ">! Use akima or zccspl.\n");
}

// A count that the text can't fill isn't allocated; the read refuses it. Without errors alone are there
// points.
void MBS_Spline_1D::readPoints(IO_DataModelBlock& block) {
    readFromFile = false;
    unsigned count = 0;
    block.getValue("NumDataPts", &count);
    if (block.isErrorOccured())
        return; // no count to read by
    for (const auto& [key, data] : {std::pair("XData", &xData), std::pair("YData", &yData)}) {
        std::string text;
        if (block.isKeyInBlock(key))
            block.getValue(key, &text, IO_ValueCode::String);
        data->assign(std::min<std::size_t>(count, text.size() + 1), 0.0);
        block.getValueArray(key, data->data(), count);
    }
    if (!block.isErrorOccured())
        numDataPts = count;
}

void MBS_Spline_1D::readPath(IO_DataModelBlock& block) {
    readFromFile = true;
    block.getValue("PathToSplineData", &pathToSplineData, IO_ValueCode::FilePath);
    block.getValue("NumberOfHeaderLines", &numOfHeaderLines);
    block.getValue("ColumnXData", &columnXData);
    block.getValue("ColumnYData", &columnYData);
}

template <class Spline>
std::unique_ptr<Spline> MBS_Spline_1D::makeSpline() {
    std::unique_ptr<Spline> spline;
    if (readFromFile) {
        spline = std::make_unique<Spline>(pathToSplineData, numOfHeaderLines, columnXData, columnYData);
    } else {
        spline = std::make_unique<Spline>();
        spline->setNewXAndYData(numDataPts, xData.data(), yData.data());
    }
    if (!spline->errorString.empty())
        appendErrorString(spline->errorString);
    return spline;
}

FL_XYSpline* MBS_Spline_1D::getSpline(int splineType) {
    if (splineType == -1)
        splineType = static_cast<int>(defaultType);
    if (splineType == zeroClamped) {
        if (!zeroClampedSpline)
            zeroClampedSpline = makeSpline<FL_XYZeroClampedCubicSpline>();
        return zeroClampedSpline.get();
    }
    if (!akimaSpline)
        akimaSpline = makeSpline<FL_XYCubicAkimaSpline>();
    return akimaSpline.get();
}

void MBS_Spline_1D::exchangeHistory(MBS_History& history) {
    const FL_XYSpline* const splines[] = {akimaSpline.get(), zeroClampedSpline.get()};
    for (const int type : {0, zeroClamped}) {
        int index = splines[type] ? static_cast<int>(splines[type]->lastIndex) : 0;
        history.exchange(index);
        if (index <= 0 && !splines[type])
            continue;
        FL_XYSpline& spline = *getSpline(type);
        const auto numOfSegments = static_cast<int>(spline.numOfPoints);
        spline.lastIndex = static_cast<std::uint64_t>(std::clamp(index, 0, std::max(numOfSegments - 1, 0)));
    }
}

void MBS_Spline_1D::setNewXAndYData(unsigned n, const double* x, const double* y) {
    xData.assign(x, x + n);
    yData.assign(y, y + n);
    numDataPts = n;
    for (FL_XYSpline* spline :
         {static_cast<FL_XYSpline*>(akimaSpline.get()), static_cast<FL_XYSpline*>(zeroClampedSpline.get())}) {
        if (!spline)
            continue;
        spline->setNewXAndYData(n, x, y);
        if (!spline->errorString.empty())
            appendErrorString(spline->errorString);
    }
}

double MBS_Spline_1D::getValue(double x, int splineType) {
    return getSpline(splineType)->getValue(x);
}

double MBS_Spline_1D::getValue(double x) {
    return getValue(x, static_cast<int>(defaultType));
}

double MBS_Spline_1D::getFirstDerivative(double x, int splineType) {
    return getSpline(splineType)->getFirstDerivative(x);
}

double MBS_Spline_1D::getFirstDerivative(double x) {
    return getFirstDerivative(x, static_cast<int>(defaultType));
}

double MBS_Spline_1D::getSecondDerivative(double x, int splineType) {
    return getSpline(splineType)->getSecondDerivative(x);
}

double MBS_Spline_1D::getSecondDerivative(double x) {
    return getSecondDerivative(x, static_cast<int>(defaultType));
}

} // namespace velmora
