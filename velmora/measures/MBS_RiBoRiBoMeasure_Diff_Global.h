#pragma once

#include "velmora/measures/MBS_RiBoRiBoMeasure.h"

namespace velmora {

/// Distance of two points: m = |d| - offset with d = L1 - L2. Below 1e-10 the direction of d counts as zero.
class MBS_RiBoRiBoMeasure_Diff_GlobalDistance : public MBS_RiBoRiBoMeasure_Difference {
  public:
    /// Reads "MeasureLocation_Body1", "MeasureLocation_Body2" (3 each, global, in the initial configuration)
    /// and the optional flag "UseInitialValueAsOffset".
    MBS_RiBoRiBoMeasure_Diff_GlobalDistance(IO_DataModelBlock* block, MBS_Model* owner,
                                            const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Diff_GlobalDistance"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasureDot_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                         Row row) override;
    void getMeasureLe_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned constraint,
                        MBS_GeneralBodyBodyMatrix& block, unsigned rowBody, unsigned colBody) override;

  private:
    /// Direction n = d / |d|, and 1 / |d| in P = dn/dd = (1 - n n') / |d|.
    struct Line {
        Vec3 n;
        double inverseDistance = 0.0;

        Vec3 turn(const Vec3& w) const { return inverseDistance * (w - dot(n, w) * n); } // P w
    };
    /// All zero for points that coincide.
    Line lineOf(const P* q) const;

    double distance = 0.0; // |d| of the last update
    bool useInitialValueAsOffset = false;
    double offset = 0.0;
};

/// Rate of that distance: m = n . (v1 - v2). Below a distance of 1e-6 the last direction n holds on.
class MBS_RiBoRiBoMeasure_Diff_GlobalVel : public MBS_RiBoRiBoMeasure_Difference {
  public:
    /// Reads "MeasureLocation_Body1" and "MeasureLocation_Body2" (3 each, global, in the initial
    /// configuration).
    MBS_RiBoRiBoMeasure_Diff_GlobalVel(IO_DataModelBlock* block, MBS_Model* owner,
                                       const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Diff_GlobalVel"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;
    void exchangeHistory(MBS_History& history) override;

  private:
    /// Takes |d| and, at a distance, n over from the state.
    void updateDirection(const P* q);

    double distance = 0.0;
    Vec3 direction; // n
};

} // namespace velmora
