#!/usr/bin/env python3
"""Run problems with published or closed solutions and remake their tables in docs/verification.md.

Each problem of tests/verification runs with a fixed step h, with h / 2 and h / 4, and is compared with the reference
at a few times. A row of the table fails, and with it the script, if the largest error at h / 4 exceeds its bar, if the
order of the method falls short of two, or if the values that h / 2 and h / 4 extrapolate to aren't nearer to the
reference by a factor. The energy of long rows of four-bar windows is that of runs with steps of controlled length.
"""

import argparse
import csv
import dataclasses
import functools
import math
import pathlib
import sys
import tempfile

from make_four_bar import COUPLER, ROD, four_bar
from reference_models import MODELS, model_text, multiply
from result_files import Run, axes, place, replace_table

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLES = ROOT / "tests" / "verification"
BAR = 1e-4  # of errors, as a share of the largest value in the reference
LEAST_ORDER, LEAST_GAIN = 1.9, 3.0  # of the method, and of extrapolation
SHOWN = 4  # numbers of a quantity in the table
EXACT = 1e-9  # share of the largest value below which an error is none of the method
WINDOWS, WINDOW_TOLERANCE, ENERGY_BAR = ((4, False), (40, False), (400, False), (40, True)), 5e-9, 1e-4


class Files:
    """Numbers of one run, by body, joint, load or measure and number of the record."""

    def __init__(self, run):
        self.run = run
        self.states, self.velocities, self.forces = map(run.file, ("srf", "vrf", "crf"))

    @functools.cached_property
    def loads(self):
        return self.run.file("frf")

    @functools.cached_property
    def measures(self):
        return self.run.file("mrf")

    def state(self, body, i):
        return self.states.of(body)[i]

    def omega(self, body, i):
        return self.velocities.of(body)[i][3:6]

    def velocity(self, body, i):
        return self.velocities.of(body)[i][:3]

    def force(self, joint, i):
        return self.forces.force_on_first_body(joint)[i]

    def moment(self, joint, i):
        """On the first body."""
        return self.forces.of(joint)[i][9:12]

    def load(self, uuid, i):
        """Force on the first body."""
        return self.loads.of(uuid)[i][3:6]

    def load_moment(self, uuid, i):
        return self.loads.of(uuid)[i][9:12]

    def measure(self, label, i):
        return self.measures.of(label)[i]

    def angle(self, body, i, start=0.0):
        """Angle about z, followed over all turns; records have to be less than half a turn apart."""
        total = start
        for row in self.states.of(body)[: i + 1]:
            now = math.atan2(row[4], row[3])
            total += math.remainder(now - total, 2.0 * math.pi)
        return total


def tip_of_rod(files, i):
    return place(files.state("rod0", i), (0.0, 0.5, 0.0))[:2]


def velocity_of_tip(files, i):
    return tuple(2.0 * v for v in files.velocity("rod0", i)[:2])


def tension(files, i):
    """Of the spring between two bodies, positive where it pulls them together."""
    line = [b - a for a, b in zip(files.state("first", i)[:3], files.state("second", i)[:3])]
    return sum(x * y for x, y in zip(line, files.load("spring", i))) / math.hypot(*line)


