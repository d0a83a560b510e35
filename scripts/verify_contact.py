#!/usr/bin/env python3
"""Verify contact, and write the tables in docs/verification.md.

A ball that its weight presses into an elastic floor, against the law's own integral over the cap; its rebound, against a
movement in one coordinate under the same law; bounces without losses; a block that sticks and slides on a slope; two
free bodies that collide.

Usage: scripts/verify_contact.py <velmora>
"""

import argparse
import functools
import math
import pathlib
import subprocess
import sys
import tempfile

import make_surface
from model_text import FLAGS, ModelText, cross
from result_files import Run, axes, replace_table

ROOT = pathlib.Path(__file__).resolve().parent.parent
G, RADIUS, MASS = 9.81, 0.1, 1.0
LAYER = {"YoungsModulus": 1e6, "PoissonsRatio": 0.3, "LayerThickness": 0.02}
STIFFNESS = 0.5 * (1 - 0.3) * 1e6 / ((1 + 0.3) * (1 - 2 * 0.3) * 0.02)  # N/m^3; two layers in series
DAMPING, TRANSITION = 1e4, 1e-3  # N s/m^3, m
ORIGIN, FLOOR = (0, 0, 0), (0, 0, -0.1)  # the floor's top is at z = 0
LEAST_ORDER = 1.8


def contact_keys(damping=0.0, friction=0.0):
    return LAYER | {
        "Task": 2, "MaxPenetration": 0.03, "DampingCompression": damping, "DampingExpansion": damping,
        "ModeOfDampingTransition": 2, "DepthOfDampingTransition": TRANSITION, "SlidingFrictionCoeff": friction,
        "FrictionRegularizationVelocity": 0.01}


class Runner:
    """Runs models in a folder of their own, and keeps their surfaces there."""

    def __init__(self, velmora, folder):
        self.velmora, self.folder = velmora, pathlib.Path(folder)
        self.count = 0

    @functools.cache
    def surface(self, shape, *arguments):
        corners, triangles = getattr(make_surface, shape)(*arguments)
        name = self.folder / f"{shape}{'_'.join(map(str, arguments))}.obj"
        name.write_text("".join(f"v {x!r} {y!r} {z!r}\n" for x, y, z in corners)
                        + "".join(f"f {a + 1} {b + 1} {c + 1}\n" for a, b, c in triangles), encoding="utf-8")
        return name

    def write(self, model):
        self.count += 1
        file = self.folder / f"model{self.count}.toml"
        file.write_text(model.text(), encoding="utf-8")
        return file, self.folder / f"results{self.count}"

    def run(self, model):
        return Run(self.velmora, *self.write(model))

    def rest(self, model, body):
        """Place of a body at rest."""
        file, results = self.write(model)
        done = subprocess.run([str(self.velmora), "static", str(file), "-o", str(results)], capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"{file}: exit code {done.returncode}\n{done.stderr}{done.stdout}")
        lines = (results / f"{file.stem}_positions.csv").read_text(encoding="utf-8").splitlines()
        return next([float(x) for x in line.split(",")[1:4]] for line in lines[1:] if line.split(",")[0] == body)


def make_model(runner, simulation, body, surface, keys, gravity=(0, 0, -G)):
    """A body with a surface over the floor, which is held."""
    model = ModelText("contact", simulation, {"WriteStateResultFile": True, "WriteVelocityResultFile": True})
    model.body("floor", 1.0, (1, 1, 1), FLOOR)
    model.joint("ground", ("floor", "0"), FLOOR, FLAGS)
    model.body("body", *body)
    model.gravity(gravity)
    model.contact("contact", ("body", "floor"), (surface, runner.surface("box", 4.0, 4.0, 0.2)), (body[2], FLOOR), keys)
    return model


def ball_at(height, **keys):
    moment = 0.4 * MASS * RADIUS ** 2
    return MASS, (moment,) * 3, (0.013, 0.021, height), *keys.values()


def cap_force(depth, speed, damping):
    """Of the floor on the ball that moves down with `speed`: integral of the pressure over the disc of the cap.

    A ring at the depth x below the floor has the area 2 pi r dr = 2 pi (R - depth + x) dx, seen from above, and its
    normal the cosine c = (R - depth + x) / R, so that p = k x + c d share(x) c speed there.
    """
    if depth <= 0.0:
        return 0.0
    n, force = 200, 0.0
    for i in range(n):
        x = depth * (i + 0.5) / n
        axial, t = RADIUS - depth + x, min(x / TRANSITION, 1.0)
        pressure = STIFFNESS * x + (axial / RADIUS) ** 2 * damping * t * t * (3 - 2 * t) * speed
        force += max(pressure, 0.0) * 2 * math.pi * axial * depth / n
    return force


