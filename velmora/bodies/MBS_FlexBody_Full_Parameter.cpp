#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"

#include "velmora/fe_import/FeLib_AdamsMtxFileReader.h"
#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/fe_import/FeLib_MtxConverter.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_StructuredMatrices.h"
#include "velmora/matrix/MBM_Vector.h"
#include "velmora/model/MBS_Math.h"

#include <algorithm>

namespace velmora {

namespace {

// Places in the converter's list of matrices.
enum Entry : std::size_t {
    EntryMass,
    EntryWtf,
    EntryWff,
    EntryWrf,
    EntryMred,
    EntryItt,
    EntryKred,
    EntryDred
};

std::vector<double> diagonal(const MBM_GeneralDenseMatrix& matrix) {
    std::vector<double> d(matrix.rows);
    for (unsigned i = 0; i < matrix.rows; ++i)
        d[i] = matrix.getValue(i, i);
    return d;
}

// At least one mode, and a frequency for each.
bool hasModes(const FeLib_MtxContent& content) {
    const unsigned M = FeLib_MtxConverter::getNumOfModes(content.modes.get());
    return M > 0 && content.modes->frequencies && content.modes->frequencies->size >= M;
}

} // namespace

MBS_FlexBody_Full_Parameter::MBS_FlexBody_Full_Parameter(IO_DataModelBlock* block) {
    std::string path;
    if (readKeys(*block, path))
        readModalFile(path);
}

MBS_FlexBody_Full_Parameter::~MBS_FlexBody_Full_Parameter() = default;

bool MBS_FlexBody_Full_Parameter::readKeys(IO_DataModelBlock& block, std::string& path) {
    block.getValue("Is_Itf_active", &isItfActive);
    block.getValue("Is_QuadraticTermOF_Itt_active", &isQuadraticTermOfIttActive);
    block.getValue("Path2MtxFile", &path, IO_ValueCode::String);
    if (takeErrors(block))
        return false;
    MBM_GeneralDenseMatrix axes(3, 3, 0.0);
    block.getValue("LocationCenterMass", location.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("OrientationPAI", axes.data, IO_ValueCode::DoubleMatrix3x3);
    MBS_Math::performOrthonormalization(&axes);
    orientation = Mat3::from(axes.data);
    block.getValue("InitialVelocityVector", initialVelocity.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("InitialOmegaVector", initialOmega.data.data(), IO_ValueCode::DoubleVector3);
    readDampingRatios(block);
    return !takeErrors(block);
}

// One number per piece between commas; a piece that is no number is reported as one of an array.
void MBS_FlexBody_Full_Parameter::readDampingRatios(IO_DataModelBlock& block) {
    const char* const key = "GlobalDampingFactor";
    std::string text;
    block.getValue(key, &text, IO_ValueCode::String);
    if (!block.isKeyInBlock(key))
        return;
    dampingRatios.assign(static_cast<std::size_t>(std::ranges::count(text, ',')) + 1, 0.0);
    block.getValueArray(key, dampingRatios.data(), static_cast<unsigned>(dampingRatios.size()));
}

bool MBS_FlexBody_Full_Parameter::takeErrors(const IO_DataModelBlock& block) {
    if (!block.isErrorOccured())
        return false;
    std::string text;
    block.getErrorString(&text);
    errorString += text;
    return true;
}

bool MBS_FlexBody_Full_Parameter::readModalFile(const std::string& path) {
    mtxContent = std::make_unique<FeLib_MtxContent>();
    FeLib_AdamsMtxFileReader reader(path);
    if (!reader.readMtxFile(mtxContent.get()) || !reader.errorString.empty()) {
        errorString += reader.errorString;
        return false;
    }
    FeLib_MtxConverter converter(mtxContent.get(), dampingRatios);
    const bool isWithModes = hasModes(*mtxContent);
    if (isWithModes)
        converter.convert(isItfActive, isQuadraticTermOfIttActive);
    if (!converter.errorString.empty()) {
        errorString += converter.errorString;
        return false;
    }
    if (!isWithModes || !converter.isValid()) {
        errorString += "Flex body matrices are not valid! Please check mtx-file!\n";
        return false;
    }
    takeMatrices(converter);
    return true;
}

void MBS_FlexBody_Full_Parameter::takeMatrices(const FeLib_MtxConverter& converter) {
    const auto& matrices = converter.matrixSet;
    const FeLib_FeModes& modes = *mtxContent->modes;
    numOfModes = FeLib_MtxConverter::getNumOfModes(&modes);
    mass = matrices[EntryMass]->getValue(0, 0);
    Mred = diagonal(*matrices[EntryMred]);
    Kred = diagonal(*matrices[EntryKred]);
    Dred = diagonal(*matrices[EntryDred]);
    omegaOfModes.assign(modes.frequencies->data, modes.frequencies->data + numOfModes);
    MBM_Math::vecScaleBy2Pi(numOfModes, omegaOfModes.data());
    Itt_tt = Mat3::from(MBM_SymmetricDenseMatrix(*matrices[EntryItt], "Average").data);
    takeCouplings(converter);
}

void MBS_FlexBody_Full_Parameter::takeCouplings(const FeLib_MtxConverter& converter) {
    const auto& matrices = converter.matrixSet;
    const unsigned M = numOfModes;
    Wrf.resize(M);
    for (unsigned j = 0; j < M; ++j)
        for (unsigned c = 0; c < 3; ++c)
            for (unsigned r = 0; r < 3; ++r)
                Wrf[j](static_cast<int>(r), static_cast<int>(c)) = matrices[EntryWrf]->getValue(r, c * M + j);
    if (isItfActive) {
        Wtf = std::make_unique<MBM_GeneralDenseMatrix>(M, 3 * M);
        WtfTransposed = std::make_unique<MBM_GeneralDenseMatrix>(M, 3 * M);
        for (unsigned c = 0; c < 3; ++c)
            for (unsigned i = 0; i < M; ++i)
                for (unsigned j = 0; j < M; ++j) {
                    const double E_ij = matrices[EntryWtf]->getValue(c * M + i, j);
                    Wtf->setValue(i, c * M + j, E_ij);
                    WtfTransposed->setValue(j, c * M + i, E_ij);
                }
    }
    if (!isQuadraticTermOfIttActive)
        return;
    const MBM_SymmetricDenseMatrix Wff(*matrices[EntryWff], "Average");
    WffPairSum = std::make_unique<MBM_GeneralDenseMatrix>(M, 6 * M);
    unsigned pair = 0;
    for (const auto& [a, b] : {std::pair(0u, 0u), {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}) {
        for (unsigned i = 0; i < M; ++i)
            for (unsigned j = 0; j < M; ++j)
                WffPairSum->setValue(i, pair * M + j,
                                     Wff.getValue(a * M + i, b * M + j) + Wff.getValue(b * M + i, a * M + j));
        ++pair;
    }
}

// In the order Ixx, Iyy, Izz, Ixy, Ixz, Iyz.
void MBS_FlexBody_Full_Parameter::getInertiaComponents(double* components) const {
    const auto& I = Itt_tt;
    for (const double component : {I(0, 0), I(1, 1), I(2, 2), I(0, 1), I(0, 2), I(1, 2)})
        *components++ = component;
}

} // namespace velmora