BODY_TEST = {
    "centre of mass": lambda f, i: f.state("body", i)[:3],
    "velocity": lambda f, i: f.velocity("body", i),
    "ground force": lambda f, i: f.force("joint", i),
}
SPRING_TEST = {
    "centre of mass": lambda f, i: f.state("body", i)[:3],
    "velocity": lambda f, i: f.velocity("body", i),
    "spring force": lambda f, i: f.load("spring", i),
}
SPRING_PAIR = {
    "first body": lambda f, i: f.state("first", i)[:3],
    "second body": lambda f, i: f.state("second", i)[:3],
    "distance": lambda f, i: f.measure("distance", i),
    "its rate": lambda f, i: f.measure("rate", i),
    "spring force": lambda f, i: (tension(f, i),),
}
TOP = {
    "centre of mass": lambda f, i: f.state("top", i)[:3],
    "angular velocity": lambda f, i: f.omega("top", i),
    "ground force": lambda f, i: f.force("tip", i),
}
FOUR_BAR = {"top of rod 0": tip_of_rod, "its velocity": velocity_of_tip}
CANTILEVER = {
    "tip": lambda f, i: f.state("tip", i)[:2],
    "tip angle": lambda f, i: (f.angle("tip", i),),
}
FREE_SPIN = {
    "angular velocity and axes": lambda f, i: (*f.omega("strip", i), *f.state("strip", i)[3:12]),
    "modal amplitudes": lambda f, i: f.state("strip", i)[12:],
}
IN_PLANE_MODES = (0, 3, 4, 7, 8, 10)  # of the rod, which vibrates in both planes
QUANTITIES = {
    "top_nutation": TOP,
    "top_precession": TOP,
    "pendulum": {
        "tip": lambda f, i: place(f.state("bar", i), (-0.25, 0.0, 0.0))[:2],
        "ground force": lambda f, i: f.force("hinge", i)[:2]},
    "four_bar_2": FOUR_BAR,
    "four_bar_40": FOUR_BAR,
    "squeezing_mechanism": {
        "crank angle": lambda f, i: (f.angle("K1", i),),
        "crank speed": lambda f, i: f.omega("K1", i)[2:],
        "point E": lambda f, i: place(f.state("K2", i), (-0.0165, 0.0, 0.0))[:2]},
    "spatial_double_pendulum": {
        "centre of body 2": lambda f, i: f.state("lower", i)[:3],
        "angular velocity of body 2": lambda f, i: multiply(axes(f.state("lower", i)), f.omega("lower", i)),
        "ground force": lambda f, i: f.force("ball", i)},
    "planar_chain_10": {
        "tip": lambda f, i: place(f.state("link9", i), (0.1, 0.0, 0.0))[:2],
        "ground force": lambda f, i: f.force("hinge0", i)[:2]},
    "gear_pair": {
        "pinion angle": lambda f, i: (f.angle("pinion", i),),
        "wheel angle": lambda f, i: (f.angle("wheel", i),),
        "tooth moment on wheel": lambda f, i: f.forces.of("teeth")[i][23:]},
    "two_body_spring": SPRING_PAIR,
    "two_body_damper": SPRING_PAIR,
    "controlled_pendulum": {
        "angle": lambda f, i: f.measure("theta", i),
        "its rate": lambda f, i: f.measure("omega", i),
        "torque": lambda f, i: f.load_moment("controller", i)[2:],
        "hinge force": lambda f, i: f.force("hinge", i)[:2]},
    "gravity_ramp": {
        "place": lambda f, i: f.state("mass", i)[:1],
        "speed": lambda f, i: f.velocity("mass", i)[:1],
        "spring force": lambda f, i: f.load("spring", i)[:1]},
    "prescribed_rotor": {
        "angle": lambda f, i: f.measure("angle", i),
        "bearing force": lambda f, i: f.force("bearing", i),
        "drive torque": lambda f, i: f.moment("drive", i)[2:]},
    "prescribed_slider_crank": {
        "slider": lambda f, i: f.state("slider", i)[:1],
        "motor torque": lambda f, i: f.moment("motor", i)[2:],
        "pivot force": lambda f, i: f.force("pivot", i)[:2],
        "pin force on rod": lambda f, i: f.force("crank-pin", i)[:2]},
    "rotational_spring": BODY_TEST,
    "fixed_spring": SPRING_TEST,
    "pulling_spring": SPRING_TEST,
    "flexible_free_spin": FREE_SPIN,
    "flexible_free_spin_coupled": FREE_SPIN,
    "flexible_free_spin_quadratic": FREE_SPIN,
    "flexible_free_spin_linear": FREE_SPIN,
    "flexible_cantilever_static": CANTILEVER,
    "flexible_cantilever": CANTILEVER | {
        "frame": lambda f, i: f.state("beam", i)[:2],
        "modal amplitudes": lambda f, i: [f.state("beam", i)[12 + j] for j in IN_PLANE_MODES]},
    **{name: BODY_TEST for name in ("revolute_1", "revolute_2", "spherical_2", "universal_1", "cylindrical_3")},
}

