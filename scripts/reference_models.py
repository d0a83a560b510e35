"""Models of problems with published or closed solutions, as text of model files for fixed steps.

`MODELS` maps the name of a problem to (end time, time between records, function of the simulation and results
sections).
"""

import functools
import math
import pathlib

import squeezing_mechanism
from make_four_bar import four_bar
from model_text import BALL, FLAGS, HINGE_Z, UNIT, ModelText, cross, frame_with_z, turned_about_x, turned_about_z

TILT = math.radians(40.0)
STEADY_PRECESSION = 1.30507865167933  # rad/s, slow root of I1 cos(theta) w^2 - J3 spin w + m g l = 0
X, Y, Z = UNIT
ORIGIN = (0, 0, 0)
MODAL_FILES = pathlib.Path(__file__).resolve().parent.parent / "tests" / "verification"


def multiply(axes, vector):
    """Global components of a vector that is given in the frame with these axes."""
    return tuple(sum(axis[i] * x for axis, x in zip(axes, vector)) for i in range(3))


def turned_about(axis, angle):
    """Axes of a body that is turned about an axis of any length."""
    length = math.sqrt(sum(x * x for x in axis))
    n, c, s = tuple(x / length for x in axis), math.cos(angle), math.sin(angle)
    turned = []
    for u in UNIT:
        along = (1.0 - c) * sum(a * b for a, b in zip(n, u))
        turned.append(tuple(c * a + s * b + along * d for a, b, d in zip(u, cross(n, u), n)))
    return tuple(turned)


def add(a, b):
    return tuple(x + y for x, y in zip(a, b))


def box(mass, x, y, z):
    return tuple(mass * s / 12 for s in (y * y + z * z, x * x + z * z, x * x + y * y))


def top(simulation, results, omega):
    """Symmetric top on a spherical joint; `omega` in the frame of the body."""
    model = ModelText("heavy symmetric top", simulation, results)
    axes = turned_about_x(TILT)
    center, turning = multiply(axes, (0, 0, 0.4)), multiply(axes, omega)
    model.body("top", 1.5, (0.05, 0.05, 0.08), center, axes, cross(turning, center), turning)
    model.joint("tip", ("top", "0"), (0, 0, 0), BALL)
    model.gravity((0, 0, -9.81))
    return model.text()


def pendulum(simulation, results):
    """Moves like a point mass on a massless bar of 1 m: (J + m l^2) / (m l) = 1 m."""
    model = ModelText("pendulum", simulation, results)
    model.body("bar", 1.0, (0.1, 0.1, 0.1875), (-0.75, 0, 0))
    model.joint("hinge", ("bar", "0"), (0, 0, 0), HINGE_Z)
    model.gravity((0, -9.81, 0))
    return model.text()


def spatial_double_pendulum(simulation, results):
    model = ModelText("spatial double pendulum", simulation, results)
    c, s = math.cos(0.9), math.sin(0.9)
    about_y = (c, 0.0, -s), (0, 1, 0), (s, 0.0, c)
    axes1 = tuple(multiply(about_y, axis) for axis in turned_about_z(0.3))
    axes2 = tuple(multiply(about_y, axis) for axis in turned_about_z(0.8))
    hinge = frame_with_z(multiply(axes1, (0.2, 1.0, 0.4)))
    omega1 = multiply(axes1, (1.0, -0.5, 2.0))
    omega2 = add(omega1, tuple(3.0 * x for x in hinge[2]))
    arm, lower = multiply(axes1, (0.4, -0.02, 0.0)), multiply(axes2, (0.3, 0.0, 0.0))
    point = add(arm, multiply(axes1, (0.4, 0.0, 0.01)))
    model.body("upper", 2.0, box(2.0, 0.8, 0.10, 0.06), arm, axes1, cross(omega1, arm), omega1)
    model.body("lower", 1.2, box(1.2, 0.6, 0.05, 0.12), add(point, lower), axes2,
               add(cross(omega1, point), cross(omega2, lower)), omega2)
    model.joint("ball", ("upper", "0"), (0, 0, 0), BALL)
    model.joint("hinge", ("upper", "lower"), point, HINGE_Z, hinge)
    model.gravity((0, 0, -9.81))
    return model.text()


def planar_chain(simulation, results):
    model = ModelText("chain of ten links", simulation, results)
    for i in range(10):
        model.body(f"link{i}", 0.25, box(0.25, 0.2, 0.02, 0.02), (0.2 * i + 0.1, 0.0, 0.0))
        model.joint(f"hinge{i}", (f"link{i}", f"link{i - 1}" if i else "0"), (0.2 * i, 0.0, 0.0), HINGE_Z)
    model.gravity((0, -9.81, 0))
    return model.text()


