#pragma once

#include "velmora/bodies/MBS_Body.h"
#include "velmora/external_forces/ExtSubLibrary.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/measures/MBS_Measure.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// By which coordinates a block derives.
enum class ExtSubBy { Q, Qd };

/// What the forces of user libraries share, for one body or two: keys, library, measures, and the derivatives
/// of the library's vectors, which come from the measures alone:
///
///     dF/dx = sum over k of dF/dm_k dm_k/dx,    x = q or qd of one body; 3x7, and alike for T
struct ExtSubForceState {
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    struct Derivatives {
        Mat<3, 7> force, torque;
    };

    /// Reads "Path2Dll", optional "Path2Par", "PointOfApplication_Body1" (Body2) and "Measure_0",
    /// "Measure_1", ... as far as they go without a gap; a label without a measure is passed over, and
    /// counts. Then loads the library. The text of what failed, or nothing; `className` stands in it.
    std::string build(IO_DataModelBlock& block, const MBS_ModelLookUp& lookUp, const char* className,
                      const std::vector<MBS_Body*>& bodies);

    /// Takes the present values of the measures.
    void refreshMeasures();
    ExtSubVectors vectors(unsigned body, double t) const {
        return library->vectors(body, t, measureValues.data());
    }
    /// Of the vectors on a body by the coordinates of a column body. Refreshes the measures.
    Derivatives derivatives(ExtSubBy by, unsigned body, double t, const P* q, const P* qd, const P* qdd,
                            const C* multipliers, const MBS_Body& column);
    /// Whether a measure of this order reads the body.
    bool dependsOn(const MBS_Body& body, unsigned order) const;

    std::string dllPath, parameterPath;
    std::vector<MBS_Measure*> measures; ///< not owned
    std::uint32_t numOfMeasures = 0;    ///< labels in the block
    std::vector<double> measureValues;
    Vec3 localPoints[2]; ///< u1, u2 in the frames of the bodies
    std::unique_ptr<ExtSubLibrary> library;

  private:
    void readMeasures(IO_DataModelBlock& block, const MBS_ModelLookUp& lookUp);

    std::vector<double> measureRow; // dm/dx, work space for the largest body
};

/// How the derivatives d of force f and torque c on a body, in its own frame, fill a block of its rows. u =
/// point in the frame of the body; `own` = f and c if the block derives by the q of this very body, else
/// null.
///
///     D = A df,  R = Gbar' (dc + u x df);  own: D_e += J(e; f),  R_e += d(Gbar' w)/de, w = c + u x f
void fillBodyFixed(MBS_GeneralBodyBodyMatrix& block, const MBS_BodyCommons& commons, const Vec3& u,
                   const ExtSubForceState::Derivatives& d, const ExtSubVectors* own);
/// The same in the global frame.
///
///     D = df,  R = G' dc + J(e; u)' df;  own: R_e += H(c) + E(f; u)
void fillSpaceFixed(MBS_GeneralBodyBodyMatrix& block, const MBS_BodyCommons& commons, const Vec3& u,
                    const ExtSubForceState::Derivatives& d, const ExtSubVectors* own);
/// Adds a derivative by the Euler parameters of the column body to D or R.
template <int Rows>
void addRotational(Mat<Rows, 7>& target, const Mat<Rows, 4>& part) {
    part.addTo(target.data.data() + 3 * Rows);
}

} // namespace velmora
