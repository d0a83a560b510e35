#!/usr/bin/env python3
"""Checks who includes whom.

- A kernel folder includes only the folders that ALLOWED gives it.
- Source files don't include each other in a circle; a source and its header count as one.
- Programs that stand outside the kernel (OUTSIDE) reach it by <velmora/...>, public headers only.
- Every quoted include is a path from the root of the repository.
- Every header compiles alone.

Usage: scripts/check_includes.py [--root DIR] [--build DIR] [--no-compile]
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

# Folder below velmora/ -> folders that it may include, lowest floor first. A new edge is a decision about the
# architecture: it belongs here and into docs/architecture.md, and it may only point downwards.
ALLOWED = {
    "platform": [],
    "io": ["platform"],
    "matrix": ["platform", "io"],
    "functions": ["platform", "io", "matrix"],
    "fe_import": ["platform", "io", "matrix"],
    "model": ["platform", "io", "matrix"],
    "bodies": ["platform", "io", "matrix", "model", "fe_import"],
    "data_objects": ["platform", "io", "matrix", "functions", "model"],
    "measures": ["platform", "io", "matrix", "model", "bodies"],
    "expressions": ["platform", "io", "matrix", "functions", "model", "data_objects", "measures"],
    "constraints": ["platform", "io", "matrix", "fe_import", "model", "bodies", "measures", "expressions"],
    "forces": ["platform", "io", "matrix", "model", "bodies", "data_objects", "measures", "expressions"],
    "external_forces": ["platform", "io", "matrix", "model", "bodies", "measures", "forces"],
    "global_matrix": ["platform", "io", "matrix", "model", "bodies", "constraints", "forces"],
    "results": ["platform", "io", "matrix", "model", "bodies", "measures", "constraints", "forces"],
    "model/internal": ["platform", "io", "matrix", "model", "bodies", "data_objects", "measures", "expressions",
                       "constraints", "forces", "external_forces", "global_matrix", "results"],
}
KERNEL = "velmora"
ENTRY = "velmora/velmora.h"  # what it reaches is public
OUTSIDE = ["contact", "driver", "examples", "tools", "benchmarks"]
MEASURING = "benchmarks"  # what a formula costs at least is written with the kernel's own algebra
FREE = ["tests"]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def find_sources(root):
    tops = [KERNEL, *OUTSIDE, *FREE]
    files = (path for top in tops for path in sorted((root / top).rglob("*")))
    return [path.relative_to(root).as_posix() for path in files if path.suffix in (".h", ".cpp")]


def read_includes(root, sources):
    """source -> [(is quoted, name)]"""
    return {source: [(mark == '"', name) for mark, name in INCLUDE.findall((root / source).read_text())]
            for source in sources}


def folder_of(source):
    """velmora/model/internal/X.h -> model/internal; velmora/velmora.h -> the empty text"""
    return os.path.dirname(source)[len(KERNEL) + 1:]


def find_public_headers(includes):
    public, waiting = set(), [ENTRY]
    while waiting:
        header = waiting.pop()
        if header not in public:
            public.add(header)
            waiting += [name for _, name in includes.get(header, []) if name.startswith(KERNEL + "/")]
    return public


def check_table():
    order = list(ALLOWED)
    return [f"ALLOWED: {folder} may not include {other}, which stands above it"
            for folder, others in ALLOWED.items() for other in others
            if other not in order or order.index(other) >= order.index(folder)]


def check_kernel_edge(source, name):
    folder, other = folder_of(source), folder_of(name)
    if not name.startswith(KERNEL + "/"):
        return f"{source}: the kernel includes {name} from outside"
    if source == ENTRY or folder == other or other in ALLOWED.get(folder, []):
        return None
    if folder not in ALLOWED:
        return f"{source}: folder {folder} has no row in ALLOWED of scripts/check_includes.py"
    return f"{source}: {folder} may not include {other or 'the entry header'} ({name})"


def check_edges(root, includes):
    public = find_public_headers(includes)
    for source, found in includes.items():
        top = source.split("/")[0]
        for is_quoted, name in found:
            if is_quoted and not (root / name).is_file():
                yield f"{source}: {name} is no path from the root of the repository"
            elif is_quoted and top == KERNEL:
                error = check_kernel_edge(source, name)
                if error:
                    yield error
            elif is_quoted and top in OUTSIDE and name.startswith(KERNEL + "/"):
                yield f"{source}: {name} is the kernel's, to be included as <{name}>"
            elif not is_quoted and name.startswith(KERNEL + "/"):
                if top == KERNEL:
                    yield f"{source}: <{name}> is the form for programs outside the kernel"
                elif top in OUTSIDE and top != MEASURING and name not in public:
                    yield f"{source}: <{name}> is not public; {ENTRY} doesn't reach it"


def room_of(source):
    return os.path.splitext(source)[0]


def find_circles(includes):
    """Strongly connected rooms (Tarjan, "Depth-first search and linear graph algorithms", 1972)."""
    edges = {}
    for source, found in includes.items():
        room = edges.setdefault(room_of(source), set())
        room |= {room_of(name) for _, name in found if name in includes} - {room_of(source)}
    number, low, stack, circles = {}, {}, [], []

    def visit(room):
        number[room] = low[room] = len(number)
        stack.append(room)
        for other in sorted(edges[room]):
            if other not in number:
                visit(other)
            if other in stack:
                low[room] = min(low[room], low[other])
        if low[room] == number[room]:
            part = stack[stack.index(room):]
            del stack[stack.index(room):]
            if len(part) > 1:
                circles.append(part)

    for room in sorted(edges):
        if room not in number:
            visit(room)
    return ["circle of includes: " + " -> ".join([*circle, circle[0]]) for circle in circles]


def read_system_folders(build):
    """Include folders of outside libraries, as the build found them."""
    folders = []
    database = build / "compile_commands.json" if build else None
    if database and database.is_file():
        for entry in json.loads(database.read_text()):
            folders += re.findall(r"-isystem\s+(\S+)", entry.get("command", ""))
    return sorted(set(folders))


def check_alone(root, header, flags):
    command = ["g++", "-std=c++20", "-fsyntax-only", "-x", "c++", "-I", str(root), *flags, "-"]
    run = subprocess.run(command, cwd=root, input=f'#include "{header}"\n', text=True, capture_output=True,
                         check=False)
    return f"{header} doesn't compile alone:\n{run.stderr.rstrip()}" if run.returncode else None


def check_headers(root, sources, build):
    flags = [flag for folder in read_system_folders(build) for flag in ("-isystem", folder)]
    headers = [source for source in sources if source.endswith(".h")]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return [error for error in pool.map(lambda header: check_alone(root, header, flags), headers) if error]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    parser.add_argument("--build", type=pathlib.Path, help="build folder, for include folders of libraries")
    parser.add_argument("--no-compile", action="store_true", help="leave out compiling each header alone")
    options = parser.parse_args()
    root = options.root.resolve()

    sources = find_sources(root)
    includes = read_includes(root, sources)
    errors = check_table() + list(check_edges(root, includes)) + find_circles(includes)
    if ENTRY not in includes:
        errors.append(f"{ENTRY} is missing")
    if not options.no_compile:
        errors += check_headers(root, sources, options.build)
    for error in errors:
        print(error, file=sys.stderr)
    print(f"check_includes: {len(sources)} files, {len(errors)} errors")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
