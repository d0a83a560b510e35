#!/usr/bin/env python3
"""Writes the model of N four-bar windows side by side: N + 1 rods that stand on the ground, with N couplers on top.

All links are uniform, of 1 m and 1 kg. The rods start upright, their tops with 1 m/s; twice in each revolution all
links lie in one line, a singular position. The problem is A02 of the IFToMM library of computational benchmarks.

Usage: make_four_bar.py N [--hinges] [--end-time T] > model.toml
"""

import argparse
import sys

from model_text import HINGE_Z, ModelText

ROD = (0.08333333333333333, 0.001, 0.08333333333333333)  # principal moments, the rod along y
COUPLER = (0.001, 0.08333333333333333, 0.08333333333333333)


def four_bar(count, simulation, hinges=False, results=None):
    """With `hinges` all joints are hinges in space, and each window repeats three equations."""
    model = ModelText(f"four-bar with {count} windows", simulation, results or {
        "WriteStateResultFile": True, "WriteVelocityResultFile": True, "OutputTimeStepSize": 0.05})
    for j in range(count + 1):
        model.body(f"rod{j}", 1.0, ROD, (float(j), 0.5, 0.0), velocity=(0.5, 0.0, 0.0), omega=(0.0, 0.0, -1.0))
    for j in range(count):
        model.body(f"coupler{j}", 1.0, COUPLER, (j + 0.5, 1.0, 0.0), velocity=(1.0, 0.0, 0.0))
    for j in range(count + 1):
        model.joint(f"foot{j}", (f"rod{j}", "0"), (float(j), 0.0, 0.0), HINGE_Z)
    for j in range(count):
        model.joint(f"left{j}", (f"rod{j}", f"coupler{j}"), (float(j), 1.0, 0.0), HINGE_Z)
        model.joint(f"right{j}", (f"rod{j + 1}", f"coupler{j}"), (j + 1.0, 1.0, 0.0),
                    HINGE_Z if hinges else ("dx", "dy"))
    model.gravity((0.0, -9.81, 0.0))
    return model.text()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int, metavar="N", help="number of windows")
    parser.add_argument("--hinges", action="store_true", help="make all joints hinges, with redundant equations")
    parser.add_argument("--end-time", type=float, default=10.0)
    arguments = parser.parse_args()
    if arguments.count < 1:
        parser.error("N has to be 1 or more")
    simulation = {"end_time": arguments.end_time, "step": 1e-3, "tolerance": 1e-6}
    sys.stdout.write(four_bar(arguments.count, simulation, arguments.hinges))


if __name__ == "__main__":
    main()
