#!/usr/bin/env python3
"""Verify the integrator on the torque-free asymmetric body and write the table in docs/verification.md.

The closed solution is that of Landau and Lifshitz, "Mechanics", section 37: Jacobi's elliptic functions for the
angular velocity, by the arithmetic-geometric mean (Abramowitz and Stegun, 16.4), and the precession about the
angular momentum as the integral of its closed rate. The program runs with fixed steps h, h/2, h/4, h/8; errors
are read from the result files. Exit code 1 if the order isn't two.
"""

import argparse
import math
import pathlib
import sys
import tempfile

from result_files import Run, replace_table

INERTIA = (1.0, 2.0, 3.0)
OMEGA_0 = (0.0, 1.0, 0.1)  # body frame, near the middle axis; its first component starts at zero
END_TIME = 20.0
OUTPUT_STEP = 0.1
STEPS = (0.02, 0.01, 0.005, 0.0025)
ALPHA = -0.05


def agm_quarter_period(k2):
    a, b = 1.0, math.sqrt(1.0 - k2)
    while abs(a - b) > 1e-15:
        a, b = 0.5 * (a + b), math.sqrt(a * b)
    return math.pi / (a + b)


def elliptic(u, k2):
    """sn, cn, dn of u by the descending arithmetic-geometric mean."""
    a, b, means = 1.0, math.sqrt(1.0 - k2), []
    while True:
        c = 0.5 * (a - b)
        a, b = 0.5 * (a + b), math.sqrt(a * b)
        means.append((a, c))
        if abs(c) < 1e-16:
            break
    phi = a * u * 2.0 ** len(means)
    for a, c in reversed(means):
        phi = 0.5 * (phi + math.asin(c / a * math.sin(phi)))
    sn = math.sin(phi)
    return sn, math.cos(phi), math.sqrt(1.0 - k2 * sn * sn)


class ClosedSolution:
    """Angular momentum along the global z axis; its square exceeds that of the separatrix."""

    def __init__(self):
        i1, i2, i3 = INERTIA
        l2 = sum((i * w) ** 2 for i, w in zip(INERTIA, OMEGA_0))
        e2 = sum(i * w * w for i, w in zip(INERTIA, OMEGA_0))
        assert l2 > e2 * i2 and OMEGA_0[0] == 0.0
        self.momentum = math.sqrt(l2)
        self.energy = 0.5 * e2
        self.rate = math.sqrt((i3 - i2) * (l2 - e2 * i1) / (i1 * i2 * i3))
        self.k2 = (i2 - i1) * (e2 * i3 - l2) / ((i3 - i2) * (l2 - e2 * i1))
        self.amplitudes = (
            math.sqrt((e2 * i3 - l2) / (i1 * (i3 - i1))),
            math.sqrt((e2 * i3 - l2) / (i2 * (i3 - i2))),
            math.sqrt((l2 - e2 * i1) / (i3 * (i3 - i1))),
        )
        self.start = agm_quarter_period(self.k2)

    def omega(self, t):
        sn, cn, dn = elliptic(self.start + self.rate * t, self.k2)
        return tuple(a * f for a, f in zip(self.amplitudes, (cn, sn, dn)))

    def precession_rate(self, t):
        w = self.omega(t)
        x, y = INERTIA[0] * w[0], INERTIA[1] * w[1]
        return self.momentum * (x * w[0] + y * w[1]) / (x * x + y * y)

    def advance_precession(self, begin, end, intervals=40):
        """Simpson's rule between two output times."""
        width = (end - begin) / intervals
        total = self.precession_rate(begin) + self.precession_rate(end)
        for i in range(1, intervals):
            total += (4.0 if i % 2 else 2.0) * self.precession_rate(begin + i * width)
        return total * width / 3.0

    def attitude(self, t, phi):
        """Rows of Rz(phi) Rx(theta) Rz(psi)."""
        w = self.omega(t)
        psi = math.atan2(INERTIA[0] * w[0], INERTIA[1] * w[1])
        ct = INERTIA[2] * w[2] / self.momentum
        st = math.sqrt(1.0 - ct * ct)
        cf, sf, cp, sp = math.cos(phi), math.sin(phi), math.cos(psi), math.sin(psi)
        return (
            (cf * cp - sf * ct * sp, -cf * sp - sf * ct * cp, sf * st),
            (sf * cp + cf * ct * sp, -sf * sp + cf * ct * cp, -cf * st),
            (st * sp, st * cp, ct),
        )


