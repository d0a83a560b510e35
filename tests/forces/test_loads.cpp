#include "tests/support/AllocationCounter.h"
#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

/// A load between two bodies or on one, with a kind of direction.
struct Load {
    bool isTorque, isPair;
    const char* direction; // "In-line-of-sight", "BodyFixed", "SpaceFixed"
};

/// What a magnitude depends on: no measure, one on a body of the load, one on a third body, rates of several.
struct Magnitude {
    const char* name;
    const char* text;
    bool isOnOwnBody, isOnThirdBody, hasRates;
};

constexpr Load loads[] = {
    {false, false, "In-line-of-sight"}, {false, false, "BodyFixed"}, {false, false, "SpaceFixed"},
    {false, true, "In-line-of-sight"},  {false, true, "BodyFixed"},  {false, true, "SpaceFixed"},
    {true, false, "BodyFixed"},         {true, false, "SpaceFixed"}, {true, true, "BodyFixed"},
    {true, true, "SpaceFixed"},
};

constexpr Magnitude magnitudes[] = {
    {"Constant", "3.5", false, false, false},
    {"OfOwnPosition", "1.5 + meaval[pos_a]^2", true, false, false},
    {"OfForeignPosition", "meaval[pos_c] + sin(simtime[])", false, true, false},
    {"OfRates", "meaval[vel_c] - 2*meaval[rate_ab]*meaval[dist_ab] + meaval[pos_c]", true, true, true},
    {"OfAcceleration", "meaval[acc_c]", false, false, false},
};

const std::string point1 = "0.4, -0.1, 0.2", point2 = "0.3, 0.7, -0.5", given = "0.36, -0.48, 0.8";

class Loads : public ModelFixture {
  protected:
    Loads() { startInput(); }

    /// Three bodies and the measures.
    void startInput() {
        input = std::make_unique<IO_DataModel>("loads");
        addRigidBody(*input, "a");
        addRigidBody(*input, "b", {{"OrientationPAI", "1, 0, 0, 0, 0.6, 0.8, 0, -0.8, 0.6"}});
        addRigidBody(*input, "c");
        const auto addMeasure = [&](const char* label, const char* ids, const char* mode, const char* axis) {
            addBlock(*input, "Measure", "Translational", label,
                     {{"BodyIDs", ids},
                      {"MeasureMode", mode},
                      {"MeasureCoordinate", axis},
                      {"MeasureLocation_Body1", point1},
                      {"MeasureLocation_Body2", point2}});
        };
        addMeasure("pos_a", "a, 0", "disp", "X");
        addMeasure("pos_c", "c, 0", "disp", "Z");
        addMeasure("vel_c", "c, 0", "vel", "Y");
        addMeasure("acc_c", "c, 0", "acc", "Y");
        addMeasure("dist_ab", "a, b", "disp", "XYZ");
        addMeasure("rate_ab", "a, b", "vel", "XYZ");
    }
    /// One key may be replaced, or left out if its value is empty.
    void addLoad(const Load& load, const std::string& magnitude, const std::string& changedKey = "",
                 const std::string& value = "") {
        auto* block =
            input->addBlock("Force", load.isTorque ? "GenericTorque" : "GenericForce", "load", "", "");
        for (const auto& [key, text] :
             {std::pair<std::string, std::string>("BodyIDs", load.isPair ? "a, b" : "a, 0"),
              {load.isTorque ? "TorqueExpression" : "ForceExpression", magnitude},
              {load.isTorque ? "AxisType" : "ForceDirectionType", load.direction},
              {load.isTorque ? "Axis" : "ForceDirection", given},
              {"PointOfApplication_Body1", point1},
              {"PointOfApplication_Body2", point2}})
            if (key != changedKey)
                block->addKeyValue(key, text);
            else if (!value.empty())
                block->addKeyValue(key, value);
    }
    void build() { model.reset(MBS_Model::makeModel(input.get(), &output)); }
    MBS_Body& body(unsigned i) { return *dynamic_cast<MBS_InternalModel&>(*model).getBodies()[i]; }
    MBS_Force& force(std::size_t i) { return *dynamic_cast<MBS_InternalModel&>(*model).getForces()[i]; }

