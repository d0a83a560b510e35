"""Reads the result files of the program velmora, and runs it on a model."""

import pathlib
import re
import subprocess


class ResultFile:
    """The records of a file: `times`, and `rows[i]` with one tuple of numbers per entry of `topology`."""

    def __init__(self, path):
        lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
        begin = lines.index("Data") + 2
        self.topology = lines[lines.index("Topology") + 2].split()
        self.times, self.rows = [], []
        for i in range(begin, len(lines) - len(self.topology), len(self.topology) + 1):
            self.times.append(float(lines[i]))
            block = lines[i + 1 : i + 1 + len(self.topology)]
            self.rows.append([tuple(map(float, line.split())) for line in block])

    def of(self, uuid):
        """The rows of one body, record by record."""
        place = self.topology.index(uuid)
        return [row[place] for row in self.rows]

    def force_on_first_body(self, uuid):
        """Force of a joint on its first body, summed over the joint's equations, record by record."""
        places = [i for i, name in enumerate(self.topology) if name == uuid]
        return [tuple(sum(row[i][3 + k] for i in places) for k in range(3)) for row in self.rows]


class Run:
    """A run of the program on a model file; its files by extension and its summary."""

    def __init__(self, program, model, folder, arguments=()):
        self.stem = pathlib.Path(model).stem
        self.folder = pathlib.Path(folder)
        command = [str(program), "run", str(model), "-o", str(folder), *arguments]
        done = subprocess.run(command, capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"{model}: exit code {done.returncode}\n{done.stderr}{done.stdout}")
        self.summary, self.messages = done.stdout, done.stderr

    def file(self, extension):
        return ResultFile(self.folder / f"{self.stem}.{extension}")

    def number(self, pattern):
        """The number that the group of the pattern finds in the summary."""
        return float(re.search(pattern, self.summary).group(1))

    @property
    def steps(self):
        return int(self.number(r"Steps +(\d+) accepted"))

    @property
    def seconds(self):
        return self.number(r"Wall time +([0-9.]+) s")


def axes(state):
    """The body's axes, each in the global frame, from a row of a state file."""
    return state[3:6], state[6:9], state[9:12]


def place(state, local):
    """A point of the body in the global frame; `local` is relative to the centre of mass."""
    return tuple(state[i] + sum(axis[i] * x for axis, x in zip(axes(state), local)) for i in range(3))


def replace_table(path, name, table):
    """Puts the table between the markers of this name."""
    marks = f"<!-- {name}: begin -->", f"<!-- {name}: end -->"
    text = path.read_text(encoding="utf-8")
    pattern = f"{re.escape(marks[0])}.*?{re.escape(marks[1])}"
    new, count = re.subn(pattern, lambda _: f"{marks[0]}\n{table}\n{marks[1]}", text, flags=re.S)
    if count != 1:
        raise SystemExit(f"{path}: the markers of the table {name} are missing")
    path.write_text(new, encoding="utf-8")
