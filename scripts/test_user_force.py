#!/usr/bin/env python3
"""Builds the example user libraries as a project of their own and runs their models from another folder.

Usage: scripts/test_user_force.py VELMORA
"""
import csv
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
MASS, GRAVITY, DRAG, WIND = 0.4, 9.81, 0.02, (3.0, 0.0, 0.0)  # of air_drag.toml and air_drag.par
MODELS = ("bushing", "air_drag")


def acceleration(v):
    relative = [a - b for a, b in zip(v, WIND)]
    speed = sum(a * a for a in relative) ** 0.5
    return [-DRAG / MASS * speed * a - (GRAVITY if i == 2 else 0.0) for i, a in enumerate(relative)]


def velocities(times):
    """Of the ball in the wind by the classical method of Runge and Kutta."""
    v, before = [0.0, 20.0, 20.0], 0.0
    for time in times:
        steps = 4
        h = (time - before) / steps
        for _ in range(steps):
            k1 = acceleration(v)
            k2 = acceleration([a + 0.5 * h * b for a, b in zip(v, k1)])
            k3 = acceleration([a + 0.5 * h * b for a, b in zip(v, k2)])
            k4 = acceleration([a + h * b for a, b in zip(v, k3)])
            v = [a + h / 6.0 * (p + 2.0 * q + 2.0 * r + s) for a, p, q, r, s in zip(v, k1, k2, k3, k4)]
        before = time
        yield v


def run(velmora, *arguments, folder):
    return subprocess.run([velmora, *arguments], cwd=folder, capture_output=True, text=True)


def expect(condition, text):
    if not condition:
        sys.exit(f"test_user_force: {text}")


def check_drag(table):
    with open(table, newline="") as file:
        rows = [[float(x) for x in row] for row in list(csv.reader(file))[1:]]
    expected = velocities([row[0] for row in rows])
    worst = max(abs(a - b) for row, v in zip(rows, expected) for a, b in zip(row[1:], v))
    expect(len(rows) == 1001 and worst < 1e-4, f"{len(rows)} rows, the ball's velocity is off by {worst:.1e} m/s")


def main():
    velmora = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as name:
        scratch = pathlib.Path(name)
        project = scratch / "user_force"
        shutil.copytree(ROOT / "examples/user_force", project, ignore=shutil.ignore_patterns("build"))
        for command in (["-S", project, "-B", project / "build", f"-DVELMORA_HEADERS={ROOT}"],
                        ["--build", project / "build"]):
            subprocess.run(["cmake", *command], check=True)
        elsewhere = scratch / "elsewhere"
        elsewhere.mkdir()
        for model in MODELS:
            checked = run(velmora, "check", "--derivatives", f"../user_force/{model}.toml", folder=elsewhere)
            expect(checked.returncode == 0, f"{model}: derivatives\n{checked.stdout}{checked.stderr}")
            done = run(velmora, "run", f"../user_force/{model}.toml", folder=elsewhere)
            expect(done.returncode == 0, f"{model}\n{done.stdout}{done.stderr}")
        check_drag(elsewhere / "results/air_drag/air_drag.csv")
        (project / "bushing.par").write_text("2.5e5 x\n")
        broken = run(velmora, "run", "../user_force/bushing.toml", folder=elsewhere)
        expect(broken.returncode != 0 and "bushing: the parameter file must hold five numbers" in broken.stderr,
               f"a broken parameter file\n{broken.stdout}{broken.stderr}")


if __name__ == "__main__":
    main()