def multiply(matrix, vector):
    return tuple(sum(a * x for a, x in zip(row, vector)) for row in matrix)


def norm(vector):
    return math.sqrt(sum(x * x for x in vector))


def write_model(path, solution, step):
    attitude = solution.attitude(0.0, 0.0)
    columns = [attitude[row][col] for col in range(3) for row in range(3)]
    omega = multiply(attitude, OMEGA_0)
    path.write_text(
        f"""[model]
name = "torque-free body"

[simulation]
end_time = {END_TIME!r}
step = {step!r}
fixed_step = true
alpha = {ALPHA!r}

[results]
WriteStateResultFile = true
WriteVelocityResultFile = true
OutputTimeBegin = 0.0
OutputTimeStepSize = {OUTPUT_STEP!r}

[[Body]]
type = "Rigid_EulerParameter_PAI"
uuid = "top"
BodyName = "top"
Mass = 1.0
Inertia = {list(INERTIA)!r}
LocationCenterMass = [0.0, 0.0, 0.0]
OrientationPAI = {columns!r}
InitialVelocityVector = [0.0, 0.0, 0.0]
InitialOmegaVector = {list(omega)!r}
RegardVelocityInertiaForcesInsideJacobian = true
""",
        encoding="utf-8",
    )


def run_model(program, folder, solution, step):
    model = folder / f"torque_free_{step}.toml"
    write_model(model, solution, step)
    run = Run(program, model, folder / model.stem)
    states, velocities = (list(zip(file.times, file.of("top"))) for file in map(run.file, ("srf", "vrf")))
    expected = round(END_TIME / OUTPUT_STEP) + 1
    if len(states) != expected or len(velocities) != expected:
        raise SystemExit(f"{model.stem}: {len(states)} records, expected {expected}")
    return states, velocities


def compare(solution, states, velocities):
    """Largest errors of omega and attitude (rad), relative drifts of energy and angular momentum."""
    worst = [0.0, 0.0, 0.0, 0.0]
    phi, last = 0.0, 0.0
    for (t, state), (_, velocity) in zip(states, velocities):
        phi += solution.advance_precession(last, t) if t > last else 0.0
        last = t
        omega = velocity[3:6]
        attitude = tuple(tuple(state[3 + 3 * col + row] for col in range(3)) for row in range(3))
        exact = solution.attitude(t, phi)
        distance = math.sqrt(sum((a - b) ** 2 for x, y in zip(attitude, exact) for a, b in zip(x, y)))
        momentum = multiply(attitude, [i * w for i, w in zip(INERTIA, omega)])
        energy = 0.5 * sum(i * w * w for i, w in zip(INERTIA, omega))
        found = (
            norm([a - b for a, b in zip(omega, solution.omega(t))]),
            2.0 * math.asin(min(1.0, distance / math.sqrt(8.0))),
            abs(energy / solution.energy - 1.0),
            norm((momentum[0], momentum[1], momentum[2] - solution.momentum)) / solution.momentum,
        )
        worst = [max(a, b) for a, b in zip(worst, found)]
    return worst


def make_table(rows):
    lines = [
        "| step [s] | error of omega [rad/s] | order | error of attitude [rad] | order | energy drift | order "
        "| momentum drift | order |",
        "|---:|---:|---:|---:|---:|---:|---:|---:|---:|",
    ]
    for i, (step, values) in enumerate(rows):
        cells = [f"{step:g}"]
        for k, value in enumerate(values):
            order = f"{math.log2(rows[i - 1][1][k] / value):.3f}" if i else ""
            cells += [f"{value:.3e}", order]
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines)


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", help="the built program velmora")
    parser.add_argument("--document", type=pathlib.Path, default=root / "docs" / "verification.md")
    parser.add_argument("--print", action="store_true", help="print the table and leave the document alone")
    arguments = parser.parse_args()

    solution = ClosedSolution()
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        for step in STEPS:
            rows.append((step, compare(solution, *run_model(arguments.program, pathlib.Path(folder), solution, step))))
    table = make_table(rows)
    if arguments.print:
        print(table)
    else:
        replace_table(arguments.document, "torque-free table", table)
    orders = [math.log2(a / b) for (_, x), (_, y) in zip(rows, rows[1:]) for a, b in zip(x, y)]
    if any(not 1.9 < order < 2.1 for order in orders):
        sys.exit("the order isn't two")


if __name__ == "__main__":
    main()
