#include "velmora/external_forces/ExtSubLibrary.h"

#include "velmora/model/MBS_History.h"

#include <vector>

namespace velmora {

ExtSubLibrary::ExtSubLibrary(const std::string& libraryPath, unsigned numOfBodies, bool hasMeasures)
    : library(libraryPath),
      path(libraryPath) {
    if (!library.isLoaded()) {
        error =
            "ERROR: Could not load the dynamic library <" + path + ">!\n" + library.getErrorString() + "\n";
        return;
    }
    hasCommonFunctions = numOfBodies == 1 || library.getFunction<Vector>("get3x1ForceVector");
    find("createExteralSubroutine", createFunction);
    for (unsigned body = 0; body < numOfBodies; ++body) {
        OfBody& functions = ofBody[body];
        findForBody("get3x1ForceVector", body, numOfBodies, functions.force);
        findForBody("get3x1TorqueVector", body, numOfBodies, functions.torque);
        if (!hasMeasures)
            continue;
        findForBody("get3x1ForceDerivative", body, numOfBodies, functions.forceDerivative);
        findForBody("get3x1TorqueDerivative", body, numOfBodies, functions.torqueDerivative);
    }
    find("get3x1ForceAndTorqueVector4ResultFile", resultFunction);
    find("setTimeOfLastSuccessfulStep", setTimeFunction);
    if (library.getFunction<GetHistory>("getHistory") || library.getFunction<SetHistory>("setHistory")) {
        find("getHistory", getHistoryFunction);
        find("setHistory", setHistoryFunction);
    }
}

template <class F>
void ExtSubLibrary::find(const std::string& name, F& function) {
    function = library.getFunction<F>(name);
    if (!function)
        error += "ERROR: Could not find function <" + name + "> in the dynamic library <" + path + ">!\n";
}

// A force on one body takes the plain name, or else the one of body 1, function by function; a force between
// two bodies one form for all.
template <class F>
void ExtSubLibrary::findForBody(const std::string& name, unsigned body, unsigned numOfBodies, F& function) {
    const char* const suffix = body == 0 ? "_Body1" : "_Body2";
    if (numOfBodies == 1 && !library.getFunction<F>(name))
        function = library.getFunction<F>(name + suffix);
    if (!function)
        find(numOfBodies == 1 || hasCommonFunctions ? name : name + suffix, function);
}

void ExtSubLibrary::create(std::uint32_t numOfMeasures, const std::string& parameterPath) {
    createFunction(&numOfMeasures, parameterPath.c_str(), &objectId);
}

ExtSubVectors ExtSubLibrary::vectors(unsigned body, double t, const double* measureValues) const {
    ExtSubVectors result;
    ofBody[body].force(&objectId, &t, measureValues, result.force.data.data());
    ofBody[body].torque(&objectId, &t, measureValues, result.torque.data.data());
    result.force *= signOf(body);
    result.torque *= signOf(body);
    return result;
}

ExtSubVectors ExtSubLibrary::derivatives(unsigned body, double t, const double* measureValues,
                                         std::uint32_t measure) const {
    ExtSubVectors result;
    ofBody[body].forceDerivative(&objectId, &t, measureValues, &measure, result.force.data.data());
    ofBody[body].torqueDerivative(&objectId, &t, measureValues, &measure, result.torque.data.data());
    result.force *= signOf(body);
    result.torque *= signOf(body);
    return result;
}

ExtSubVectors ExtSubLibrary::resultVectors() const {
    ExtSubVectors result;
    resultFunction(&objectId, result.force.data.data(), result.torque.data.data());
    return result;
}

void ExtSubLibrary::exchangeHistory(MBS_History& history) const {
    if (!getHistoryFunction)
        return;
    std::uint32_t size = 0;
    getHistoryFunction(&objectId, &size, nullptr);
    std::vector<double> numbers(size);
    getHistoryFunction(&objectId, &size, numbers.data());
    history.exchange(numbers);
    size = static_cast<std::uint32_t>(numbers.size());
    if (history.isTakingBack())
        setHistoryFunction(&objectId, &size, numbers.data());
}

} // namespace velmora
