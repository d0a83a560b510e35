#!/usr/bin/env bash
# Builds everything and runs all tests.
#
# Usage: scripts/test.sh [options of ctest]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/setup.sh" test
cd "$root"
cmake --preset release
cmake --build --preset release --parallel "$(nproc)"
ctest --preset release --parallel "$(nproc)" "$@"
