"""Andrews' squeezing mechanism: seven plane links with one freedom, all loops closed at the point E, driven by a motor
against a spring.

Dimensions, masses, spring, motor and start are those of problem A03 of the IFToMM library of computational benchmarks,
and of the test set for initial value problem solvers (Mazzia and Magherini, 2008).
"""

import math

from model_text import HINGE_Z, ModelText, turned_about_z

A, B, O = (-0.06934, -0.00227), (-0.03635, 0.03273), (0.0, 0.0)
CRANK, ROD, ARM, LONG, SHORT = 0.007, 0.028, 0.035, 0.04, 0.02  # |OF|, |FE|, |BE|, |AG| = |AH|, |GE| = |HE|
START_ANGLE = -0.0617138900142764496
C, D_ON_K3 = (0.014, 0.072), (0.02, -0.018)  # ends of the spring, the second from B in the frame of K3
STIFFNESS, FREE_LENGTH, TORQUE = 4530.0, 0.07785, 0.033
START_E = (-0.020960022346354, 0.001295169193707)  # tells which of two positions each loop is in
START_G = (-0.033997203885840, 0.016461971674998)
START_H = (-0.031633134507409, -0.015618868668305)

# name: mass, moment of inertia, point and direction of the frame in terms of two points, centre in that frame
LINKS = {
    "K1": (0.04325, 2.194e-6, "OF", 0.0, (0.00092, 0.0)),
    "K2": (0.00365, 4.410e-7, "EF", 0.0, (ROD - 0.0115, 0.0)),
    "K3": (0.02373, 5.255e-6, "BE", 0.5 * math.pi, (0.01043, -0.01874)),
    "K4": (0.00706, 5.667e-7, "GE", 0.5 * math.pi, (0.0, -(SHORT - 0.01421))),
    "K5": (0.07050, 1.169e-5, "AG", 0.0, (0.02308, 0.00916)),
    "K6": (0.00706, 5.667e-7, "HE", 0.0, (SHORT - 0.01421, 0.0)),
    "K7": (0.05498, 1.912e-5, "AH", 0.5 * math.pi, (-0.00449, -0.01228)),
}


def minus(a, b):
    return a[0] - b[0], a[1] - b[1]


def turned(a, angle):
    c, s = math.cos(angle), math.sin(angle)
    return c * a[0] - s * a[1], s * a[0] + c * a[1]


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1]


def cross(a, b):
    return a[0] * b[1] - a[1] * b[0]


def meet(p, rp, q, rq, sign):
    """The point at the distances rp and rq from p and q; it lies to the left of pq if the sign is positive."""
    d = minus(q, p)
    length2 = dot(d, d)
    along = 0.5 * (1.0 + (rp * rp - rq * rq) / length2)
    across = math.copysign(math.sqrt(rp * rp / length2 - along * along), sign)
    return p[0] + along * d[0] - across * d[1], p[1] + along * d[1] + across * d[0]


def side(p, q, point):
    return cross(minus(q, p), minus(point, p))


START_F = (CRANK * math.cos(START_ANGLE), CRANK * math.sin(START_ANGLE))
SIDES = side(START_F, B, START_E), side(A, START_E, START_G), side(A, START_E, START_H)


def points():
    """Joints of the mechanism at the start, and the ends of the spring."""
    e = meet(START_F, ROD, B, ARM, SIDES[0])
    g, h = (meet(A, LONG, e, SHORT, which) for which in SIDES[1:])
    d = minus(e, B)
    # D lies on the link BE, beside the line.
    direction = math.atan2(d[1], d[0]) + 0.5 * math.pi
    attached = turned(D_ON_K3, direction)
    return {"A": A, "B": B, "O": O, "F": START_F, "E": e, "G": g, "H": h, "C": C,
            "D": (B[0] + attached[0], B[1] + attached[1])}


def links():
    """Of each link: angle and centre of mass."""
    at, found = points(), {}
    for name, (_, _, (p, q), ahead, center) in LINKS.items():
        d = minus(at[q], at[p])
        attitude = math.atan2(d[1], d[0]) + ahead
        c = turned(center, attitude)
        found[name] = attitude, (at[p][0] + c[0], at[p][1] + c[1])
    return found


def model(simulation, results):
    text = ModelText("squeezing mechanism", simulation, results)
    for name, (attitude, place) in links().items():
        mass, moment = LINKS[name][:2]
        text.body(name, mass, (moment, moment, moment), (*place, 0.0), turned_about_z(attitude))
    at = {name: (*point, 0.0) for name, point in points().items()}
    for bodies, point in ((("K1", "0"), "O"), (("K2", "K1"), "F"), (("K3", "0"), "B"), (("K5", "0"), "A"),
                          (("K7", "0"), "A"), (("K4", "K5"), "G"), (("K6", "K7"), "H")):
        text.joint(f"{point}-{bodies[0]}", bodies, at[point], HINGE_Z)
    for link in ("K3", "K4", "K6"):
        text.joint(f"E-{link}", ("K2", link), at["E"], ("dx", "dy"))
    ends = at["D"], at["C"]
    text.translation("length", ("K3", "0"), "XYZ", "disp", ends)
    text.force("spring", ("K3", "0"), f"-{STIFFNESS} * (meaval[length] - {FREE_LENGTH})", ends)
    text.torque("motor", ("K1", "0"), f"{TORQUE}", (0, 0, 1))
    return text.text()
