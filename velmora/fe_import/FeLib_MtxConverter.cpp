// From the invariants of a modal file to the matrices of a flexible body, with M modes of frequency f_j:
//
// (1) Wtf(c M + j, i)       = INVAR5(3 j + c, i)
// (2) Wff(a M + j, b M + i) = -S_ji(a, b), S_ji the rows 3 (j M + i) to 3 (j M + i) + 2 of INVAR9
// (3) Wrf(r, c M + j)       = H_j(r, c), H_j = -B_j - B_j', B_j row j of INVAR8 read row by row
// (4) Dred(j, j)            = 2 omega_j zeta_j, omega_j = 2 pi f_j
//
// Modes of unit modal mass get unit modal stiffness by q_new = omega_j q_old: each mode's share in a matrix
// is divided by its omega_j.

#include "velmora/fe_import/FeLib_MtxConverter.h"

#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_FeNodeList.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_Vector.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

enum Entry : std::size_t { Mass, Wtf, Wff, Wrf, Mred, Itt_tt, Kred, Dred };

constexpr double twoPi = 6.283185307179586;
constexpr double oneByTwoPi = 0.15915494309189535;
constexpr double largestOffset = 0.001; // of the centre of mass, in the length unit of the file

void scale(MBM_GeneralDenseMatrix& matrix, unsigned row, unsigned col, double factor) {
    matrix.setValue(row, col, matrix.getValue(row, col) * factor);
}

} // namespace

FeLib_FlexBodyConverter::FeLib_FlexBodyConverter(std::vector<double> ratios)
    : dampingRatios(std::move(ratios)) {}

FeLib_FlexBodyConverter::~FeLib_FlexBodyConverter() = default;

bool FeLib_FlexBodyConverter::convert(bool /*computeWtf*/, bool /*computeWff*/) {
    return false;
}

FeLib_MtxConverter::FeLib_MtxConverter(FeLib_MtxContent* mtxContent, std::vector<double> ratios)
    : FeLib_FlexBodyConverter(std::move(ratios)),
      content(mtxContent) {}

FeLib_MtxConverter::~FeLib_MtxConverter() = default;

std::uint32_t FeLib_MtxConverter::getNumOfModes(const FeLib_FeModes* feModes) {
    return feModes ? static_cast<std::uint32_t>(feModes->labels.size()) : 0;
}

bool FeLib_MtxConverter::convert(bool computeWtf, bool computeWff) {
    genStiff = content->genStiff.get();
    nodeList = content->nodeList.get();
    modes = content->modes.get();
    M = getNumOfModes(modes);
    for (auto& matrix : matrixSet)
        matrix.reset();
    matrixSet[Mass] = std::make_unique<MBM_GeneralDenseMatrix>(1, 1, content->mass);
    if (computeWtf)
        makeWtf();
    if (computeWff)
        makeWff();
    makeWrf();
    if (!copyFrom(content->getInvariant(6), Mred, "Invariant 6") ||
        !copyFrom(content->getInvariant(7), Itt_tt, "Invariant 7") || !copyFrom(genStiff, Kred, "GENSTIFF"))
        return false;
    makeDamping();
    renormalize();
    return true;
}

// (1)
void FeLib_MtxConverter::makeWtf() {
    const auto* invariant = fittingInvariant(5, 3 * std::uint64_t{M}, M);
    if (!invariant)
        return;
    matrixSet[Wtf] = std::make_unique<MBM_GeneralDenseMatrix>(3 * M, M);
    for (unsigned i = 0; i < M; ++i)
        for (unsigned j = 0; j < M; ++j)
            for (unsigned c = 0; c < 3; ++c)
                matrixSet[Wtf]->setValue(c * M + j, i, invariant->getValue(3 * j + c, i));
}