    void evaluate(State& s, MBS_ModelPhysicalDofVector& Q) {
        MBS_ModelConstraintDofVector residual(model.get());
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(s.t, &s.q, &s.qd, &s.qdd,
                                                                               &residual);
        model->getExternalForces(s.t, &s.q, &s.qd, &s.qdd, &Q);
    }
    /// A random state with Euler parameters of norm 1 and rates that keep it.
    State unitState() {
        State s = randomState(*model, random);
        for (unsigned i = 0; i < model->getNumOfBodies(); ++i) {
            double* p = s.q.bodyData(i) + 3;
            double* dp = s.qd.bodyData(i) + 3;
            const Vec4 unit = (1.0 / norm(Vec4::from(p))) * Vec4::from(p);
            unit.to(p);
            (Vec4::from(dp) - dot(Vec4::from(dp), unit) * unit).to(dp);
        }
        return s;
    }

    std::unique_ptr<IO_DataModel> input;
    std::mt19937 random{5};
};

class EachLoad : public Loads, public testing::WithParamInterface<std::tuple<Load, Magnitude>> {};

std::string nameOf(const testing::TestParamInfo<std::tuple<Load, Magnitude>>& info) {
    const auto& [load, magnitude] = info.param;
    const std::string kind = load.direction;
    return std::string(load.isPair ? "Pair" : "Single") + (load.isTorque ? "Torque" : "Force") +
           (kind == "In-line-of-sight" ? "LineOfSight" : kind) + magnitude.name;
}

// A force on a single body has no block for its own body unless a measure on it calls for one.
TEST_P(EachLoad, HasTheDerivativesOfItsForces) {
    const auto& [load, magnitude] = GetParam();
    addLoad(load, magnitude.text);
    build();
    const bool isIncomplete = !load.isTorque && !load.isPair && !magnitude.isOnOwnBody;
    const bool hasBlocks = !isIncomplete || magnitude.isOnThirdBody;
    std::vector<KnownDeviation> missing;
    for (const char* row : {"body 0 trans", "body 0 rot"})
        for (const char* col : {"body 0 trans", "body 0 rot"})
            if (isIncomplete)
                missing.push_back({ExternalForce_q, row, col});
    if (magnitude.text == std::string("meaval[acc_c]")) // its value depends on the state of c too
        for (const char* row : {"body 0 trans", "body 0 rot", "body 1 trans", "body 1 rot"})
            for (const unsigned code : {ExternalForce_q, ExternalForce_qd})
                missing.push_back({code, row, "body 2 rot"});
    DerivativeChecker checker(*model, missing);
    checker.tolerance = 1e-6; // those of the expression are differences themselves
    EXPECT_THAT(checker.check(ExternalForce_q, hasBlocks ? Expected::NonZero : Expected::Zero),
                testing::IsEmpty());
    EXPECT_THAT(checker.check(ExternalForce_qd, magnitude.hasRates ? Expected::NonZero : Expected::Zero),
                testing::IsEmpty());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
}

// Exactly the blocks that something calls for, in body order; a torque's have rotational rows alone.
TEST_P(EachLoad, HasNoOtherBlocks) {
    const auto& [load, magnitude] = GetParam();
    addLoad(load, magnitude.text);
    build();
    std::vector<std::string> expected, present;
    for (unsigned col = 0; col < 3; ++col) {
        const bool isMeasured =
            col < 2 ? magnitude.isOnOwnBody && (col == 0 || magnitude.hasRates) : magnitude.isOnThirdBody;
        const bool isOwn = col == 0 ? load.isPair || load.isTorque : col == 1 && load.isPair;
        for (unsigned row = 0; row < (load.isPair ? 2u : 1u) && (isMeasured || isOwn); ++row)
            for (const char* by : {"_Qe_q", "_Qe_qd"})
                if (by == std::string("_Qe_q") || (isMeasured && magnitude.hasRates))
                    expected.push_back(std::to_string(row) + std::to_string(col) + " " +
                                       (load.isPair ? "MBS_RiBoRiBo" : "MBS_SingleRiBo") +
                                       (load.isTorque ? "TorqueVector" : "ForceVector") + by +
                                       (load.isPair ? row == 0 ? "_1x" : "_2x" : ""));
    }
    for (const auto& entry : force(0).jacobianEntries)
        for (const auto* block : {entry.qeQ.get(), entry.qeQd.get()})
            if (block) {
                present.push_back(std::to_string(entry.rowBody) + std::to_string(entry.colBody) + " " +
                                  block->getClassName());
                EXPECT_EQ(block->block[Trans][Trans] == nullptr, load.isTorque);
                EXPECT_EQ(block->block[Trans][Rot] == nullptr, load.isTorque);
            }
    EXPECT_EQ(present, expected);
}

