#pragma once

#include "velmora/matrix/FixedSize.h"
#include "velmora/platform/DynamicLibrary.h"

#include <cstdint>
#include <string>

namespace velmora {

class MBS_History;

/// Force and torque of a user library, in the frame that the force has.
struct ExtSubVectors {
    Vec3 force, torque;
};

/// One force of a user library: the functions of ExternalSubroutine.h, called with the number that the
/// library gave to the force.
class ExtSubLibrary {
  public:
    /// Loads the library and looks up the functions for a force on one body or between two; those of
    /// derivatives only if there are measures. `error` tells what failed: "ERROR: Could not load the dynamic
    /// library <" + path + ">!\n" and the reason, "ERROR: Could not find function <" + name + "> in the
    /// dynamic library <" + path + ">!\n".
    ExtSubLibrary(const std::string& path, unsigned numOfBodies, bool hasMeasures);

    /// Has the library make the force.
    void create(std::uint32_t numOfMeasures, const std::string& parameterPath);
    /// Vectors on the first (0) or second (1) body.
    ExtSubVectors vectors(unsigned body, double t, const double* measureValues) const;
    /// Their derivatives by the measure with this index.
    ExtSubVectors derivatives(unsigned body, double t, const double* measureValues,
                              std::uint32_t measure) const;
    ExtSubVectors resultVectors() const;
    void setTimeOfLastSuccessfulStep(double t) const { setTimeFunction(&objectId, &t); }
    /// What the force remembers; nothing if the library doesn't offer it.
    void exchangeHistory(MBS_History& history) const;

    std::string error;
    std::int32_t objectId = -1;
    /// A force between two bodies has the plain functions: what body 2 gets is negated.
    bool hasCommonFunctions = true;

  private:
    using Create = void (*)(const std::uint32_t*, const char*, std::int32_t*);
    using Vector = void (*)(const std::int32_t*, const double*, const double*, double*);
    using Derivative = void (*)(const std::int32_t*, const double*, const double*, const std::uint32_t*,
                                double*);
    using Result = void (*)(const std::int32_t*, double*, double*);
    using SetTime = void (*)(const std::int32_t*, const double*);
    using GetHistory = void (*)(const std::int32_t*, std::uint32_t*, double*);
    using SetHistory = void (*)(const std::int32_t*, const std::uint32_t*, const double*);

    /// The four functions of one body.
    struct OfBody {
        Vector force = nullptr, torque = nullptr;
        Derivative forceDerivative = nullptr, torqueDerivative = nullptr;
    };

    template <class F>
    void find(const std::string& name, F& function);
    template <class F>
    void findForBody(const std::string& name, unsigned body, unsigned numOfBodies, F& function);
    double signOf(unsigned body) const { return body == 1 && hasCommonFunctions ? -1.0 : 1.0; }

    DynamicLibrary library;
    std::string path;
    OfBody ofBody[2];
    Create createFunction = nullptr;
    Result resultFunction = nullptr;
    SetTime setTimeFunction = nullptr;
    GetHistory getHistoryFunction = nullptr; // these two are both there or both null
    SetHistory setHistoryFunction = nullptr;
};

} // namespace velmora
