"""Models of problems with published or closed solutions, as text of model files for fixed steps.

`MODELS` maps the name of a problem to (end time, time between records, function of the simulation and results
sections).
"""

import functools
import math

import squeezing_mechanism
from make_four_bar import four_bar
from model_text import BALL, HINGE_Z, UNIT, ModelText, cross, frame_with_z, turned_about_x, turned_about_z

TILT = math.radians(40.0)
STEADY_PRECESSION = 1.30507865167933  # rad/s, slow root of I1 cos(theta) w^2 - J3 spin w + m g l = 0
GEAR_RATIO, PINION, WHEEL, WEIGHT, LEVER, GRAVITY = 40.0, 2e-4, 0.04, 2.0, 0.3, 9.81


def multiply(axes, vector):
    """Global components of a vector that is given in the frame with these axes."""
    return tuple(sum(axis[i] * x for axis, x in zip(axes, vector)) for i in range(3))


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
    """A wheel with a weight swings through half a turn and drives a small pinion over 20 turns to and fro."""
    model = ModelText("gear pair", simulation, results)
    model.body("pinion", 0.1, (PINION, PINION, PINION), (-0.5, 0, 0))
    model.body("wheel", WEIGHT, (WHEEL, WHEEL, WHEEL), (LEVER, 0, 0))
    model.joint("pinion-shaft", ("pinion", "0"), (-0.5, 0, 0), HINGE_Z)
    model.joint("wheel-shaft", ("wheel", "0"), (0, 0, 0), HINGE_Z)
    model.gear("teeth", ("pinion", "wheel"), (0, 0, 1), (0, 0, 1), (1.0, GEAR_RATIO), ((-0.5, 0, 0), (0, 0, 0)))
    model.gravity((0, -GRAVITY, 0))
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
    "gear_pair": (10.0, 0.005, gears),
    "revolute_1": (5.0, 0.01, functools.partial(
        joint_test, location=(0, 0, 0), body_axes=UPRIGHT, arm=(2, 0, 0), fixed=HINGE_Z, joint_axes=UPRIGHT)),
    "revolute_2": (5.0, 0.01, functools.partial(joint_test, fixed=HINGE_Z, joint_axes=SKEW, **OBLIQUE)),
    "spherical_2": (5.0, 0.01, functools.partial(joint_test, fixed=BALL, **OBLIQUE)),
    "universal_1": (5.0, 0.01, functools.partial(
        joint_test, location=(0, 0, 0), body_axes=turned_about_x(0.5 * math.pi), arm=(0, 0, -2),
        fixed=(*BALL, "az"), inertia=(0.1, 0.1, 0.04))),
    "cylindrical_3": (5.0, 0.01, functools.partial(
        joint_test, fixed=("dx", "dy", "ax", "ay"), joint_axes=SKEW, **OBLIQUE)),
}


def model_text(problem, step):
    end_time, between_records, write = MODELS[problem]
    simulation = {"end_time": end_time, "step": step, "fixed_step": True, "alpha": -0.05}
    results = {"WriteStateResultFile": True, "WriteVelocityResultFile": True,
               "WriteConstraintForceResultFile": True, "OutputTimeStepSize": between_records}
    return write(simulation, results=results)
