"""Andrews' squeezing mechanism: seven plane links with one freedom, all loops closed at the point E.

Dimensions, masses and start are those of problem A03 of the IFToMM library of computational benchmarks, and of the
test set for initial value problem solvers (Mazzia and Magherini, 2008). Here the crank is given a speed, and gravity
takes the place of motor and spring. The one equation of motion then has an energy integral, and the time at which
the crank comes to an angle is an integral over the angle (Eksergian's equation; Paul, "Kinematics and Dynamics of
Planar Machinery", 1979): no equation is integrated in time.
"""

import math

from model_text import HINGE_Z, ModelText, turned_about_z

A, B, O = (-0.06934, -0.00227), (-0.03635, 0.03273), (0.0, 0.0)
CRANK, ROD, ARM, LONG, SHORT = 0.007, 0.028, 0.035, 0.04, 0.02  # |OF|, |FE|, |BE|, |AG| = |AH|, |GE| = |HE|
START_ANGLE, START_SPEED, GRAVITY = -0.0617138900142764496, 500.0, 9.81
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


def follow(p, dp, q, dq, x):
    """Change of x, at fixed distances from p and q, while these change by dp and dq."""
    u, v = minus(x, p), minus(x, q)
    a, b, det = dot(u, dp), dot(v, dq), cross(u, v)
    return (a * v[1] - b * u[1]) / det, (b * u[0] - a * v[0]) / det


def points(angle):
    """Joints of the mechanism and their derivatives with respect to the angle of the crank."""
    f = turned((CRANK, 0.0), angle)
    df, rest = (-f[1], f[0]), (0.0, 0.0)
    e = meet(f, ROD, B, ARM, SIDES[0])
    de = follow(f, df, B, rest, e)
    at, slope = {"A": A, "B": B, "O": O, "F": f, "E": e}, {"A": rest, "B": rest, "O": rest, "F": df, "E": de}
    for name, which in (("G", SIDES[1]), ("H", SIDES[2])):
        at[name] = meet(A, LONG, e, SHORT, which)
        slope[name] = follow(A, rest, e, de, at[name])
    return at, slope


def links(angle):
    """Of each link: angle, centre of mass, and the derivatives of both with respect to the angle of the crank."""
    at, slope = points(angle)
    found = {}
    for name, (_, _, (p, q), ahead, center) in LINKS.items():
        d, dd = minus(at[q], at[p]), minus(slope[q], slope[p])
        attitude, rate = math.atan2(d[1], d[0]) + ahead, cross(d, dd) / dot(d, d)
        c = turned(center, attitude)
        place = at[p][0] + c[0], at[p][1] + c[1]
        found[name] = attitude, place, rate, (slope[p][0] - rate * c[1], slope[p][1] + rate * c[0])
    return found


def inertia_and_potential(angle):
    inertia = potential = 0.0
    for name, (_, place, rate, velocity) in links(angle).items():
        mass, moment = LINKS[name][:2]
        inertia += mass * dot(velocity, velocity) + moment * rate * rate
        potential += mass * GRAVITY * place[1]
    return inertia, potential


def energy():
    inertia, potential = inertia_and_potential(START_ANGLE)
    return 0.5 * inertia * START_SPEED**2 + potential


def speed(angle, total):
    inertia, potential = inertia_and_potential(angle)
    return math.sqrt(2.0 * (total - potential) / inertia)


GAUSS = ((0.0, 128 / 225), *(
    (sign * math.sqrt(5 - way * 2 * math.sqrt(10 / 7)) / 3, (322 + way * 13 * math.sqrt(70)) / 900)
    for sign in (-1, 1) for way in (-1, 1)))


def duration(begin, end, total, intervals):
    """Time in which the crank goes from one angle to another, by Gauss' rule of order ten in each interval."""
    half = 0.5 * (end - begin) / intervals
    middles = (begin + (2 * i + 1) * half for i in range(intervals))
    return sum(half * w / speed(m + half * x, total) for m in middles for x, w in GAUSS)


def reference(times, intervals_per_radian=40):
    """(time, angle of the crank, its speed, E) at the times, in rising order."""
    total, angle, t, rows = energy(), START_ANGLE, 0.0, []
    for target in times:
        while abs(target - t) > 1e-17:
            step = (target - t) * speed(angle, total)
            t += duration(angle, angle + step, total, 2 + int(intervals_per_radian * abs(step)))
            angle += step
            if abs(step) < 1e-13:
                break
        rows.append((target, angle, speed(angle, total), *points(angle)[0]["E"]))
    return rows


def model(simulation, results):
    text = ModelText("squeezing mechanism", simulation, results)
    for name, (attitude, place, rate, velocity) in links(START_ANGLE).items():
        mass, moment = LINKS[name][:2]
        text.body(name, mass, (moment, moment, moment), (*place, 0.0), turned_about_z(attitude),
                  tuple(START_SPEED * v for v in (*velocity, 0.0)), (0.0, 0.0, START_SPEED * rate))
    at = {name: (*point, 0.0) for name, point in points(START_ANGLE)[0].items()}
    for bodies, point in ((("K1", "0"), "O"), (("K2", "K1"), "F"), (("K3", "0"), "B"), (("K5", "0"), "A"),
                          (("K7", "0"), "A"), (("K4", "K5"), "G"), (("K6", "K7"), "H")):
        text.joint(f"{point}-{bodies[0]}", bodies, at[point], HINGE_Z)
    for link in ("K3", "K4", "K6"):
        text.joint(f"E-{link}", ("K2", link), at["E"], ("dx", "dy"))
    text.gravity((0.0, -GRAVITY, 0.0))
    return text.text()
