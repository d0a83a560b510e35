#include "tests/measures/MeasureBench.h"
#include "tests/support/AllocationCounter.h"
#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

#include <functional>

namespace velmora::test {

namespace {

using Row7 = std::array<double, 7>;
using Operation = void (MBS_Measure::*)(double, const MBS_ModelPhysicalDofVector*,
                                        const MBS_ModelPhysicalDofVector*, const MBS_ModelPhysicalDofVector*,
                                        const MBS_ModelConstraintDofVector*, unsigned, std::span<double>);

constexpr double untouched = 77.0;
constexpr unsigned numOfBodies = 3;

/// Points and directions of the blocks below, in body frames (R: global frame), and the state's kinematics.
struct Kinematics {
    Kinematics(const State& state, const MBS_ModelLookUp& lookUp) : s(state) {
        for (unsigned i : {0u, 1u}) {
            const MBS_Body& body = *lookUp.getBodies()[i];
            u[i] = transposeTimes(body.rotationMatrix, point[i] - body.position);
            frame[i] = body.rotationMatrix;
        }
    }
    Vec3 trans(const MBS_ModelPhysicalDofVector& x, unsigned i) const { return Vec3::from(x.bodyData(i)); }
    Vec4 rot(const MBS_ModelPhysicalDofVector& x, unsigned i) const { return Vec4::from(x.bodyData(i) + 3); }
    Mat3 rotation(unsigned i) const { return A(rot(s.q, i)); }
    Mat3 rotationRate(unsigned i) const { return rateOfA(rot(s.q, i), rot(s.qd, i)); }
    Vec3 L(unsigned i) const { return trans(s.q, i) + rotation(i) * u[i]; }
    Vec3 v(unsigned i) const { return trans(s.qd, i) + rotationRate(i) * u[i]; }
    Vec3 acceleration() const {
        const Vec4 dp = rot(s.qd, 0);
        return trans(s.qdd, 0) + (rateOfA(dp, dp) + rateOfA(rot(s.q, 0), rot(s.qdd, 0))) * u[0];
    }
    /// Direction of the initial configuration, carried along by a body.
    Vec3 carried(unsigned i, const Vec3& d) const { return rotation(i) * transposeTimes(frame[i], d); }
    Vec3 carriedRate(unsigned i, const Vec3& d) const {
        return rotationRate(i) * transposeTimes(frame[i], d);
    }

    const State& s;
    std::array<Vec3, 2> point = {{{{0.7, -0.3, 0.4}}, {{-0.2, 0.5, 0.9}}}};
    std::array<Vec3, 2> u;
    std::array<Mat3, 2> frame;
    Vec3 R = {{-0.2, 0.5, 0.9}};
    Vec3 l = {{0.6, 0.0, 0.8}}, p1 = {{0.0, 1.0, 0.0}}, p2 = {{0.8, 0.0, -0.6}};
};

using Formula = std::function<double(const Kinematics& k, const Kinematics& base)>;

const KeyList points = {{"MeasureLocation_Body1", "0.7, -0.3, 0.4"},
                        {"MeasureLocation_Body2", "-0.2, 0.5, 0.9"}};
const KeyList vectors = {
    {"MeasureVec", "0.6, 0, 0.8"}, {"MeasurePlaneVec1", "0, 1, 0"}, {"MeasurePlaneVec2", "0.8, 0, -0.6"}};

double spatialX(const Kinematics& k) {
    return dot(k.carried(0, k.l), k.p1);
}
double spatialY(const Kinematics& k) {
    return dot(k.carried(0, k.l), k.p2);
}
double relativeX(const Kinematics& k) {
    return dot(k.carried(0, k.l), k.carried(1, k.p1));
}
double relativeY(const Kinematics& k) {
    return dot(k.carried(0, k.l), k.carried(1, k.p2));
}
double along(const Vec3& v, int c) {
    return v(c);
}

enum Has : unsigned { NoRate = 0, Rate = 1, NoRows = 2 };

/// One class: its value, and, where its rows are known to derive something else, that.
struct Case {
    const char* name;
    const char* choice;
    KeyList keys;
    unsigned order;
    unsigned has;
    Formula value;
    Formula rowsDerive = nullptr;

