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
# One after the other: tests of a program use files of the same names in one folder.
ctest --preset release "$@"
