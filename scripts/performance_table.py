#!/usr/bin/env python3
"""Writes the table of docs/performance.md from a run of bench_free_bodies.

Usage: scripts/performance_table.py <path of bench_free_bodies>

The table stands between two markers. Each benchmark runs several times; the smallest time of each counts, since
everything else on the machine only adds to it.
"""

import json
import pathlib
import re
import subprocess
import sys

SHARES = {
    "residual": "residual",
    "forceVectors": "force vectors",
    "jacobianUpdate": "Jacobian update",
    "matrixRefresh": "matrix refresh",
}
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
        share, count = row["run_name"].split("/")
        key = (share, int(count))
        times[key] = min(times.get(key, float("inf")), row["cpu_time"] / int(count))
        sizes[key] = row["allBytes"]
    return times, sizes


def line(name, values, digits):
    cells = [f"{v:.{digits}f}" for v in values] + [f"{values[3] / values[1]:.2f}"]
    return f"| {name} | " + " | ".join(cells) + " |"


def main():
    times, sizes = run(sys.argv[1])
    rows = ["| per body | N = 10 | N = 100 | N = 1000 | N = 10000 | 10000 to 100 |", "|---|---:|---:|---:|---:|---:|"]
    rows += [line(f"{name} [ns]", [times[share, n] for n in COUNTS], 0) for share, name in SHARES.items()]
    rows.append(line("one iteration [ns]", [sum(times[share, n] for share in SHARES) for n in COUNTS], 0))
    rows.append(line("memory [kB]", [sizes["residual", n] / 1000 for n in COUNTS], 2))
    table = "\n".join(rows)
    text = DOCUMENT.read_text()
    text = re.sub(r"(<!-- free bodies: begin -->\n).*?(<!-- free bodies: end -->)",
                  lambda m: m.group(1) + table + "\n" + m.group(2), text, flags=re.S)
    DOCUMENT.write_text(text)
    print(table)


main()
