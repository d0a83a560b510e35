#!/usr/bin/env bash
# Installs a build into a scratch folder, moves the installation, builds the minimal driver and the user libraries
# against it as projects from outside, and runs the programs from there.
#
# Usage: scripts/test_install.sh BUILD_DIR [further options for configuring the outside project]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath -- "$1")
shift
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/first" >"$scratch/install.log"
# The copy proves that nothing installed points back at the prefix or the build.
mv "$scratch/first" "$scratch/prefix"

if grep -rlF -e "$build" -e "$root" "$scratch/prefix/include" "$scratch/prefix"/lib*/cmake; then
    echo "test_install: the files above name the build tree" >&2
    exit 1
fi

cp -r "$root/examples/minimal_driver" "$scratch/outside"
cd "$scratch/outside"
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$scratch/prefix" "$@"
cmake --build build
build/minimal_driver
cmake -S "$root/examples/user_force" -B user_force -DVELMORA_HEADERS="$scratch/prefix/include"
cmake --build user_force

if grep -q '^VELMORA_BUILD_DRIVER:BOOL=ON' "$build/CMakeCache.txt"; then
    "$scratch/prefix/bin/velmora" --version
    "$scratch/prefix/bin/velmora" check "$root/examples/tumbling_body.toml"
fi