INSTANTIATE_TEST_SUITE_P(All, EachLoad,
                         testing::Combine(testing::ValuesIn(loads), testing::ValuesIn(magnitudes)), nameOf);

// Result data against the geometry, and the power of the generalised forces against that of the result data.
TEST_F(Loads, ActWhereAndAlongWhatTheirKeysSay) {
    for (const Load& load : loads)
        addLoad(load, "3.5");
    build();
    State s = unitState();
    MBS_ModelPhysicalDofVector Q(model.get());
    evaluate(s, Q);
    const Vec3 d{{0.36, -0.48, 0.8}}, start1{{0.4, -0.1, 0.2}}, start2{{0.3, 0.7, -0.5}}, zero;
    const Mat3 &A1 = body(0).commons->A, &A2 = body(1).commons->A;
    const Vec3 r1 = Vec3::from(s.q.bodyData(0)), r2 = Vec3::from(s.q.bodyData(1));
    const auto toLocal = [&](unsigned i, const Vec3& v) { return transposeTimes(body(i).rotationMatrix, v); };
    const Vec3 at1 = r1 + A1 * toLocal(0, start1 - body(0).position);
    for (std::size_t n = 0; n < std::size(loads); ++n) {
        const Load& load = loads[n];
        SCOPED_TRACE(force(n).getClassName() + " " + load.direction);
        const bool isLine = load.direction == std::string("In-line-of-sight");
        const bool isBodyFixed = load.direction == std::string("BodyFixed");
        const Vec3 place2 = load.isPair ? r2 : isLine ? start2 : zero;
        const Vec3 at2 = load.isPair ? r2 + A2 * toLocal(1, start2 - body(1).position) : place2;
        const double towards2 = load.isPair ? 1.0 : -1.0; // a pair is pulled together, a point pushed away
        const Vec3 e = isLine        ? (towards2 / norm(at2 - at1)) * (at2 - at1)
                       : isBodyFixed ? A1 * toLocal(0, d)
                                     : d;
        const Vec3 f = load.isTorque ? zero : 3.5 * e;
        const Vec3 tau = load.isTorque ? 3.5 * e : cross(at1 - r1, f);
        MBS_Force::ResultData expected = {load.isTorque ? r1 : at1, f, r1, tau, zero, zero, zero, zero};
        if (load.isPair || isLine)
            expected = {expected[0],
                        f,
                        r1,
                        tau,
                        load.isTorque ? place2 : at2,
                        -f,
                        place2,
                        load.isPair && !load.isTorque ? cross(at2 - r2, -f) : -tau};
        MBS_Force::ResultData data8;
        force(n).getForceResultData(&s.q, &s.qd, &s.qdd, &s.lambda, data8);
        for (unsigned k = 0; k < 8; ++k)
            EXPECT_LT(norm(data8[k] - expected[k]), 1e-14) << "vector " << k + 1;

        std::fill_n(Q.dofVector->data, Q.getNumOfDof(), 0.0);
        force(n).addExternalForces(s.t, &s.q, &s.qd, nullptr, &Q);
        double power = 0.0;
        for (unsigned k = 0; k < Q.getNumOfDof(); ++k)
            power += Q.dofVector->data[k] * s.qd.dofVector->data[k];
        for (unsigned i = 0; i < (load.isPair ? 2u : 1u); ++i)
            power -= dot(expected[4 * i + 1], Vec3::from(s.qd.bodyData(i))) +
                     dot(expected[4 * i + 3], body(i).commons->A * body(i).commons->omegaBar);
        EXPECT_NEAR(power, 0.0, 1e-13);
    }
}

