#!/usr/bin/env python3
"""Verify flexible bodies on beams of velmora-beam, and write the tables in docs/verification.md.

A cantilever under a load at its end, a pendulum whose rod gets stiffer, and the spin-up of a beam: its convergence with
the step and the number of modes, and how far the formulation is from a beam that rotation stiffens. That one is
Galerkin's method with clamped modes and the centrifugal tension (S. Putter, H. Manor, "Natural frequencies of radial
rotating beams", Journal of Sound and Vibration 56, 1978).

Usage: scripts/verify_flexible.py <velmora> <velmora-beam>
"""

import argparse
import functools
import math
import pathlib
import subprocess
import sys
import tempfile

from model_text import BALL, FLAGS, HINGE_Z, ModelText
from result_files import Run, place, replace_table

ROOT = pathlib.Path(__file__).resolve().parent.parent
X, Y, ORIGIN = (1, 0, 0), (0, 1, 0), (0, 0, 0)
RESULTS = {"WriteStateResultFile": True, "WriteMeasureResultFile": True}
SMALL = 1e-4, (1e-8, 1e-8, 1e-8)  # mass and moments of a body that only carries joints
ROOTS = (1.8751040687119611, 4.6940911329741746, 7.8547574382376126)  # cos(x) cosh(x) = -1
LEAST_ORDER = 1.9


class Beam:
    """A beam with a rectangular section and joints at both ends."""

    def __init__(self, length, y, z, young, density, elements=8):
        self.length, self.y, self.z, self.young, self.density = length, y, z, young, density
        self.elements = elements
        self.mass = density * length * y * z
        self.bending = young * z * y ** 3 / 12  # in the plane

    def inertia(self):
        return tuple(self.mass * s / 12 for s in (
            self.y ** 2 + self.z ** 2, self.length ** 2 + self.z ** 2, self.length ** 2 + self.y ** 2))

    def modal_file(self, program, path, modes):
        command = [program, path, "--length", self.length, "--rectangle", self.y, self.z, "--young", self.young,
                   "--density", self.density, "--elements", self.elements, "--modes", modes]
        subprocess.run([str(word) for word in command], check=True, capture_output=True)
        return path


class Runner:
    """Runs models in a folder of their own."""

    def __init__(self, velmora, velmora_beam, folder):
        self.velmora, self.velmora_beam, self.folder = velmora, velmora_beam, pathlib.Path(folder)
        self.count = 0

    def run(self, text):
        self.count += 1
        model = self.folder / f"model{self.count}.toml"
        model.write_text(text, encoding="utf-8")
        return Run(self.velmora, model, self.folder / f"results{self.count}")

    def modal_file(self, beam, modes):
        self.count += 1
        return beam.modal_file(self.velmora_beam, self.folder / f"beam{self.count}.mtx", modes)


def fixed_steps(end_time, step):
    return {"end_time": end_time, "step": step, "fixed_step": True, "alpha": -0.05}


def add_chain(model, files, beam, pieces, damping):
    """Beams along x, welded to one another and to the body "hub" at the origin by small bodies; the last is "tip"."""
    length, before = beam.length / pieces, "hub"
    for i in range(pieces):
        after = "tip" if i + 1 == pieces else f"link{i}"
        model.flexible_body(f"beam{i}", files, ((i + 0.5) * length, 0, 0), damping=damping)
        model.body(after, *SMALL, ((i + 1) * length, 0, 0))
        model.weld(f"root{i}", before, f"beam{i}", (i * length, 0, 0), 1)
        model.weld(f"end{i}", after, f"beam{i}", ((i + 1) * length, 0, 0), beam.elements + 1)
        before = after


def cantilever(runner, beam, load):
    """Deflection at the end, at rest, and what the linear theory of beams says."""
    model = ModelText("cantilever", fixed_steps(12.0, 2e-3), RESULTS | {"OutputTimeStepSize": 12.0})
    model.body("hub", 1.0, (1, 1, 1), ORIGIN)
    model.joint("wall", ("hub", "0"), ORIGIN, FLAGS)
    add_chain(model, runner.modal_file(beam, 2), beam, 1, damping="2")
    model.force("pull", ("tip", "0"), repr(-load), ((beam.length, 0, 0), ORIGIN), Y)
    last = runner.run(model.text()).file("srf").of("tip")[-1]
    return -last[1], load * beam.length ** 3 / (3 * beam.bending)


def pendulum(runner, beam, is_flexible, step):
    """Place of the end of a rod that fell from the horizontal for one second."""
    model = ModelText("pendulum", fixed_steps(1.0, step), RESULTS | {"OutputTimeStepSize": 1.0})
    model.body("hub", 0.5, (5e-4, 5e-4, 5e-4), ORIGIN)
    model.joint("hinge", ("hub", "0"), ORIGIN, HINGE_Z)
    if is_flexible:
        add_chain(model, runner.modal_file(beam, 2), beam, 1, damping="0")
    else:
        model.body("rod", beam.mass, beam.inertia(), (beam.length / 2, 0, 0))
        model.body("tip", *SMALL, (beam.length, 0, 0))
        model.joint("root", ("hub", "rod"), ORIGIN, FLAGS)
        model.joint("end", ("rod", "tip"), (beam.length, 0, 0), FLAGS)
    model.gravity((0, -9.81, 0))
    return runner.run(model.text()).file("srf").of("tip")[-1][:2]


