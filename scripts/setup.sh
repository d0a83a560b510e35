#!/usr/bin/env bash
# Installs the Debian packages that are missing, and nothing if none is.
#
# Usage: scripts/setup.sh [run|test|ci]      what the packages are needed for; default run
set -euo pipefail

packages=(build-essential cmake ninja-build git libopenblas-dev libsuitesparse-dev libtomlplusplus-dev
          libcli11-dev libfmt-dev libmrpt-expr-dev libeigen3-dev)
for_tests=(python3 libgtest-dev libgmock-dev libbenchmark-dev)
for_ci=(clang clang-format clang-tidy libclang-rt-14-dev)

case "${1:-run}" in
    run) ;;
    test) packages+=("${for_tests[@]}") ;;
    ci) packages+=("${for_tests[@]}" "${for_ci[@]}") ;;
    *) echo "usage: $0 [run|test|ci]" >&2; exit 2 ;;
esac

if ! command -v dpkg-query apt-get >/dev/null; then
    echo "setup: not a Debian system; taking for granted what these packages hold: ${packages[*]}" >&2
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ $status == installed ]] || missing+=("$package")
done
if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: neither root nor sudo; have these packages installed: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
quietly=(env DEBIAN_FRONTEND=noninteractive)
"${as_root[@]}" "${quietly[@]}" apt-get -q update
"${as_root[@]}" "${quietly[@]}" apt-get -q install --yes --no-install-recommends "${missing[@]}"
