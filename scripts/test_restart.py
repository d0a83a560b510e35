#!/usr/bin/env python3
"""Kills and stops runs again and again, continues them from their restart files, and compares the results byte for byte with
those of a run that nothing disturbed.

Usage: scripts/test_restart.py VELMORA MODEL...
"""
import pathlib
import random
import re
import signal
import subprocess
import sys
import tempfile
import time

KILLS = 4
RESTARTS = 40  # per run
STOPPED = 4  # exit code
DATE = re.compile(rb"\w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4}")  # in the headers of result files


def end_time(model):
    return float(re.search(r"^end_time = (\S+)", model.read_text(), re.MULTILINE).group(1))


def read_results(folder):
    files = (path for path in sorted(folder.iterdir()) if not path.name.endswith((".restart", ".new")))
    return {path.name: DATE.sub(b"", path.read_bytes()) for path in files}


def run_with_kills(command, restart_file, seconds, chance):
    """How often the run was killed or, every other time, asked to stop: each time after its first restart file."""
    kills = 0
    arguments = command
    while True:
        before = restart_file.stat().st_mtime_ns if restart_file.exists() else 0
        process = subprocess.Popen(arguments, stderr=subprocess.PIPE, text=True)
        while process.poll() is None and (not restart_file.exists() or restart_file.stat().st_mtime_ns == before):
            time.sleep(0.002)
        try:
            process.wait(chance.uniform(0.0, seconds / 20.0) if kills < KILLS else None)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGKILL if kills % 2 == 0 else signal.SIGTERM)
            kills += 1
        message = process.communicate()[1]
        if process.returncode not in (-signal.SIGKILL, STOPPED):
            return kills, process.returncode, message
        arguments = command + ["--continue", str(restart_file)]


def check(velmora, model, scratch, chance):
    whole, parts = scratch / model.stem / "whole", scratch / model.stem / "parts"
    command = [velmora, "run", str(model), "--quiet", "-o"]
    begin = time.monotonic()
    subprocess.run([*command, str(whole)], check=True, stderr=subprocess.DEVNULL)
    seconds = time.monotonic() - begin
    command += [str(parts), "--restart-every", str(end_time(model) / RESTARTS)]
    kills, code, message = run_with_kills(command, parts / (model.stem + ".restart"), seconds, chance)
    if code != 0:
        return f"{model.name}: a continued run ended with {code}: {message}"
    expected, found = read_results(whole), read_results(parts)
    different = [name for name in expected if found.get(name) != expected[name]]
    print(f"{model.name}: killed {kills} times, {len(expected) - len(different)} of {len(expected)} files alike")
    return f"{model.name}: {', '.join(different)} differ" if different or kills == 0 else None


def main():
    velmora = str(pathlib.Path(sys.argv[1]).resolve())
    chance = random.Random(1)
    with tempfile.TemporaryDirectory() as name:
        problems = [check(velmora, pathlib.Path(model).resolve(), pathlib.Path(name), chance) for model in sys.argv[2:]]
    if any(problems):
        sys.exit("test_restart: " + "; ".join(problem for problem in problems if problem))


if __name__ == "__main__":
    main()
