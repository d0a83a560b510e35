#!/usr/bin/env bash
# Builds the program and runs a model with it.
#
# Usage: scripts/run.sh [MODEL.toml [further options of velmora run]]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
model=$(realpath -- "${1:-$root/examples/tumbling_body.toml}")
shift || true

"$root/scripts/setup.sh" run
cd "$root"
cmake --preset program
cmake --build --preset program --parallel "$(nproc)"

results=$root/results/$(basename "$model" .toml)
build/program/driver/velmora run "$model" -o "$results" "$@"
echo "Results are in $results"