# Coarsest step [s] of each problem.
STEPS = {
    "top_nutation": 4e-4, "top_precession": 8e-4, "pendulum": 1e-3, "four_bar_2": 1e-3, "four_bar_40": 2e-3,
    "squeezing_mechanism": 1e-5, "spatial_double_pendulum": 4e-4, "planar_chain_10": 4e-4, "gear_pair": 5e-3,
    "two_body_spring": 5e-4, "two_body_damper": 1e-3, "controlled_pendulum": 2e-3, "gravity_ramp": 2e-3,
    "prescribed_rotor": 2e-3, "prescribed_slider_crank": 5e-4, "rotational_spring": 2e-3, "fixed_spring": 5e-3,
    "pulling_spring": 2e-3, "revolute_1": 2e-3, "revolute_2": 2e-3, "spherical_2": 2e-3, "universal_1": 2e-3, "cylindrical_3": 5e-3,
    "flexible_free_spin": 4e-6, "flexible_free_spin_coupled": 4e-6, "flexible_free_spin_quadratic": 4e-6,
    "flexible_free_spin_linear": 4e-6, "flexible_cantilever": 1e-4,
    "flexible_cantilever_static": 1e-3,
}


def read_reference(problem):
    """Times, and for each quantity its values at the times."""
    with (TABLES / f"{problem}.csv").open(encoding="utf-8", newline="") as file:
        head, *rows = csv.reader(line for line in file if not line.startswith("#"))
    numbers = [[float(x) for x in row] for row in rows]
    names = list(dict.fromkeys(head[1:]))
    values = {name: [[x for x, column in zip(row, head) if column == name] for row in numbers] for name in names}
    return [row[0] for row in numbers], values


def read_run(files, problem, names, times):
    found = {name: [] for name in names}
    for t in times:
        record = min(range(len(files.states.times)), key=lambda i: abs(files.states.times[i] - t))
        if abs(files.states.times[record] - t) > 1e-9:
            raise SystemExit(f"{problem}: no record at {t} s")
        for name in names:
            found[name].append(QUANTITIES[problem][name](files, record))
    return found


def largest_error(found, reference):
    return max(math.dist(a, b) for a, b in zip(found, reference))


@dataclasses.dataclass
class Result:
    run: Run
    found: dict


def solve(program, folder, problem, names, times, step):
    model = folder / f"{problem}.toml"
    model.write_text(model_text(problem, step), encoding="utf-8")
    run = Run(program, model, folder / problem)
    return Result(run, read_run(Files(run), problem, names, times))


def extrapolate(coarse, fine):
    """What values of second order tend to as the step, twice as long in `coarse`, goes to zero."""
    return [[(4.0 * b - a) / 3.0 for a, b in zip(u, v)] for u, v in zip(coarse, fine)]


