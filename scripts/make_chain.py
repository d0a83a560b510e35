#!/usr/bin/env python3
"""Writes the model of a chain of N equal links with spherical joints, let go from the horizontal.

Each link is a box of 0.1 m x 0.02 m x 0.02 m and 0.1 kg, lying along x. The first one hangs on the ground at the
origin, gravity points along -z. A chain stays in its plane, but nothing in the model says so.

Usage: make_chain.py N [--end-time T] > model.toml
"""

import argparse
import sys

from model_text import BALL, ModelText

LENGTH, WIDTH, MASS = 0.1, 0.02, 0.1
ALONG = MASS * 2 * WIDTH**2 / 12
ACROSS = MASS * (LENGTH**2 + WIDTH**2) / 12


def chain(count, simulation, results=None):
    model = ModelText(f"chain of {count} links", simulation, results or {
        "WriteStateResultFile": True, "OutputTimeStepSize": 0.01})
    for i in range(count):
        model.body(f"link{i}", MASS, (ALONG, ACROSS, ACROSS), ((i + 0.5) * LENGTH, 0.0, 0.0))
    for i in range(count):
        model.joint(f"ball{i}", (f"link{i}", f"link{i - 1}" if i else "0"), (i * LENGTH, 0.0, 0.0), BALL)
    model.gravity((0.0, 0.0, -9.81))
    return model.text()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int, metavar="N", help="number of links")
    parser.add_argument("--end-time", type=float, default=1.0)
    arguments = parser.parse_args()
    if arguments.count < 1:
        parser.error("N has to be 1 or more")
    sys.stdout.write(chain(arguments.count, {"end_time": arguments.end_time, "step": 1e-4, "tolerance": 1e-6}))


if __name__ == "__main__":
    main()