// (2)
void FeLib_MtxConverter::makeWff() {
    const auto* invariant = fittingInvariant(9, 3 * std::uint64_t{M} * M, 3);
    if (!invariant)
        return;
    matrixSet[Wff] = std::make_unique<MBM_GeneralDenseMatrix>(3 * M, 3 * M);
    for (unsigned j = 0; j < M; ++j)
        for (unsigned i = 0; i < M; ++i)
            for (unsigned a = 0; a < 3; ++a)
                for (unsigned b = 0; b < 3; ++b)
                    matrixSet[Wff]->setValue(a * M + j, b * M + i,
                                             -invariant->getValue(3 * (j * M + i) + a, b));
}

// (3)
void FeLib_MtxConverter::makeWrf() {
    const auto* invariant = fittingInvariant(8, M, 9);
    if (!invariant)
        return;
    matrixSet[Wrf] = std::make_unique<MBM_GeneralDenseMatrix>(3, 3 * M);
    for (unsigned j = 0; j < M; ++j)
        for (unsigned r = 0; r < 3; ++r)
            for (unsigned c = 0; c < 3; ++c)
                matrixSet[Wrf]->setValue(
                    r, c * M + j, -invariant->getValue(j, 3 * r + c) - invariant->getValue(j, 3 * c + r));
}

// (4). Without a stiffness of the same size, which isValid reports, nothing has shown that M x M is sane.
void FeLib_MtxConverter::makeDamping() {
    if (M == 0 || genStiff->rows != M || genStiff->cols != M)
        return;
    matrixSet[Dred] = std::make_unique<MBM_GeneralDenseMatrix>(M, M, 0.0);
    for (unsigned j = 0; j < M && !dampingRatios.empty(); ++j) {
        const double zeta = dampingRatios[std::min<std::size_t>(j, dampingRatios.size() - 1)];
        matrixSet[Dred]->setValue(j, j, 2.0 * omega(j) * zeta);
    }
}

bool FeLib_MtxConverter::copyFrom(const MBM_GeneralDenseMatrix* source, std::size_t entry, const char* name) {
    if (!source) {
        appendErrorString(std::string("FeLib_MtxConverter: ") + name + " missing!");
        return false;
    }
    matrixSet[entry] = std::make_unique<MBM_GeneralDenseMatrix>(*source);
    return true;
}

// Null, with a text, if the invariant is missing or has another size.
const MBM_GeneralDenseMatrix* FeLib_MtxConverter::fittingInvariant(unsigned number, std::uint64_t rows,
                                                                   std::uint64_t cols) {
    const auto* invariant = content->getInvariant(number);
    const std::string name = "FeLib_MtxConverter: Invariant " + std::to_string(number);
    if (!invariant) {
        appendErrorString(name + " missing!");
        return nullptr;
    }
    if (invariant->rows != rows || invariant->cols != cols) {
        appendErrorString(name + " has wrong dimensions!");
        return nullptr;
    }
    return invariant;
}

void FeLib_MtxConverter::renormalize() {
    if (!matrixSet[Mred]->isUnitMatrix()) {
        if (!matrixSet[Kred]->isUnitMatrix())
            appendErrorString("FeLib_MtxConverter: Could not perform Renormalization, please supply Mred or "
                              "Kred as Identitymatrix!");
        return;
    }
    if (!areFrequenciesPositive())
        return;
    scaleModalMatrices();
    scaleCouplings();
    scaleShapes();
}

// Rigid modes left in the file have no stiffness that could be made one.
bool FeLib_MtxConverter::areFrequenciesPositive() {
    for (unsigned j = 0; j < M; ++j)
        if (!(omega(j) > 0.0) || !std::isfinite(1.0 / (omega(j) * omega(j)))) {
            appendErrorString("FeLib_MtxConverter: Could not perform Renormalization, frequency of mode " +
                              std::to_string(j + 1) + " is not positive!");
            return false;
        }
    return true;
}

