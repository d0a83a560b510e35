#!/usr/bin/env python3
"""Writes the model of a chain of N equal links between two supports at the same height, for `velmora static`.

Each link is a box of 0.1 m x 0.02 m x 0.02 m and 0.1 kg; all joints are spherical, gravity points along -z. At the start
half of the links go straight down and half go straight up again, or, with --upwards, the other way round. The supports
stand at the origin and at --span times the length of the chain along x.

Usage: make_catenary.py N [--span S] [--upwards] > model.toml
"""

import argparse
import math
import sys

from make_chain import ACROSS, ALONG, LENGTH, MASS
from model_text import BALL, ModelText


def catenary(count, span, upwards):
    model = ModelText(f"catenary of {count} links", {"end_time": 1.0}, {
        "WriteStateResultFile": True, "OutputTimeStepSize": 0.01})
    angle = math.acos(span) * (1 if upwards else -1)
    joints = [(0.0, 0.0, 0.0)]
    for i in range(count):
        c, s = math.cos(angle), math.sin(angle) if i < count // 2 else -math.sin(angle)
        x, _, z = joints[-1]
        joints.append((x + LENGTH * c, 0.0, z + LENGTH * s))
        model.body(f"link{i}", MASS, (ALONG, ACROSS, ACROSS), (x + LENGTH * c / 2, 0.0, z + LENGTH * s / 2),
                   axes=((c, 0.0, s), (0, 1, 0), (-s, 0.0, c)))
    for i in range(count):
        model.joint(f"ball{i}", (f"link{i}", f"link{i - 1}" if i else "0"), joints[i], BALL)
    model.joint("support", (f"link{count - 1}", "0"), joints[-1], BALL)
    model.gravity((0.0, 0.0, -9.81))
    return model.text()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int, metavar="N", help="number of links; even")
    parser.add_argument("--span", type=float, default=0.6, help="distance of the supports over the length of the chain")
    parser.add_argument("--upwards", action="store_true", help="start with the middle above the supports")
    arguments = parser.parse_args()
    if arguments.count < 2 or arguments.count % 2:
        parser.error("N has to be even")
    if not 0.0 < arguments.span < 1.0:
        parser.error("the span has to lie between 0 and 1")
    sys.stdout.write(catenary(arguments.count, arguments.span, arguments.upwards))


if __name__ == "__main__":
    main()
