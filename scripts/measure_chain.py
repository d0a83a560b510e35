#!/usr/bin/env python3
"""Measures whole runs of the chain of make_chain.py and writes two tables of docs/performance.md.

Usage: scripts/measure_chain.py <path of the built velmora>

The first table shows how the time grows with the number of links, at fixed steps; the second what accuracy costs for
1000 links over 1 s. Errors are the largest distance of a centre of mass from where a run with ten times shorter steps
has it, over eleven records.
"""

import math
import pathlib
import sys
import tempfile

from make_chain import chain
from result_files import Run, replace_table

DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "docs" / "performance.md"
RESULTS = {"WriteStateResultFile": True, "OutputTimeStepSize": 0.1}
LINKS = 1000
STEP = 1e-3
REPETITIONS = 3


def run(program, folder, count, simulation):
    """The fastest of some equal runs."""
    model = pathlib.Path(folder) / "chain.toml"
    model.write_text(chain(count, simulation, RESULTS))
    runs = [Run(program, model, folder) for _ in range(REPETITIONS)]
    return min(runs, key=lambda r: r.seconds)


def iterations(done):
    return done.number(r"Newton iterations +(\d+)")


def growth(program, folder):
    rows = ["| links | steps | iterations | time [s] | per link and iteration [us] | growth exponent |",
            "|---:|---:|---:|---:|---:|---:|"]
    before = None
    for count in (100, 1000, 10000):
        done = run(program, folder, count, {"end_time": 0.2, "step": STEP, "fixed_step": True})
        each = done.seconds / iterations(done)
        exponent = f"{math.log10(each / before):.2f}" if before else ""
        before = each
        rows.append(f"| {count} | {done.steps} | {iterations(done):.0f} | {done.seconds:.3f} | {each / count * 1e6:.2f} | "
                    f"{exponent} |")
    return rows


def largest_distance(states, reference):
    return max(math.dist(a[:3], b[:3]) for row, other in zip(states.rows, reference.rows) for a, b in zip(row, other))


def accuracy(program, folder):
    rows = ["| steps | number of steps | iterations | time [s] | error [m] |", "|---|---:|---:|---:|---:|"]
    reference = run(program, folder, LINKS, {"end_time": 1.0, "step": STEP / 10, "fixed_step": True}).file("srf")
    cases = [(f"fixed, {STEP:g} s", {"step": STEP, "fixed_step": True})]
    cases += [(f"tolerance {t:g}", {"step": STEP / 10, "tolerance": t}) for t in (2e-6, 1e-6, 1e-7)]
    for name, simulation in cases:
        done = run(program, folder, LINKS, {"end_time": 1.0} | simulation)
        rows.append(f"| {name} | {done.steps} | {iterations(done):.0f} | {done.seconds:.2f} | "
                    f"{largest_distance(done.file('srf'), reference):.1e} |")
    return rows


def main():
    with tempfile.TemporaryDirectory() as folder:
        for name, make in (("chain growth", growth), ("chain accuracy", accuracy)):
            table = "\n".join(make(sys.argv[1], folder))
            replace_table(DOCUMENT, name, table)
            print(table)


main()