def judge(problem, name, reference, results):
    """A row of the table, and what is wrong with it."""
    errors = [largest_error(result.found[name], reference) for result in results]
    orders = [math.log2(a / b) for a, b in zip(errors, errors[1:])]
    rest = largest_error(extrapolate(*(result.found[name] for result in results[-2:])), reference)
    scale = max(math.hypot(*values) for values in reference)
    is_exact = errors[-1] <= EXACT * scale
    faults = [f"order {order:.3f}" for order in orders if order < LEAST_ORDER and not is_exact]
    if errors[-1] > BAR * scale:
        faults.append(f"error {errors[-1]:.1e}")
    if rest > errors[-1] / LEAST_GAIN and not is_exact:
        faults.append(f"extrapolated error {rest:.1e}")
    last, run = ", ".join(f"{x if abs(x) > 1e-12 else 0.0:.9g}" for x in reference[-1][:SHOWN]), results[-1].run
    last += ", ..." if len(reference[-1]) > SHOWN else ""
    row = [problem.replace("_", " "), name, last, f"{errors[-1]:.1e}", "exact" if is_exact else f"{orders[-1]:.2f}", f"{rest:.1e}", run.steps,
           f"{run.seconds:.2f}"]
    return row, [f"{problem}, {name}: {fault}" for fault in faults]


def verify_problem(program, folder, problem):
    times, reference = read_reference(problem)
    results = [solve(program, folder, problem, reference, times, STEPS[problem] / n) for n in (1, 2, 4)]
    judged = [judge(problem, name, values, results) for name, values in reference.items()]
    return [row for row, _ in judged], [fault for _, faults in judged for fault in faults]


def energy_of_windows(count, state, velocity):
    """Kinetic and potential energy of one record; rods come first in the files."""
    kinetic = potential = 0.0
    for link, (row, rates) in enumerate(zip(state, velocity)):
        moments = ROD if link <= count else COUPLER
        kinetic += 0.5 * sum(v * v for v in rates[:3]) + 0.5 * sum(m * w * w for m, w in zip(moments, rates[3:]))
        potential += 9.81 * row[1]
    return kinetic, potential


def verify_windows(program, folder, count, hinges):
    model = folder / f"windows_{count}_{hinges}.toml"
    simulation = {"end_time": 10.0, "step": 1e-3, "tolerance": WINDOW_TOLERANCE}
    model.write_text(four_bar(count, simulation, hinges), encoding="utf-8")
    run = Run(program, model, folder / model.stem)
    states, velocities = run.file("srf"), run.file("vrf")
    energies = [energy_of_windows(count, *rows) for rows in zip(states.rows, velocities.rows)]
    drift = max(abs(sum(e) - sum(energies[0])) for e in energies) / energies[0][1]
    redundant = int(run.number(r"(\d+) redundant equations"))
    name = f"{count}, all joints hinges" if hinges else str(count)
    faults = [f"{name}: energy {drift:.1e}"] if drift > ENERGY_BAR else []
    if redundant != (3 * count if hinges else 0):
        faults.append(f"{name}: {redundant} redundant equations")
    return [name, redundant, f"{energies[0][1]:.6g}", f"{drift:.1e}", run.steps, f"{run.seconds:.2f}"], faults


def make_table(head, rows):
    lines = [head, "---".join("|" * (len(rows[0]) + 1))]
    return "\n".join(lines + ["| " + " | ".join(map(str, row)) + " |" for row in rows])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="the built program velmora")
    parser.add_argument("--document", type=pathlib.Path, default=ROOT / "docs" / "verification.md")
    parser.add_argument("--print", action="store_true", help="print the tables and leave the document alone")
    arguments = parser.parse_args()

    rows, window_rows, faults = [], [], []
    with tempfile.TemporaryDirectory() as name:
        for problem in MODELS:
            found, wrong = verify_problem(arguments.program, pathlib.Path(name), problem)
            rows += found
            faults += wrong
        for count, hinges in WINDOWS:
            row, wrong = verify_windows(arguments.program, pathlib.Path(name), count, hinges)
            window_rows.append(row)
            faults += wrong
    tables = {
        "reference table": make_table(
            "| problem | quantity | reference at the end | error | order | extrapolated | steps | time [s] |", rows),
        "window table": make_table(
            "| N | redundant equations | potential energy at the start [J] | drift of energy | steps | time [s] |",
            window_rows)}
    for name, table in tables.items():
        print(table) if arguments.print else replace_table(arguments.document, name, table)
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    main()
