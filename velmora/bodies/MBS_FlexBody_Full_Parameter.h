#pragma once

#include "velmora/bodies/MBS_BodyParameter.h"
#include "velmora/matrix/FixedSize.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class FeLib_MtxContent;
class FeLib_MtxConverter;
class IO_DataModelBlock;
class MBM_GeneralDenseMatrix;

/// Constant data of a flexible body with M modes: the keys of its block, and what the modal file gives. The
/// invariants are kept in the order in which the evaluation reads them.
class MBS_FlexBody_Full_Parameter : public MBS_BodyParameter {
  public:
    /// Reads "Is_Itf_active" and "Is_QuadraticTermOF_Itt_active" (bool), "Path2MtxFile" (text),
    /// "LocationCenterMass" (3, global), "OrientationPAI" (3x3, column after column; made orthonormal),
    /// "InitialVelocityVector" (3, global), "InitialOmegaVector" (3, global), "GlobalDampingFactor" (damping
    /// ratios with "," between them), then the modal file. The construction ends at the first error, with
    /// the text of the block, of the reader or of the converter, or "Flex body matrices are not valid! Please
    /// check mtx-file!\n".
    explicit MBS_FlexBody_Full_Parameter(IO_DataModelBlock* block);
    ~MBS_FlexBody_Full_Parameter() override;
    std::string getClassName() const override { return "MBS_FlexBody_Full_Parameter"; }
    double getMass() const override { return mass; }
    void getInertiaComponents(double* components) const override;

    bool isItfActive = false;                ///< coupling of rotation and deformation
    bool isQuadraticTermOfIttActive = false; ///< inertia of second order in the modal coordinates
    unsigned numOfModes = 0;                 ///< M
    double mass = 0.0;
    Vec3 location, initialVelocity, initialOmega; ///< global frame
    Mat3 orientation;                             ///< columns are the axes of the body frame
    Mat3 Itt_tt;                                  ///< inertia of the undeformed body, body frame
    std::vector<Mat3> Wrf;                        ///< C_j, per mode: d Ibar/d eta_j of the undeformed body
    /// M x 3M each: E_0, E_1, E_2, and E_0', E_1', E_2'; null unless `isItfActive`.
    std::unique_ptr<MBM_GeneralDenseMatrix> Wtf, WtfTransposed;
    /// M x 6M: W_ab + W_ba for (a, b) = 00, 11, 22, 01, 02, 12, each symmetric, with W_ab the second
    /// derivative of half of Ibar(a, b); null unless `isQuadraticTermOfIttActive`.
    std::unique_ptr<MBM_GeneralDenseMatrix> WffPairSum;
    std::vector<double> Mred, Kred, Dred; ///< per mode: modal mass, stiffness, damping
    std::vector<double> omegaOfModes;     ///< natural circular frequencies, rad/s
    std::vector<double> dampingRatios;
    std::unique_ptr<FeLib_MtxContent> mtxContent; ///< mode shapes and nodes, shapes in the kernel's scaling

  private:
    bool readKeys(IO_DataModelBlock& block, std::string& path);
    void readDampingRatios(IO_DataModelBlock& block);
    bool takeErrors(const IO_DataModelBlock& block);
    bool readModalFile(const std::string& path);
    void takeMatrices(const FeLib_MtxConverter& converter);
    void takeCouplings(const FeLib_MtxConverter& converter);
};

} // namespace velmora