    friend void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }
};

template <class F>
Formula of(F f) {
    return [f](const Kinematics& k, const Kinematics&) { return f(k); };
}

const std::vector<Case>& cases() {
    static const std::vector<Case> all = {
        {"XDisp", "Translational ground disp X", points, 0, Rate,
         of([](const Kinematics& k) { return along(k.L(0) - k.R, 0); })},
        {"YDisp", "Translational ground disp Y", points, 0, Rate,
         of([](const Kinematics& k) { return along(k.L(0) - k.R, 1); })},
        {"ZDisp", "Translational ground disp Z", points, 0, Rate,
         of([](const Kinematics& k) { return along(k.L(0) - k.R, 2); })},
        {"XYZDisp", "Translational ground disp XYZ", points, 0, NoRate,
         of([](const Kinematics& k) { return norm(k.L(0) - k.R); })},
        {"XVel", "Translational ground vel X", points, 1, NoRate,
         of([](const Kinematics& k) { return along(k.v(0), 0); })},
        {"YVel", "Translational ground vel Y", points, 1, NoRate,
         of([](const Kinematics& k) { return along(k.v(0), 1); })},
        {"ZVel", "Translational ground vel Z", points, 1, NoRate,
         of([](const Kinematics& k) { return along(k.v(0), 2); })},
        {"XYZVel", "Translational ground vel XYZ", points, 1, NoRate,
         of([](const Kinematics& k) { return dot(k.L(0) - k.R, k.v(0)) / norm(k.L(0) - k.R); })},
        {"XAcc", "Translational ground acc X", points, 2, NoRate, of([](const Kinematics& k) {
             return along(transposeTimes(k.rotation(0), k.acceleration() + Vec3{{0, 0, 9810}}), 0);
         }),
         of([](const Kinematics& k) { return along(k.acceleration(), 0); })},
        {"YAcc", "Translational ground acc Y", points, 2, NoRate, of([](const Kinematics& k) {
             return along(transposeTimes(k.rotation(0), k.acceleration() + Vec3{{0, 0, 9810}}), 1);
         }),
         of([](const Kinematics& k) { return along(k.acceleration(), 1); })},
        {"ZAcc", "Translational ground acc Z", points, 2, NoRate, of([](const Kinematics& k) {
             return along(transposeTimes(k.rotation(0), k.acceleration() + Vec3{{0, 0, 9810}}), 2);
         }),
         of([](const Kinematics& k) { return along(k.acceleration(), 2); })},
        {"Angle", "Rotational ground - Angle", vectors, 0, Rate,
         of([](const Kinematics& k) { return std::atan(spatialY(k) / spatialX(k)); }),
         [](const Kinematics& k, const Kinematics& base) {
             return spatialX(base) * spatialY(k) - spatialY(base) * spatialX(k);
         }},
        {"AngleVel", "Rotational ground - AngleVel", vectors, 1, NoRate, of([](const Kinematics& k) {
             const Vec3 rate = k.carriedRate(0, k.l);
             return spatialX(k) * dot(rate, k.p2) - spatialY(k) * dot(rate, k.p1);
         })},
        {"LocalAngleVel",
         "Rotational ground - LocalAngleVel",
         {{"Component", "1"}},
         1,
         NoRows,
         of([](const Kinematics& k) { return along(Gbar(k.rot(k.s.q, 0)) * k.rot(k.s.qd, 0), 1); })},
        {"EP",
         "EP ground - -",
         {{"EulerParameterIndex", "2"}, {"IsStateMeasure", "yes"}},
         0,
         NoRate,
         of([](const Kinematics& k) { return k.rot(k.s.q, 0)(2); })},
        {"EPRate",
         "EP ground - -",
         {{"EulerParameterIndex", "3"}, {"IsStateMeasure", "no"}},
         1,
         NoRate,
         of([](const Kinematics& k) { return k.rot(k.s.qd, 0)(3); })},
        {"Diff_GlobalDistance", "Translational body disp XYZ", points, 0, Rate,
         of([](const Kinematics& k) { return norm(k.L(0) - k.L(1)); })},
        {"Diff_GlobalVel", "Translational body vel XYZ", points, 1, NoRate, of([](const Kinematics& k) {
             return dot(k.L(0) - k.L(1), k.v(0) - k.v(1)) / norm(k.L(0) - k.L(1));
         })},
        {"Diff_x", "Translational body disp X", points, 0, Rate,
         of([](const Kinematics& k) { return along(transposeTimes(k.rotation(0), k.L(1) - k.L(0)), 0); }),
         of([](const Kinematics& k) {
             return along(transposeTimes(k.rotation(0), k.L(1) - k.trans(k.s.q, 0)), 0);
         })},
        {"Diff_z", "Translational body disp Z", points, 0, Rate,
         of([](const Kinematics& k) { return along(transposeTimes(k.rotation(0), k.L(1) - k.L(0)), 2); }),
         of([](const Kinematics& k) {
             return along(transposeTimes(k.rotation(0), k.L(1) - k.trans(k.s.q, 0)), 2);
         })},
        {"Vel_y", "Translational body vel Y", points, 1, NoRate,
         of([](const Kinematics& k) { return along(transposeTimes(k.rotation(0), k.v(1) - k.v(0)), 1); })},
        {"Diff_Angle", "Rotational body - Angle", vectors, 0, Rate,
         of([](const Kinematics& k) { return std::atan2(relativeY(k), relativeX(k)); }),
         [](const Kinematics& k, const Kinematics& base) {
             return relativeX(base) * relativeY(k) - relativeY(base) * relativeX(k);
         }},
        {"Diff_AngleVel", "Rotational body - AngleVel", vectors, 1, NoRate, of([](const Kinematics& k) {
             const Vec3 rate = k.carriedRate(0, k.l), w = k.carried(0, k.l);
             return relativeX(k) * (dot(rate, k.carried(1, k.p2)) + dot(w, k.carriedRate(1, k.p2))) -
                    relativeY(k) * (dot(rate, k.carried(1, k.p1)) + dot(w, k.carriedRate(1, k.p1)));
         })},
    };
    return all;
}

} // namespace

