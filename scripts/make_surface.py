#!/usr/bin/env python3
"""Writes a closed surface as a Wavefront OBJ file to standard output, in metres, around its own origin.

Usage: scripts/make_surface.py ball RADIUS N          12 N^2 triangles: the sides of a cube, blown up
       scripts/make_surface.py box LX LY LZ           12 triangles
       scripts/make_surface.py cam RADIUS LIFT WIDTH N   two lobes about y, N corners; see cam_outline
"""
import math
import sys


def ball(radius, n):
    """Squares of equal angle on the sides of a cube, halved; corners that squares share are written once."""
    corners, triangles, numbers = [], [], {}

    def number(x):
        key = tuple(round(c, 12) for c in x)
        if key not in numbers:
            numbers[key] = len(corners)
            corners.append([radius * c / math.hypot(*x) for c in x])
        return numbers[key]

    ticks = [math.tan((2.0 * i / n - 1.0) * math.pi / 4) for i in range(n + 1)]
    for axis in range(3):
        for side in (-1, 1):
            def at(i, j):
                x = [0.0, 0.0, 0.0]
                x[axis], x[(axis + 1) % 3], x[(axis + 2) % 3] = side, ticks[i], ticks[j]
                return number(x)
            for i in range(n):
                for j in range(n):
                    square = [at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)]
                    triangles += halves(square if side > 0 else square[::-1])
    return corners, triangles


def halves(square):
    a, b, c, d = square
    return [(a, b, c), (a, c, d)]


def box(lx, ly, lz):
    corners = [(x * lx / 2, y * ly / 2, z * lz / 2) for z in (-1, 1) for y in (-1, 1) for x in (-1, 1)]
    squares = ((0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5))
    return corners, [triangle for square in squares for triangle in halves(square)]


def cam_outline(radius, lift, angle):
    """Convex outline in the plane of z and x that holds a flat follower at the distance

        h(a) = radius + lift sin^2 a

    when the cam has turned by a: its corner that touches is h n + h' dn/da with n at the angle a from z.
    """
    h = radius + lift * math.sin(angle) ** 2
    slope = lift * math.sin(2 * angle)
    return (h * math.cos(angle) - slope * math.sin(angle), h * math.sin(angle) + slope * math.cos(angle))


def cam(radius, lift, width, n):
    corners = []
    for y in (-width / 2, width / 2):
        corners.append((0.0, y, 0.0))
        for i in range(n):
            z, x = cam_outline(radius, lift, 2 * math.pi * i / n)
            corners.append((x, y, z))
    triangles = []
    for i in range(n):
        a, b = 1 + i, 1 + (i + 1) % n
        c, d = a + n + 1, b + n + 1
        triangles += [(0, b, a), (n + 1, c, d)] + halves((a, b, d, c))
    return corners, triangles


SHAPES = {"ball": (ball, (float, int)), "box": (box, (float,) * 3), "cam": (cam, (float, float, float, int))}


def main():
    shape, kinds = SHAPES.get(sys.argv[1] if len(sys.argv) > 1 else "", (None, ()))
    if not shape or len(sys.argv) != 2 + len(kinds):
        sys.exit(__doc__)
    corners, triangles = shape(*(kind(text) for kind, text in zip(kinds, sys.argv[2:])))
    print("# scripts/make_surface.py " + " ".join(sys.argv[1:]))
    for corner in corners:
        print("v " + " ".join(f"{x + 0.0:.7g}" for x in corner))
    for triangle in triangles:
        print("f " + " ".join(str(k + 1) for k in triangle))


if __name__ == "__main__":
    main()
