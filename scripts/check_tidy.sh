#!/usr/bin/env bash
# Runs clang-tidy with the checks of .clang-tidy over the kernel, the contact library, the driver and the tools; fails on any
# finding.
#
# Usage: scripts/check_tidy.sh [BUILD_DIR [folder...]]    default build/release velmora contact driver tools
#
# BUILD_DIR tells how each source is compiled; it has to be configured, not built.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(realpath -m -- "${1:-$root/build/release}")
shift || true
folders=("${@:-velmora}")
[[ $# -gt 0 ]] || folders+=(contact driver tools)
cd "$root"

if [[ ! -f $build/compile_commands.json ]]; then
    echo "check_tidy: $build holds no compile_commands.json; configure it first" >&2
    exit 2
fi
# A source that isn't built has no commands, and would be checked with made-up ones.
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' | sort | while read -r source; do
    if grep -qF "\"file\": \"$root/$source\"" "$build/compile_commands.json"; then
        echo "$source"
    else
        echo "check_tidy: $source isn't built; left out" >&2
    fi
done)
if [[ ${#sources[@]} -eq 0 ]]; then
    echo "check_tidy: no sources in ${folders[*]}" >&2
    exit 2
fi

# clang doesn't know every option that g++ was given.
commands=$(mktemp -d)
trap 'rm -rf "$commands"' EXIT
sed 's/ -fno-tree-loop-vectorize//' "$build/compile_commands.json" >"$commands/compile_commands.json"

status=0
printf '%s\0' "${sources[@]}" |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet -p "$commands" 2> >(grep -Ev '^[0-9]+ warnings? ' >&2) || status=1
echo "check_tidy: ${#sources[@]} sources, $([[ $status -eq 0 ]] && echo no findings || echo findings above)"
exit "$status"