class MeasureClass : public MeasureBench, public testing::WithParamInterface<Case> {
  protected:
    void SetUp() override {
        measure = make(GetParam().choice, GetParam().keys);
        ASSERT_TRUE(measure);
        ASSERT_EQ(measure->getErrorString(), "");
    }

    Row7 row(Operation operation, State& s, unsigned body) {
        Row7 result;
        result.fill(untouched);
        (measure.get()->*operation)(s.t, &s.q, &s.qd, &s.qdd, &s.lambda, body, result);
        return result;
    }

    /// Central differences of `f` by the seven coordinates of a body in x.
    Row7 difference(State& s, MBS_ModelPhysicalDofVector& x, unsigned body,
                    const std::function<double()>& f) {
        constexpr double step = 1.3e-6;
        Row7 result;
        for (unsigned i = 0; i < 7; ++i) {
            double& value = x.bodyData(body)[i];
            const double middle = value;
            value = middle + step;
            update(*measure, s);
            const double above = f();
            value = middle - step;
            update(*measure, s);
            const double below = f();
            value = middle;
            result[i] = (above - below) / (2 * step);
        }
        update(*measure, s);
        return result;
    }

    static void expectNear(const Row7& a, const Row7& b, const char* what) {
        double scale = 1.0;
        for (double x : b)
            scale = std::max(scale, std::abs(x));
        for (unsigned i = 0; i < 7; ++i)
            EXPECT_NEAR(a[i], b[i], 2e-8 * scale) << what << ", coordinate " << i;
    }

    std::unique_ptr<MBS_Measure> measure;
    std::mt19937 random{4711};
};

