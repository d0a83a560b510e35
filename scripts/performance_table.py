#!/usr/bin/env python3
"""Writes the tables of docs/performance.md from runs of the benchmark programs.

Usage: scripts/performance_table.py <folder of the programs> [free_bodies | chain | lattice | flexible_body]

Each table stands between two markers. Each benchmark runs several times; the smallest time of each counts, since
everything else on the machine only adds to it.
"""

import json
import pathlib
import re
import subprocess
import sys

COUNTS = (10, 100, 1000, 10000)
DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "docs" / "performance.md"


def run(program):
    """Smallest nanoseconds per body and bytes per body, by (share, number of bodies)."""
    text = subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_repetitions=9", "--benchmark_min_time=0.05",
         "--benchmark_enable_random_interleaving=true"],
        check=True, capture_output=True, text=True).stdout
    times, sizes = {}, {}
    for row in json.loads(text)["benchmarks"]:
        if row["run_type"] != "iteration":
            continue
        share, count = row["run_name"].rsplit("/", 1)
        key = (share, int(count))
        times[key] = min(times.get(key, float("inf")), row["cpu_time"] / int(count))
        sizes[key] = row.get("allBytes", 0.0)
    return times, sizes


def line(name, values, digits):
    cells = [f"{v:.{digits}f}" for v in values] + [f"{values[3] / values[1]:.2f}"]
    return f"| {name} | " + " | ".join(cells) + " |"


def head(unit):
    return [f"| {unit} | N = 10 | N = 100 | N = 1000 | N = 10000 | 10000 to 100 |", "|---|---:|---:|---:|---:|---:|"]


def free_bodies(times, sizes):
    shares = {"residual": "residual", "forceVectors": "force vectors", "jacobianUpdate": "Jacobian update",
              "matrixRefresh": "matrix refresh"}
    rows = head("per body")
    rows += [line(f"{name} [ns]", [times[share, n] for n in COUNTS], 0) for share, name in shares.items()]
    rows.append(line("one iteration [ns]", [sum(times[share, n] for share in shares) for n in COUNTS], 0))
    rows.append(line("memory [kB]", [sizes["residual", n] / 1000 for n in COUNTS], 2))
    return rows


def chain(times, _):
    def row(name, share):
        return line(f"{name} [ns]", [times[share, n] for n in COUNTS], 0)

    def ratio(name, share, other):
        return line(name, [times[share, n] / times[other, n] for n in COUNTS], 2)

    return head("per link") + [
        row("residual", "residual"), row("force vectors", "forceVectors"), row("Jacobian update", "jacobianUpdate"),
        row("matrix refresh", "matrixRefresh"), row("these four in turn", "kernelShare"),
        row("the least that they cost", "floorOfKernelShare"),
        ratio("ratio of the two", "kernelShare", "floorOfKernelShare"),
        row("KLU alone: refactorise and solve", "kluAlone"), row("our use of it", "sparseSolver"),
        row("iteration with a new matrix", "iterationWithNewMatrix"), ratio("ratio to KLU", "iterationWithNewMatrix", "kluAlone"),
        row("iteration with the old matrix", "iterationWithOldMatrix"), ratio("ratio to KLU ", "iterationWithOldMatrix", "kluAlone")]


def lattice(times, sizes):
    """What the springs add to the same bodies without any."""
    sides = (5, 10, 20)
    bodies, springs = [n ** 3 for n in sides], [3 * n * n * (n - 1) for n in sides]

    def row(name, per_spring, digits=0):
        values = [per_spring(n, n / m) for n, m in zip(bodies, springs)]
        cells = [f"{v:.{digits}f}" for v in values] + [f"{values[2] / values[0]:.2f}"]
        return f"| {name} | " + " | ".join(cells) + " |"

    def added(share):
        return lambda n, ratio: ratio * (times[share, n] - times[share + "WithoutSprings", n])

    def both(n, ratio):
        return added("residual")(n, ratio) + added("jacobianUpdate")(n, ratio)

    def expression(n, _):
        return times["expression", n]

    head_cells = " | ".join(f"N = {n}, {m} springs" for n, m in zip(bodies, springs))
    return [f"| per spring | {head_cells} | 8000 to 125 |", "|---|---:|---:|---:|---:|",
            row("residual with measure and force [ns]", added("residual")),
            row("Jacobian update [ns]", added("jacobianUpdate")), row("both [ns]", both),
            row("one evaluation of its compiled expression [ns]", expression),
            row("both, beyond 4 evaluations [ns]", lambda *a: both(*a) - 4 * expression(*a)),
            row("memory [kB]", lambda n, ratio: ratio / n / 1000 * (sizes["residual", n] - sizes["residualWithoutSprings", n]), 2)]


def flexible_body(times, _):
    """One update with Jacobian, per body; times stand per mode."""
    modes = (10, 50, 200)

    def row(name, value, digits):
        return f"| {name} | " + " | ".join(f"{value(m):.{digits}f}" for m in modes) + " |"

    def microseconds(name):
        return lambda m: times[name, m] * m / 1000

    rows = ["| per body | M = 10 | M = 50 | M = 200 |", "|---|---:|---:|---:|"]
    for share, name in {"linear": "both switches off", "coupled": "Is_Itf_active", "quadratic": "Is_QuadraticTermOF_Itt_active", "full": "both on"}.items():
        update, products = microseconds(f"update/{share}"), microseconds(f"denseProducts/{share}")
        rows += [row(f"{name} [us]", update, 2), row("its dense products alone [us]", products, 2),
                 row("ratio", lambda m, a=update, b=products: a(m) / b(m), 2)]
    return rows


TABLES = {"free_bodies": free_bodies, "chain": chain, "lattice": lattice, "flexible_body": flexible_body}


def main():
    folder = pathlib.Path(sys.argv[1])
    for name in sys.argv[2:] or TABLES:
        table = "\n".join(TABLES[name](*run(folder / f"bench_{name}")))
        marker = name.replace("_", " ")
        DOCUMENT.write_text(re.sub(rf"(<!-- {marker}: begin -->\n).*?(<!-- {marker}: end -->)",
                                   lambda m: m.group(1) + table + "\n" + m.group(2), DOCUMENT.read_text(), flags=re.S))
        print(table)


main()