SPIN_BEAM = Beam(10.0, 0.0168687, 0.5, 70e9, 142.275)  # 1.2 kg/m, 14 kN m^2; stiff out of the plane
SPIN_TIME = 15.0


def spin_up(runner, speed, step, modes, pieces=1):
    """Times, deflections of the tip across the hub in a spin-up to the speed."""
    model = ModelText("spin-up", fixed_steps(20.0, step), RESULTS | {"OutputTimeStepSize": 0.1})
    model.body("hub", 1.0, (0.01, 0.01, 0.01), ORIGIN)
    model.joint("bearing", ("hub", "0"), ORIGIN, HINGE_Z)
    piece = Beam(SPIN_BEAM.length / pieces, SPIN_BEAM.y, SPIN_BEAM.z, SPIN_BEAM.young, SPIN_BEAM.density)
    files = runner.modal_file(piece, modes)
    add_chain(model, files, Beam(SPIN_BEAM.length, *(SPIN_BEAM.y, SPIN_BEAM.z, SPIN_BEAM.young, SPIN_BEAM.density)),
              pieces, damping="0")
    model.rotation("angle", ("hub", "0"), "Angle", X, (X, Y))
    model.translation("deflection", ("hub", "tip"), "Y", "disp", (ORIGIN, (SPIN_BEAM.length, 0, 0)))
    model.motion("motor", ("hub", "0"), "angle", (
        f"if (simtime[] < 15, {speed} / 15 * (simtime[]^2 / 2 + (15 / (2 * pi))^2 * (cos(2 * pi * simtime[] / 15)"
        f" - 1)), {speed} * (simtime[] - 7.5))"), 0.0, ORIGIN)
    file = runner.run(model.text()).file("mrf")
    return file.times, [row[0] for row in file.of("deflection")]


def clamped_mode(root, s):
    """Shape and slope at s = x / L of a clamped-free beam, of norm 1 over s from 0 to 1."""
    sigma = (math.cosh(root) + math.cos(root)) / (math.sinh(root) + math.sin(root))
    z = root * s
    shape = math.cosh(z) - math.cos(z) - sigma * (math.sinh(z) - math.sin(z))
    slope = root * (math.sinh(z) + math.sin(z) - sigma * (math.cosh(z) - math.cos(z)))
    return shape, slope


@functools.cache
def galerkin_matrices():
    """omega_j^2, kappa_jk, integral of s phi_j and shapes at the tip, with the mass of the beam as the unit."""
    n, points = len(ROOTS), 4000
    kappa, moment = [[0.0] * n for _ in range(n)], [0.0] * n
    for k in range(points):
        s = (k + 0.5) / points
        modes = [clamped_mode(root, s) for root in ROOTS]
        for i in range(n):
            moment[i] += s * modes[i][0] / points
            for j in range(n):
                kappa[i][j] += 0.5 * (1.0 - s * s) * modes[i][1] * modes[j][1] / points
    stiffness = SPIN_BEAM.bending / (SPIN_BEAM.mass / SPIN_BEAM.length * SPIN_BEAM.length ** 4)
    return [root ** 4 * stiffness for root in ROOTS], kappa, moment, [clamped_mode(root, 1.0)[0] for root in ROOTS]


def galerkin(speed, is_stiffened, step=1e-3):
    """Largest deflection of the tip: q'' + (omega^2 - w^2 + w^2 kappa) q = -w' L (integral of s phi)."""
    omega2, kappa, moment, tip = galerkin_matrices()
    n = len(omega2)

    def rates(t, state):
        q, v = state[:n], state[n:]
        ramp = t < SPIN_TIME
        w = speed / SPIN_TIME * (t - SPIN_TIME / (2 * math.pi) * math.sin(2 * math.pi * t / SPIN_TIME)) if ramp else speed
        dw = speed / SPIN_TIME * (1 - math.cos(2 * math.pi * t / SPIN_TIME)) if ramp else 0.0
        a = [-(omega2[i] - w * w) * q[i] - dw * SPIN_BEAM.length * moment[i]
             - (w * w * sum(kappa[i][j] * q[j] for j in range(n)) if is_stiffened else 0.0) for i in range(n)]
        return v + a

    state, largest = [0.0] * (2 * n), 0.0
    for k in range(round(20.0 / step)):
        t = k * step
        k1 = rates(t, state)
        k2 = rates(t + step / 2, [x + step / 2 * d for x, d in zip(state, k1)])
        k3 = rates(t + step / 2, [x + step / 2 * d for x, d in zip(state, k2)])
        k4 = rates(t + step, [x + step * d for x, d in zip(state, k3)])
        state = [x + step / 6 * (a + 2 * b + 2 * c + d) for x, a, b, c, d in zip(state, k1, k2, k3, k4)]
        largest = max(largest, abs(sum(q * s for q, s in zip(state, tip))))
    return largest


