#include "contact/Contact.h"

namespace velmora::contact {
namespace {

[[noreturn]] void refuse(const std::string& name, double value, const std::string& demand) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", value);
    throw InputError(name + " is " + text + ", but has to be " + demand);
}

void checkPositive(const std::string& name, double value) {
    if (!(std::isfinite(value) && value > 0))
        refuse(name, value, "positive");
}

void checkNotNegative(const std::string& name, double value) {
    if (!(std::isfinite(value) && value >= 0))
        refuse(name, value, "0 or positive");
}

/// Right-handed unit axes; the tolerance is for matrices written with six digits.
void checkRotation(const std::string& name, const Mat3& m) {
    constexpr double tolerance = 1e-5;
    const bool isRotation =
        std::abs(dot(m[0], m[0]) - 1) < tolerance && std::abs(dot(m[1], m[1]) - 1) < tolerance &&
        std::abs(dot(m[2], m[2]) - 1) < tolerance && norm(cross(m[0], m[1]) - m[2]) < tolerance;
    if (!isRotation)
        throw InputError(name + " has no right-handed unit axes");
}

void checkPlace(const std::string& name, const Vec3& x) {
    if (!std::isfinite(norm(x)))
        throw InputError(name + " isn't finite");
}

void checkBody(const BodyInput& body, const std::string& number) {
    checkPositive("YoungsModulus" + number, body.youngsModulus);
    if (!(body.poissonsRatio > -1 && body.poissonsRatio < 0.5))
        refuse("PoissonsRatio" + number, body.poissonsRatio, "between -1 and 0.5");
    checkPositive("LayerThickness" + number, body.layerThickness);
    checkPlace("the initial position of body " + number, body.position);
    checkRotation("the initial orientation of body " + number, body.orientation);
    checkPlace("PositionContactGraphics" + number, body.graphicsPosition);
    checkRotation("OrientationContactGraphics" + number, body.graphicsOrientation);
}

} // namespace

void checkInput(const ContactInput& input) {
    if (input.task < 0 || input.task > 2)
        refuse("Task", input.task, "0, 1 or 2");
    checkBody(input.bodies[0], "1");
    checkBody(input.bodies[1], "2");
    checkPositive("MaxPenetration", input.maxPenetration);
    checkNotNegative("DampingCompression", input.dampingCompression);
    checkNotNegative("DampingExpansion", input.dampingExpansion);
    if (input.modeOfDampingTransition < 0 || input.modeOfDampingTransition > 2)
        refuse("ModeOfDampingTransition", input.modeOfDampingTransition, "0, 1 or 2");
    if (input.modeOfDampingTransition > 0)
        checkPositive("DepthOfDampingTransition", input.depthOfDampingTransition);
    checkNotNegative("SlidingFrictionCoeff", input.slidingFrictionCoeff);
    if (input.slidingFrictionCoeff > 0)
        checkPositive("FrictionRegularizationVelocity", input.frictionRegularizationVelocity);
}

} // namespace velmora::contact