// A parameter that is only in a part of the loads, in any case of letters, against differences.
TEST_F(Loads, DeriveByTheirParameters) {
    const auto forcesAt = [&](double value, State& s, bool isDerivative) {
        startInput();
        addBlock(*input, "DataObject", "Parameter", "Gain", {{"InitialValue", std::to_string(value)}});
        for (const Load& load : loads)
            addLoad(load, load.isTorque ? "meaval[pos_a]" : "parval[gain]^2*meaval[pos_c]");
        for (const Load& load : loads)
            addLoad(load, load.isTorque ? "parval[gain]*simtime[]" : "2");
        build();
        MBS_ModelPhysicalDofVector Q(model.get());
        evaluate(s, Q);
        const std::string label = "GAIN", other = "loss";
        if (isDerivative)
            model->getExternalForcesDPar(s.t, &s.q, &s.qd, &s.qdd, &label, &Q);
        std::vector<double> result(Q.dofVector->data, Q.dofVector->data + Q.getNumOfDof());
        model->getExternalForcesDPar(s.t, &s.q, &s.qd, &s.qdd, &other, &Q);
        EXPECT_EQ(std::count(Q.dofVector->data, Q.dofVector->data + Q.getNumOfDof(), 0.0), Q.getNumOfDof());
        return result;
    };
    build();
    State s = randomState(*model, random);
    const auto plus = forcesAt(2.5, s, false), minus = forcesAt(1.5, s, false);
    const auto derivative = forcesAt(2.0, s, true);
    for (std::size_t k = 0; k < plus.size(); ++k)
        EXPECT_NEAR(derivative[k], plus[k] - minus[k], 1e-7) << k; // exact for a square
}

struct Fault {
    const char* description;
    bool isTorque;
    const char* key;
    const char* value; // empty: the key is missing
    const char* text;  // behind the block's prefix
};

constexpr Fault faults[] = {
    {"no direction type", false, "ForceDirectionType", "",
     "ForceDirectionType not available in input-file!\n"},
    {"unknown direction type", false, "ForceDirectionType", "bodyfixed", "ForceDirectionType not defined!\n"},
    {"no direction", false, "ForceDirection", "",
     "ERROR: Key <ForceDirection> not found in read list of keys! Please check your input file!\n"},
    {"no second point", false, "PointOfApplication_Body2", "",
     "ERROR: Key <PointOfApplication_Body2> not found in read list of keys! Please check your input file!\n"},
    {"unknown measure", false, "ForceExpression", "meaval[x]",
     "Please check the expression after <ForceExpression>\nMeasure <x> not found in model! Check for typos "
     "like disp_X instead of dispX, etc!\n\n"},
    {"no expression", false, "ForceExpression", "",
     "ERROR: Key <ForceExpression> not found in read list of keys! Please check your input file!\n\n"},
    {"ground first", false, "BodyIDs", "0, a",
     "ERROR: Check BodyIDs, either Body-Ground or Body-Body Force is valid\n"},
    {"unknown axis type", true, "AxisType", "Fixed", nullptr}, // differs between one body and two
    {"no axis", true, "Axis", "",
     "ERROR: Key <Axis> not found in read list of keys! Please check your input file!\n"},
    {"unknown measure", true, "TorqueExpression", "meaval[x]",
     "ERROR: Please check the expression after <TorqueExpression>\nMeasure <x> not found in model! Check for "
     "typos like disp_X instead of dispX, etc!\n\n"},
    {"ground first", true, "BodyIDs", "0, a",
     "ERROR: Check BodyIDs, either Body-Ground or Body-Body Torque is valid\n"},
};

TEST_F(Loads, NameWhatIsWrongAndAreLeftOut) {
    for (const Fault& fault : faults)
        for (const bool isPair : {false, true}) {
            SCOPED_TRACE(fault.description);
            startInput();
            addLoad({fault.isTorque, isPair, "SpaceFixed"}, "1", fault.key, fault.value);
            build();
            const std::string text = fault.text ? fault.text
                                     : isPair   ? "AxisType not defined!\n"
                                                : "AxisType <Fixed> not defined!\n";
            EXPECT_EQ(takeMessages(), "In Block <Force> prior to line number 0:\n" + text + "\n");
            EXPECT_EQ(model->getNumOfExternalForces(), 0u);
        }
}

TEST_F(Loads, EvaluationAllocatesNothing) {
    for (const Load& load : loads)
        addLoad(load, magnitudes[3].text);
    build();
    State s = randomState(*model, random);
    MBS_ModelPhysicalDofVector Q(model.get());
    evaluate(s, Q);
    const unsigned long before = allocationCount();
    model->getExternalForces(s.t, &s.q, &s.qd, &s.qdd, &Q);
    model->updateMatricesForJacobian(s.t, &s.q, &s.qd, &s.qdd, &s.lambda);
    EXPECT_EQ(allocationCount(), before);
}

} // namespace
} // namespace velmora::test
