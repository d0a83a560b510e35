#pragma once

#include "velmora/fe_import/FeLib_FeNode.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

class FeLib_FeModes;
class FeLib_FeNodeContainer;
class FeLib_MtxContent;
class MBM_GeneralDenseMatrix;

/// Root of what makes the matrices of a flexible body from imported data.
class VELMORA_EXPORT FeLib_FlexBodyConverter : public FeLib_Item {
  public:
    ~FeLib_FlexBodyConverter() override;
    std::string getClassName() const override { return "FeLib_FlexBodyConverter"; }

    /// Makes `matrixSet`; entries 1 and 2 on demand alone.
    virtual bool convert(bool computeWtf, bool computeWff);
    virtual bool isCenterOfMassValid() { return true; }

    const FeLib_FeNodeContainer* nodeList = nullptr; ///< not owned
    FeLib_FeModes* modes = nullptr;                  ///< not owned
    std::vector<double> dampingRatios;               ///< per mode; the last one serves all further modes
    int renormalizationMode = 1;
    /// In the order of `matrixExtensions`, with M modes: total mass 1 x 1; coupling of translation and
    /// deformation 3M x M; coupling of deformation and deformation 3M x 3M; coupling of rotation and
    /// deformation 3 x 3M; modal mass; inertia of the undeformed body; modal stiffness; modal damping. Null
    /// where there is none.
    std::array<std::unique_ptr<MBM_GeneralDenseMatrix>, 8> matrixSet;
    std::vector<std::string> matrixExtensions{".mass", ".Wtf",    ".Wff",  ".Wrf",
                                              ".Mred", ".Itt_tt", ".Kred", ".Dred"};

  protected:
    explicit FeLib_FlexBodyConverter(std::vector<double> ratios);
    FeLib_FlexBodyConverter(const FeLib_FlexBodyConverter&) = delete;
    FeLib_FlexBodyConverter& operator=(const FeLib_FlexBodyConverter&) = delete;
};

/// Makes the matrices from the invariants of a modal file, all in the units of the file, and brings modes of
/// unit modal mass to unit modal stiffness: q_new = omega q_old with the circular frequency omega.
class VELMORA_EXPORT FeLib_MtxConverter : public FeLib_FlexBodyConverter {
  public:
    /// The content must outlive the converter. Modes without a damping ratio, given or inherited from the one
    /// before, are undamped.
    FeLib_MtxConverter(FeLib_MtxContent* mtxContent, std::vector<double> ratios);
    ~FeLib_MtxConverter() override;
    std::string getClassName() const override { return "FeLib_MtxConverter"; }

    /// To be called once on a content, whose mode shapes it scales. False if the modal mass, the inertia or
    /// the modal stiffness is missing. All other errors leave a text, and the conversion goes on.
    bool convert(bool computeWtf, bool computeWff) override;
    /// Always true; a centre of mass away from the origin leaves a text.
    bool isCenterOfMassValid() override;
    /// False, with texts, if modal mass, modal stiffness or inertia isn't sound or has not the size that the
    /// number of modes asks for.
    bool isValid();
    /// Number of mode labels; 0 for null.
    static std::uint32_t getNumOfModes(const FeLib_FeModes* feModes);

    FeLib_MtxContent* content;                        ///< not owned
    const MBM_GeneralDenseMatrix* genStiff = nullptr; ///< of the content, not owned

  private:
    void makeWtf();
    void makeWff();
    void makeWrf();
    void makeDamping();
    bool copyFrom(const MBM_GeneralDenseMatrix* source, std::size_t entry, const char* name);
    const MBM_GeneralDenseMatrix* fittingInvariant(unsigned number, std::uint64_t rows, std::uint64_t cols);
    void renormalize();
    bool areFrequenciesPositive();
    void scaleModalMatrices();
    void scaleCouplings();
    void scaleShapes();
    double omega(unsigned mode) const;

    unsigned M = 0; // modes
};

} // namespace velmora