def largest(history):
    return max(abs(x) for x in history[1])


def table(head, rows):
    lines = [f"| {' | '.join(head)} |", "|---" * len(head) + "|"]
    return "\n".join(lines + [f"| {' | '.join(row)} |" for row in rows])


def verify_statics(runner, faults):
    rows = []
    for load in (0.1, 1.0):
        found, expected = cantilever(runner, Beam(1.0, 0.01, 0.02, 70e9, 2700.0), load)
        error = abs(found / expected - 1.0)
        rows.append([f"{load:g}", f"{1e3 * found:.6f}", f"{1e3 * expected:.6f}", f"{error:.1e}"])
        if error > 4.0 * found ** 2:  # what is of second order in the slope
            faults.append(f"cantilever: {error:.1e}")
    return table(["load [N]", "deflection [mm]", "linear theory [mm]", "difference"], rows)


def verify_stiff_rod(runner, faults):
    rows, before, step = [], None, 2.5e-4
    rigid = pendulum(runner, Beam(1.0, 0.004, 0.02, 70e9, 2700.0), False, step)
    for factor in (1, 10, 100, 1000):
        found = pendulum(runner, Beam(1.0, 0.004, 0.02, 70e9 * factor, 2700.0), True, step)
        difference = math.dist(found, rigid)
        rows.append([f"{factor}", f"{1e3 * difference:.5f}"])
        if before and factor > 1 and difference > before / 5:
            faults.append(f"stiff rod: {difference:.1e} after {before:.1e}")
        before = difference
    return table(["stiffness", "distance from the rigid rod's end [mm]"], rows)


def verify_convergence(runner, faults):
    rows = []
    steps = [largest(spin_up(runner, 2.0, h, 4)) for h in (0.02, 0.01, 0.005)]
    order = math.log2((steps[1] - steps[0]) / (steps[2] - steps[1]))
    rows += [[f"{h}", "4", f"{1e3 * x:.5f}"] for h, x in zip((0.02, 0.01, 0.005), steps)]
    modes = [largest(spin_up(runner, 2.0, 0.005, n)) for n in (0, 1, 2, 4)]
    rows += [["0.005", f"{n}", f"{1e3 * x:.5f}"] for n, x in zip((0, 1, 2), modes)]
    if abs(order) < LEAST_ORDER:
        faults.append(f"spin-up: order {order:.2f}")
    changes = [abs(b - a) for a, b in zip(modes, modes[1:])]
    if changes[-1] > 0.1 * changes[0]:
        faults.append(f"spin-up: modes change the deflection by {changes}")
    return table(["step [s]", "modes with the interface held", "largest deflection [mm]"], rows), order


def verify_stiffening(runner, faults):
    rows = []
    for speed in (0.5, 1.0, 2.0, 3.0):
        stiffened, soft = galerkin(speed, True), galerkin(speed, False)
        found = [largest(spin_up(runner, speed, 0.005, 4, pieces)) for pieces in (1, 2, 4)]
        rows.append([f"{speed:g}", f"{1e3 * stiffened:.2f}", f"{1e3 * soft:.2f}",
                     *(f"{1e3 * x:.2f} ({100 * (x / stiffened - 1):+.1f} %)" for x in found)])
        errors = [abs(x / stiffened - 1) for x in found]
        if speed >= 1.0 and not errors[2] < errors[1] < errors[0]:
            faults.append(f"spin-up to {speed}: pieces don't help: {errors}")
    return table(["speed [rad/s]", "with stiffening [mm]", "without [mm]", "one flexible body [mm]", "two", "four"], rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("program", help="the program velmora")
    parser.add_argument("beam", help="the program velmora-beam")
    parser.add_argument("--document", type=pathlib.Path, default=ROOT / "docs" / "verification.md")
    parser.add_argument("--print", action="store_true", help="print the tables and leave the document alone")
    arguments = parser.parse_args()
    faults = []
    with tempfile.TemporaryDirectory() as folder:
        runner = Runner(arguments.program, arguments.beam, folder)
        convergence, order = verify_convergence(runner, faults)
        tables = {"cantilever table": verify_statics(runner, faults), "stiff rod table": verify_stiff_rod(runner, faults),
                  "spin-up convergence table": convergence, "stiffening table": verify_stiffening(runner, faults)}
    print(f"order of the step: {order:.2f}")
    for name, text in tables.items():
        print(text) if arguments.print else replace_table(arguments.document, name, text)
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    main()