TEST_P(MeasureClass, HasValueAndRows) {
    const Case& c = GetParam();
    EXPECT_EQ(measure->measureOrder, c.order);
    const Formula& rowsDerive = c.rowsDerive ? c.rowsDerive : c.value;
    for (int repeat = 0; repeat < 3; ++repeat) {
        State s = randomState(*model, random), base = s;
        const Kinematics k(s, lookUp()), fixed(base, lookUp());
        measure->resetCount(); // random states are no history
        EXPECT_NEAR(valueAt(*measure, s), c.value(k, fixed), 1e-12 * (1 + std::abs(c.value(k, fixed))));
        const auto f = [&] { return rowsDerive(k, fixed); };
        const std::array<std::tuple<const char*, Operation, MBS_ModelPhysicalDofVector*>, 3> rows = {{
            {"q", &MBS_Measure::getMeasure_q, &s.q},
            {"qd", &MBS_Measure::getMeasure_qd, &s.qd},
            {"qdd", &MBS_Measure::getMeasure_qdd, &s.qdd},
        }};
        for (unsigned body = 0; body < numOfBodies; ++body)
            for (const auto& [name, operation, x] : rows) {
                if (c.has == NoRows && operation != &MBS_Measure::getMeasure_qdd) {
                    EXPECT_EQ(row(operation, s, body)[3], untouched);
                    continue;
                }
                expectNear(row(operation, s, body), difference(s, *x, body, f), name);
            }
    }
}

TEST_P(MeasureClass, HasDerivativesOfItsRow) {
    class Block : public MBS_GeneralBodyBodyMatrix {
      public:
        Block() : MBS_GeneralBodyBodyMatrix(3, 4, 0, 3, 4, 0) {}
        void update(double, const P*, const P*, const P*, const C*) override {}
        double at(unsigned i, unsigned j) const {
            const auto& part = block[i < 3 ? Trans : Rot][j < 3 ? Trans : Rot];
            return part->data[(j < 3 ? j : j - 3) * (i < 3 ? 3 : 4) + (i < 3 ? i : i - 3)];
        }
    } block;
    State s = randomState(*model, random);
    MBS_ModelConstraintDofVector multipliers; // with one constraint
    *multipliers.equationsOfConstraint(0) = -1.7;
    update(*measure, s);
    const bool isRelative = measure->measureBodies.size() == 2;
    if (GetParam().has != Rate) {
        EXPECT_EQ(row(&MBS_Measure::getMeasureDot_q, s, 0)[3], untouched);
        return;
    }
    for (unsigned body = 0; body < numOfBodies; ++body) {
        const auto rate = [&] {
            double sum = 0.0;
            for (unsigned i = 0; i < numOfBodies; ++i)
                for (unsigned n = 0; n < 7; ++n)
                    sum += row(&MBS_Measure::getMeasure_q, s, i)[n] * s.qd.bodyData(i)[n];
            return sum;
        };
        expectNear(row(&MBS_Measure::getMeasureDot_q, s, body), difference(s, s.q, body, rate), "Dot_q");
    }
    const unsigned count = isRelative ? 2 : 1;
    for (unsigned i = 0; i < count; ++i)
        for (unsigned j = 0; j < count; ++j) {
            measure->getMeasureLe_q(s.t, &s.q, &s.qd, &s.qdd, &multipliers, 0, block, i, j);
            for (unsigned n = 0; n < 7; ++n) {
                Row7 line;
                for (unsigned m = 0; m < 7; ++m)
                    line[m] = block.at(n, m);
                expectNear(
                    line,
                    difference(s, s.q, j, [&] { return -1.7 * row(&MBS_Measure::getMeasure_q, s, i)[n]; }),
                    "Le_q");
            }
        }
}

TEST_P(MeasureClass, AllocatesNothing) {
    State s = randomState(*model, random);
    update(*measure, s);
    const auto before = allocationCount();
    measure->updateMeasure(s.t, &s.q, &s.qd, &s.qdd);
    for (const Operation operation : {&MBS_Measure::getMeasure_q, &MBS_Measure::getMeasure_qd,
                                      &MBS_Measure::getMeasure_qdd, &MBS_Measure::getMeasureDot_q})
        row(operation, s, 0);
    EXPECT_EQ(allocationCount(), before);
}

INSTANTIATE_TEST_SUITE_P(All, MeasureClass, testing::ValuesIn(cases()),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace velmora::test