void FeLib_MtxConverter::scaleModalMatrices() {
    const unsigned numOfFrequencies = modes && modes->frequencies ? modes->frequencies->size : 0;
    MBM_GeneralDenseMatrix& mass = *matrixSet[Mred];
    if (mass.cols != numOfFrequencies)
        appendErrorString("FeLib_MtxConverter: Could not renormalize Mred, invalid dimensions!");
    MBM_GeneralDenseMatrix& stiffness = *matrixSet[Kred];
    for (unsigned j = 0; j < M; ++j) {
        const double omegaSquared = omega(j) * omega(j);
        if (mass.cols == numOfFrequencies)
            mass.setValue(j, j, 1.0 / omegaSquared);
        if (j < std::min(stiffness.rows, stiffness.cols))
            scale(stiffness, j, j, 1.0 / omegaSquared);
        if (matrixSet[Dred])
            scale(*matrixSet[Dred], j, j, 1.0 / omegaSquared);
    }
}

// Wff and Wrf are symmetric in their blocks: what stands below the diagonal of blocks rules.
void FeLib_MtxConverter::scaleCouplings() {
    for (unsigned j = 0; j < M; ++j) {
        const double sj = 1.0 / omega(j);
        for (unsigned i = 0; i < M; ++i) {
            const double sij = sj / omega(i);
            for (unsigned a = 0; a < 3; ++a) {
                if (matrixSet[Wtf])
                    scale(*matrixSet[Wtf], a * M + j, i, sij);
                for (unsigned b = 0; matrixSet[Wff] && b <= a; ++b)
                    scale(*matrixSet[Wff], a * M + j, b * M + i, sij);
                for (unsigned b = 0; matrixSet[Wff] && b < a; ++b)
                    matrixSet[Wff]->setValue(b * M + i, a * M + j,
                                             matrixSet[Wff]->getValue(a * M + j, b * M + i));
            }
        }
        for (unsigned r = 0; matrixSet[Wrf] && r < 3; ++r)
            for (unsigned c = 0; c <= r; ++c) {
                scale(*matrixSet[Wrf], r, c * M + j, sj);
                matrixSet[Wrf]->setValue(c, r * M + j, matrixSet[Wrf]->getValue(r, c * M + j));
            }
    }
}

void FeLib_MtxConverter::scaleShapes() {
    if (!modes || !modes->shapes)
        return;
    MBM_GeneralDenseMatrix& phi = *modes->shapes;
    for (unsigned j = 0; j < std::min(M, phi.cols); ++j)
        for (unsigned row = 0; row < phi.rows; ++row)
            scale(phi, row, j, oneByTwoPi / modes->frequencies->data[j]);
}

double FeLib_MtxConverter::omega(unsigned mode) const {
    return twoPi * modes->frequencies->data[mode];
}

bool FeLib_MtxConverter::isCenterOfMassValid() {
    if (std::ranges::any_of(content->centerOfMass, [](double x) { return std::abs(x) > largestOffset; }))
        appendErrorString("FeLib_MtxConverter: Center of mass is not in the origin! Converting continued!");
    return true;
}

bool FeLib_MtxConverter::isValid() {
    bool isSound = isCenterOfMassValid();
    if (!isSound)
        appendErrorString("FeLib_MtxConverter: Function isCenterOfMassValid returned false!");
    if (matrixSet[Mred] && matrixSet[Mred]->errorCode != 0) {
        appendErrorString(matrixSet[Mred]->getErrorString());
        isSound = false;
    }
    for (const auto& [entry, size] : {std::pair(Mred, M), {Itt_tt, 3u}, {Kred, M}}) {
        const auto& matrix = matrixSet[entry];
        if (!matrix || matrix->rows != size || matrix->cols != size) {
            appendErrorString("FeLib_MtxConverter: " + matrixExtensions[entry].substr(1) +
                              " has wrong dimensions!");
            isSound = false;
        }
    }
    return isSound;
}

} // namespace velmora