def gears(simulation, results):
    """A motor drives a pinion of ratio 1:3, a brake on the wheel holds against it: 30 turns of the pinion."""
    model = ModelText("gear pair", simulation, results)
    model.body("pinion", 1.0, (0.02, 0.02, 0.02), (-0.5, 0, 0))
    model.body("wheel", 1.0, (0.18, 0.18, 0.18), ORIGIN)
    model.joint("pinion-shaft", ("pinion", "0"), (-0.5, 0, 0), HINGE_Z)
    model.joint("wheel-shaft", ("wheel", "0"), ORIGIN, HINGE_Z)
    model.gear("teeth", ("pinion", "wheel"), Z, Z, (1.0, 3.0), ((-0.5, 0, 0), ORIGIN))
    model.rotation("speed", ("wheel", "0"), "AngleVel", X, (X, Y))
    model.torque("motor", ("pinion", "0"), "2", Z)
    model.torque("brake", ("wheel", "0"), "-0.9 * meaval[speed]", Z)
    return model.text()


def two_body_spring(simulation, results, damping):
    """Two free bodies on a spring and a damper along the line of their centres."""
    model = ModelText("two bodies on a spring", simulation, results)
    centers = ORIGIN, (0.48, 0, 0.64)
    model.body("first", 1.5, (1, 1, 1), centers[0], velocity=(0.3, -1.2, 0))
    model.body("second", 2.5, (1, 1, 1), centers[1], velocity=(0.1, 1.0, 0.2))
    bodies = "first", "second"
    model.translation("distance", bodies, "XYZ", "disp", centers)
    model.translation("rate", bodies, "XYZ", "vel", centers)
    model.force("spring", bodies, f"200 * (meaval[distance] - 0.5) + {damping} * meaval[rate]", centers)
    return model.text()


def controlled_pendulum(simulation, results):
    """A torque in proportion to angle and speed lets a pendulum follow a wave."""
    model = ModelText("controlled pendulum", simulation, results)
    model.body("bar", 2.0, (0.06, 0.06, 0.06), (0, -0.35, 0))
    model.joint("hinge", ("bar", "0"), ORIGIN, HINGE_Z)
    plane = (0, -1, 0), X
    model.rotation("theta", ("bar", "0"), "Angle", (0, -1, 0), plane)
    model.rotation("omega", ("bar", "0"), "AngleVel", (0, -1, 0), plane)
    model.torque("controller", ("bar", "0"),
                 "-18 * (meaval[theta] - (0.8 + 0.4 * sin(2 * simtime[]))) - 2.5 * meaval[omega]", Z)
    model.gravity((0, -9.81, 0))
    return model.text()


def gravity_ramp(simulation, results):
    """A mass on a spring and a damper, on which gravity comes up in 1.5 s."""
    model = ModelText("mass under rising gravity", simulation, results)
    model.body("mass", 2.0, (1, 1, 1), ORIGIN)
    model.joint("guide", ("mass", "0"), ORIGIN, ("dy", "dz", "ax", "ay", "az"))
    model.translation("x", ("mass", "0"), "X", "disp", (ORIGIN, ORIGIN))
    model.translation("v", ("mass", "0"), "X", "vel", (ORIGIN, ORIGIN))
    model.force("spring", ("mass", "0"), "-180 * meaval[x] - 3 * meaval[v]", (ORIGIN, ORIGIN), X)
    model.gravity((-9.81, 0, 0), activation_time=1.5)
    return model.text()


def prescribed_rotor(simulation, results):
    """An unbalanced rotor whose angle is a function of time: what the bearing and the drive bear."""
    model = ModelText("unbalanced rotor", simulation, results)
    axes = tuple(multiply(turned_about_z(0.3), axis) for axis in turned_about_x(0.4))
    model.body("rotor", 4.0, (0.05, 0.08, 0.11), (0.02, -0.01, 0.15), axes)
    model.joint("bearing", ("rotor", "0"), ORIGIN, HINGE_Z)
    model.rotation("angle", ("rotor", "0"), "Angle", X, (X, Y), from_start=True)
    model.motion("drive", ("rotor", "0"), "angle", "5 * simtime[] + 0.4 * sin(6 * simtime[])", 0.5, ORIGIN)
    model.gravity((0, -9.81, 0))
    return model.text()