def verify_penetration(runner, faults):
    """k times the volume of the cap, pi d^2 (R - d / 3), is the weight."""
    depth = 1e-3
    for _ in range(50):
        excess = STIFFNESS * math.pi * depth ** 2 * (RADIUS - depth / 3) - MASS * G
        depth -= excess / (STIFFNESS * math.pi * depth * (2 * RADIUS - depth))
    rows, before = [], None
    for n in (8, 16, 32, 64):
        model = make_model(runner, {"end_time": 1.0}, ball_at(RADIUS - 1e-3), runner.surface("ball", RADIUS, n), contact_keys())
        found = RADIUS - runner.rest(model, "body")[2]
        error = found - depth
        order = math.log2(before / error) if before else None
        rows.append([f"{12 * n * n}", f"{1e3 * found:.5f}", f"{1e3 * error:.5f}", f"{order:.2f}" if order else ""])
        before = error
    if order < LEAST_ORDER:
        faults.append(f"penetration: order {order:.2f}")
    return table(["triangles of the ball", f"depth [mm], exact {1e3 * depth:.5f}", "error [mm]", "order"], rows)


def rebound(height, damping, step=2e-5):
    """Upward over downward speed of a ball that falls from this height above the floor."""
    down = math.sqrt(2 * G * height)
    d, v = 0.0, down  # depth and its rate

    def acceleration(depth, rate):
        return G - cap_force(depth, rate, damping) / MASS

    while d >= 0.0:  # the midpoint rule
        middle = d + 0.5 * step * v, v + 0.5 * step * acceleration(d, v)
        d, v = d + step * middle[1], v + step * acceleration(*middle)
    return -v / down


def verify_rebound(runner, faults):
    height, rows = 0.3, []
    expected = rebound(height, DAMPING)
    for n, tolerance in ((16, 1e-7), (32, 1e-5), (32, 1e-6), (32, 1e-7)):
        model = make_model(runner, {"end_time": 0.32, "step": 1e-4, "max_step": 2e-3, "tolerance": tolerance}, ball_at(RADIUS + height),
                           runner.surface("ball", RADIUS, n), contact_keys(DAMPING))
        run = runner.run(model)
        z, speed = run.file("srf").of("body")[-1][2], run.file("vrf").of("body")[-1][2]
        found = math.sqrt((z - RADIUS + speed ** 2 / (2 * G)) / height)
        rows.append([f"{12 * n * n}", f"{tolerance:.0e}", f"{run.steps}", f"{found:.5f}", f"{found - expected:+.5f}"])
    if abs(found - expected) > 5e-4:
        faults.append(f"rebound: {found} in place of {expected}")
    return table(["triangles of the ball", "tolerance", "steps", "restitution", f"off {expected:.5f} by"], rows)


def verify_energy(runner, faults):
    """Energy per weight in flight, as a height over that at the start."""
    rows = []
    for tolerance in (1e-5, 1e-6, 1e-7):
        start = ball_at(RADIUS + 0.1)
        model = make_model(runner, {"end_time": 2.5, "step": 1e-4, "max_step": 2e-3, "tolerance": tolerance}, start,
                           runner.surface("ball", RADIUS, 16), contact_keys())
        run = runner.run(model)
        heights = [row[2] for row in run.file("srf").of("body")]
        speeds = [row[2] for row in run.file("vrf").of("body")]
        flight = [z + v * v / (2 * G) - start[2][2] for z, v in zip(heights, speeds) if z > RADIUS + 0.01]
        bounces = sum(1 for a, b in zip(speeds, speeds[1:]) if a < 0.0 <= b)
        rows.append([f"{tolerance:.0e}", f"{run.steps}", f"{bounces}", f"{1e3 * max(flight):.4f}", f"{1e3 * min(flight):.4f}"])
        growth = max(flight)
    if growth > 1e-4:
        faults.append(f"energy: grows by {growth} m")
    return table(["tolerance", "steps", "bounces", "largest gain [mm of 100 mm]", "largest loss [mm]"], rows)


def slide(angle, friction, time, step=1e-5):
    """Speed of a block on a slope after this time, friction regularised at 0.01 m/s."""
    v = 0.0
    for _ in range(round(time / step)):
        v += step * G * (math.sin(angle) - friction * math.cos(angle) * v / math.hypot(v, 0.01))
    return v


