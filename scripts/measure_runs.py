#!/usr/bin/env python3
"""Measures whole runs of make_chain.py and make_four_bar.py and writes three tables of docs/performance.md.

Usage: scripts/measure_runs.py <path of the built velmora>

The first table shows how the time grows with the number of links, at fixed steps; the second what accuracy costs for
1000 links over 1 s, the third for 400 four-bar windows over 1 s. Errors of the chain are the largest distance of a
centre of mass from where a run with ten times shorter steps has it, over eleven records; those of the windows are of
the top of the first rod, against the equation of the one angle, over twenty-one records.
"""

import math
import pathlib
import sys
import tempfile

from make_chain import chain
from make_four_bar import four_bar
from result_files import Run, replace_table

DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "docs" / "performance.md"
RESULTS = {"WriteStateResultFile": True, "OutputTimeStepSize": 0.1}
LINKS = 1000
WINDOWS = 400
STEP = 1e-3
REPETITIONS = 3


def run(program, folder, text):
    """The fastest of some equal runs."""
    model = pathlib.Path(folder) / "model.toml"
    model.write_text(text)
    runs = [Run(program, model, folder) for _ in range(REPETITIONS)]
    return min(runs, key=lambda r: r.seconds)


def iterations(done):
    return done.number(r"Newton iterations +(\d+)")


def new_matrices(done):
    return done.number(r"(\d+) with known pivots")


def growth(program, folder):
    rows = ["| links | steps | iterations | new matrices | time [s] | per link and iteration [us] | growth exponent |",
            "|---:|---:|---:|---:|---:|---:|---:|"]
    before = None
    for count in (100, 1000, 10000):
        done = run(program, folder, chain(count, {"end_time": 0.2, "step": STEP, "fixed_step": True}, RESULTS))
        each = done.seconds / iterations(done)
        exponent = f"{math.log10(each / before):.2f}" if before else ""
        before = each
        rows.append(f"| {count} | {done.steps} | {iterations(done):.0f} | {new_matrices(done):.0f} | "
                    f"{done.seconds:.3f} | {each / count * 1e6:.2f} | {exponent} |")
    return rows


def largest_distance(states, reference):
    return max(math.dist(a[:3], b[:3]) for row, other in zip(states.rows, reference.rows) for a, b in zip(row, other))


def accuracy(program, folder, model, tolerances, get_error):
    rows = ["| steps | number of steps | iterations | time [s] | error [m] |", "|---|---:|---:|---:|---:|"]
    cases = [(f"fixed, {STEP:g} s", {"step": STEP, "fixed_step": True})]
    cases += [(f"tolerance {t:g}", {"step": STEP / 10, "tolerance": t}) for t in tolerances]
    for name, simulation in cases:
        done = run(program, folder, model({"end_time": 1.0} | simulation))
        rows.append(f"| {name} | {done.steps} | {iterations(done):.0f} | {done.seconds:.2f} | "
                    f"{get_error(done.file('srf')):.1e} |")
    return rows


def chain_accuracy(program, folder):
    def model(simulation):
        return chain(LINKS, simulation, RESULTS)

    fine = {"end_time": 1.0, "step": STEP / 10, "fixed_step": True}
    reference = run(program, folder, model(fine)).file("srf")
    return accuracy(program, folder, model, (2e-6, 1e-6, 1e-7), lambda states: largest_distance(states, reference))


def angles_of_windows(times):
    """Angle of the rods from the upright: I phi'' = S g sin(phi), by Runge and Kutta's rule of fourth order."""
    inertia, moment = (WINDOWS + 1) / 3 + WINDOWS, (WINDOWS + 1) / 2 + WINDOWS
    stiffness, phi, rate, result = 9.81 * moment / inertia, 0.0, 1.0, []
    for interval in [0.0] + [end - begin for begin, end in zip(times, times[1:])]:
        h = interval / 500
        for _ in range(500):
            v1, a1 = rate, stiffness * math.sin(phi)
            v2, a2 = rate + h / 2 * a1, stiffness * math.sin(phi + h / 2 * v1)
            v3, a3 = rate + h / 2 * a2, stiffness * math.sin(phi + h / 2 * v2)
            v4, a4 = rate + h * a3, stiffness * math.sin(phi + h * v3)
            phi, rate = phi + h / 6 * (v1 + 2 * v2 + 2 * v3 + v4), rate + h / 6 * (a1 + 2 * a2 + 2 * a3 + a4)
        result.append(phi)
    return result


def error_of_windows(states):
    """The top of a rod is twice as far from its foot as the centre of mass."""
    tops = [(2 * row[0][0], 2 * row[0][1]) for row in states.rows]
    return max(math.dist(top, (math.sin(phi), math.cos(phi)))
               for top, phi in zip(tops, angles_of_windows(states.times)))


def windows_accuracy(program, folder):
    def model(simulation):
        return four_bar(WINDOWS, simulation, results=RESULTS | {"OutputTimeStepSize": 0.05})

    return accuracy(program, folder, model, (1e-7, 1e-8, 2e-9), error_of_windows)


def main():
    with tempfile.TemporaryDirectory() as folder:
        for name, make in (("chain growth", growth), ("chain accuracy", chain_accuracy),
                           ("windows accuracy", windows_accuracy)):
            table = "\n".join(make(sys.argv[1], folder))
            replace_table(DOCUMENT, name, table)
            print(table)


main()