def prescribed_slider_crank(simulation, results):
    """The angle of the crank is a function of time: what the motor and the pins bear."""
    model = ModelText("slider-crank with given crank angle", simulation, results)
    crank, rod = turned_about_z(math.radians(30)), turned_about_z(-math.asin(0.15 * 0.5 / 0.4))
    pin, end = multiply(crank, (0.15, 0, 0)), (0.15 * math.cos(math.radians(30)) + 0.4 * rod[0][0], 0.0, 0.0)
    model.body("crank", 0.6, (1.2e-3, 1.2e-3, 1.2e-3), multiply(crank, (0.06, 0, 0)), crank)
    model.body("rod", 0.9, (1.3e-2, 1.3e-2, 1.3e-2), add(pin, multiply(rod, (0.16, 0, 0))), rod)
    model.body("slider", 1.4, (1e-3, 1e-3, 1e-3), end)
    model.joint("pivot", ("crank", "0"), ORIGIN, HINGE_Z)
    model.joint("crank-pin", ("rod", "crank"), pin, HINGE_Z)
    model.joint("guide", ("slider", "0"), end, ("dy", "dz", "ax", "ay", "az"))
    model.joint("slider-pin", ("rod", "slider"), end, ("dx", "dy"))
    model.rotation("angle", ("crank", "0"), "Angle", X, (X, Y), from_start=True)
    model.motion("motor", ("crank", "0"), "angle", "10 * simtime[] + 0.3 * sin(8 * simtime[])", 0.25, ORIGIN)
    model.gravity((0, -9.81, 0))
    return model.text()


def flexible_free_spin(simulation, results, coupled, quadratic):
    """Strip with two masses off its axis, whose modes couple bending, torsion and stretch; flies without forces."""
    model = ModelText("flexible body in free flight", simulation, results)
    axes = turned_about((1.0, -2.0, 0.5), 0.8)
    model.flexible_body("strip", MODAL_FILES / "flexible_free_spin.mtx", (0.3, -0.1, 0.2), axes, (0.4, 0.2, -0.3),
                        multiply(axes, (6.0, 4.0, 25.0)), coupled=coupled, quadratic=quadratic)
    return model.text()


def flexible_cantilever(simulation, results, damping="0.02, 0.01", load=None):
    """Horizontal rod, welded to a hub that is held, with a mass welded to its free end; released straight under
    gravity, or pulled down at its end by a constant load."""
    model = ModelText("flexible cantilever", simulation, results)
    model.body("hub", 1.0, (0.1, 0.1, 0.1), ORIGIN)
    model.flexible_body("beam", MODAL_FILES / "flexible_cantilever.mtx", (0.6, 0, 0), damping=damping)
    model.body("tip", 0.05, (2e-5, 2e-5, 2e-5), (1.2, 0, 0))
    model.joint("wall", ("hub", "0"), ORIGIN, FLAGS)
    model.weld("root", "hub", "beam", ORIGIN, 1001)
    model.weld("end", "tip", "beam", (1.2, 0, 0), 1017)
    if load is None:
        model.gravity((0, -9.81, 0))
    else:
        model.force("pull", ("tip", "0"), repr(-load), ((1.2, 0, 0), ORIGIN), Y)
    return model.text()


def spring_test(simulation, results, start, expression, rotational=False, direction=None):
    """One body of 1 kg on a spring and a damper to the ground, let go from rest."""
    model = ModelText("spring test", simulation, results)
    model.body("body", 1.0, (0.04, 0.1, 0.1), start, UPRIGHT if rotational else UNIT)
    bodies = "body", "0"
    if rotational:
        model.joint("joint", bodies, ORIGIN, HINGE_Z, UPRIGHT)
        model.rotation("angle", bodies, "Angle", X, (X, (0, 0, -1)))
        model.rotation("rate", bodies, "AngleVel", X, (X, (0, 0, -1)))
        model.torque("spring", bodies, expression, Y)
    else:
        axis = "Z" if direction else "XYZ"
        model.translation("length", bodies, axis, "disp", (start, ORIGIN))
        model.translation("rate", bodies, axis, "vel", (start, ORIGIN))
        model.force("spring", bodies, expression, (start, ORIGIN), direction)
    model.gravity((0, 0, -9.80665))
    return model.text()


def joint_test(simulation, results, location, body_axes, arm, fixed, joint_axes=UNIT, inertia=(0.04, 0.1, 0.1)):
    """One body of 1 kg, let go from rest; `arm` leads from the joint to the centre of mass, in the body's frame."""
    model = ModelText("joint test", simulation, results)
    model.body("body", 1.0, inertia, add(location, multiply(body_axes, arm)), body_axes)
    model.joint("joint", ("body", "0"), location, fixed, joint_axes)
    model.gravity((0, 0, -9.80665))
    return model.text()