def verify_slope(runner, faults):
    friction, rows = 0.3, []
    size = 0.2, 0.2, 0.05
    for tangent in (0.1, 0.2, 0.29, 0.31, 0.5):
        angle = math.atan(tangent)
        depth = MASS * G * math.cos(angle) / (STIFFNESS * size[0] * size[1])
        body = MASS, (4e-3, 4e-3, 7e-3), (0.0, 0.0, size[2] / 2 - depth)
        model = make_model(runner, {"end_time": 1.0, "step": 1e-4, "max_step": 2e-3, "tolerance": 1e-6}, body, runner.surface("box", *size),
                           contact_keys(DAMPING, friction), (G * math.sin(angle), 0, -G * math.cos(angle)))
        found = runner.run(model).file("vrf").of("body")[-1][0]
        expected = slide(angle, friction, 1.0)
        rows.append([f"{tangent}", "sticks" if tangent < friction else "slides", f"{found:.6f}", f"{expected:.6f}"])
        if abs(found - expected) > 1e-3 * expected + 1e-5:
            faults.append(f"slope {tangent}: {found} in place of {expected}")
    return table(["slope", "the block", "speed after 1 s [m/s]", "one coordinate [m/s]"], rows)


def global_spin(place, row):
    """The angular velocity, which a velocity file gives in the body's frame."""
    return [sum(axis[i] * w for axis, w in zip(axes(place), row[3:6])) for i in range(3)]


def verify_collision(runner, faults):
    """Two free balls that hit off centre, with friction and damping."""
    model = ModelText("collision", {"end_time": 0.3, "step": 1e-4, "max_step": 2e-3, "tolerance": 1e-6}, {"WriteStateResultFile": True, "WriteVelocityResultFile": True})
    moment, places = 0.4 * MASS * RADIUS ** 2, ((0, 0, 0), (0.25, 0.08, 0.03))
    model.body("first", MASS, (moment,) * 3, places[0], velocity=(1.5, 0, 0), omega=(0, 0, 20))
    model.body("second", 2 * MASS, (2 * moment,) * 3, places[1], velocity=(-0.5, 0, 0), omega=(5, 0, 0))
    surface = runner.surface("ball", RADIUS, 16)
    model.contact("contact", ("first", "second"), (surface, surface), places, contact_keys(DAMPING, 0.3) | {"Task": 0})
    run = runner.run(model)
    masses, rows = (MASS, 2 * MASS), list(zip(*(run.file("vrf").of(name) for name in ("first", "second"))))
    positions = zip(*(run.file("srf").of(name) for name in ("first", "second")))
    momenta = [[sum(m * v[i] for m, v in zip(masses, row)) for i in range(3)] for row in rows]
    angular = [[sum(m * (cross(r, v)[i] + 0.4 * RADIUS ** 2 * spin[i]) for m, r, v, spin in zip(
        masses, place, row, map(global_spin, place, row))) for i in range(3)] for place, row in zip(positions, rows)]
    drifts = [max(math.dist(p, momentum[0]) for p in momentum) for momentum in (momenta, angular)]
    change = [math.dist(rows[0][0][k:k + 3], rows[-1][0][k:k + 3]) for k in (0, 3)]
    if min(change) < 0.5 or max(drifts) > 1e-4:
        faults.append(f"collision: changes {change}, drifts {drifts}")
    return table(["change of the first ball's velocity [m/s]", "of its angular velocity [rad/s]", "drift of momentum [kg m/s]",
                  "of angular momentum [kg m^2/s]"],
                 [[f"{change[0]:.3f}", f"{change[1]:.3f}", f"{drifts[0]:.1e}", f"{drifts[1]:.1e}"]])


def table(head, rows):
    lines = [f"| {' | '.join(head)} |", "|---" * len(head) + "|"]
    return "\n".join(lines + [f"| {' | '.join(row)} |" for row in rows])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("program", help="the program velmora")
    parser.add_argument("--document", type=pathlib.Path, default=ROOT / "docs" / "verification.md")
    parser.add_argument("--print", action="store_true", help="print the tables and leave the document alone")
    arguments = parser.parse_args()
    faults = []
    with tempfile.TemporaryDirectory() as folder:
        runner = Runner(arguments.program, folder)
        tables = {f"contact {name} table": verify(runner, faults) for name, verify in (
            ("penetration", verify_penetration), ("rebound", verify_rebound), ("energy", verify_energy),
            ("slope", verify_slope), ("collision", verify_collision))}
    for name, text in tables.items():
        print(text) if arguments.print else replace_table(arguments.document, name, text)
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    main()