SKEW = turned_about_x(-0.25 * math.pi)
UPRIGHT = turned_about_x(-0.5 * math.pi)
OBLIQUE = {"location": (1, 2, 3), "body_axes": SKEW, "arm": (2, 0, 0)}

MODELS = {
    "top_nutation": (4.0, 0.01, functools.partial(top, omega=(0, 0, 60))),
    "top_precession": (4.0, 0.01, functools.partial(top, omega=(0, STEADY_PRECESSION * math.sin(TILT), 60))),
    "pendulum": (10.0, 0.05, pendulum),
    "four_bar_2": (10.0, 0.05, functools.partial(four_bar, 2)),
    "four_bar_40": (20.0, 0.1, functools.partial(four_bar, 40)),
    "squeezing_mechanism": (0.05, 1e-4, squeezing_mechanism.model),
    "spatial_double_pendulum": (5.0, 0.01, spatial_double_pendulum),
    "planar_chain_10": (2.0, 0.01, planar_chain),
    "gear_pair": (10.0, 0.01, gears),
    "revolute_1": (5.0, 0.01, functools.partial(
        joint_test, location=(0, 0, 0), body_axes=UPRIGHT, arm=(2, 0, 0), fixed=HINGE_Z, joint_axes=UPRIGHT)),
    "revolute_2": (5.0, 0.01, functools.partial(joint_test, fixed=HINGE_Z, joint_axes=SKEW, **OBLIQUE)),
    "spherical_2": (5.0, 0.01, functools.partial(joint_test, fixed=BALL, **OBLIQUE)),
    "universal_1": (5.0, 0.01, functools.partial(
        joint_test, location=(0, 0, 0), body_axes=turned_about_x(0.5 * math.pi), arm=(0, 0, -2),
        fixed=(*BALL, "az"), inertia=(0.1, 0.1, 0.04))),
    "cylindrical_3": (5.0, 0.01, functools.partial(
        joint_test, fixed=("dx", "dy", "ax", "ay"), joint_axes=SKEW, **OBLIQUE)),
    "two_body_spring": (10.0, 0.01, functools.partial(two_body_spring, damping=0.0)),
    "two_body_damper": (10.0, 0.01, functools.partial(two_body_spring, damping=1.5)),
    "controlled_pendulum": (10.0, 0.01, controlled_pendulum),
    "gravity_ramp": (8.0, 0.01, gravity_ramp),
    "prescribed_rotor": (4.0, 0.005, prescribed_rotor),
    "prescribed_slider_crank": (2.0, 0.005, prescribed_slider_crank),
    "rotational_spring": (5.0, 0.01, functools.partial(
        spring_test, start=(2, 0, 0), expression="-200 * meaval[angle] - 10 * meaval[rate]", rotational=True)),
    "fixed_spring": (5.0, 0.01, functools.partial(
        spring_test, start=ORIGIN, expression="-10 * meaval[length] - 0.5 * meaval[rate]", direction=Z)),
    "pulling_spring": (5.0, 0.01, functools.partial(
        spring_test, start=(0, 2, 0), expression="-100 * (meaval[length] - 2) - 5 * meaval[rate]")),
    "flexible_free_spin": (0.1, 0.01, functools.partial(flexible_free_spin, coupled=True, quadratic=True)),
    "flexible_free_spin_coupled": (0.1, 0.01, functools.partial(flexible_free_spin, coupled=True, quadratic=False)),
    "flexible_free_spin_quadratic": (0.1, 0.01, functools.partial(flexible_free_spin, coupled=False, quadratic=True)),
    "flexible_free_spin_linear": (0.1, 0.01, functools.partial(flexible_free_spin, coupled=False, quadratic=False)),
    "flexible_cantilever": (1.0, 0.01, flexible_cantilever),
    "flexible_cantilever_static": (12.0, 0.5, functools.partial(flexible_cantilever, damping="2", load=1.0)),
}


def model_text(problem, step):
    end_time, between_records, write = MODELS[problem]
    simulation = {"end_time": end_time, "step": step, "fixed_step": True, "alpha": -0.05}
    results = {"WriteStateResultFile": True, "WriteVelocityResultFile": True,
               "WriteConstraintForceResultFile": True, "WriteForceResultFile": True, "WriteMeasureResultFile": True,
               "OutputTimeStepSize": between_records}
    return write(simulation, results=results)
