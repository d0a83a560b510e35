#!/usr/bin/env bash
# Feeds the reader of modal files with random variants of files of our own, under the address and undefined behaviour
# sanitizers. Fails, and names the file, at a crash, a leak, 10 s for one file or 1 GB of memory.
#
# Usage: scripts/fuzz_modal_files.sh [SECONDS]    default 60
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake --preset fuzz
cmake --build --preset fuzz --parallel "$(nproc)" --target fuzz_modal_file
corpus=build/fuzz/corpus
mkdir -p "$corpus"
VELMORA_SEED=$corpus build/fuzz/tests/fuzz/fuzz_modal_file
build/fuzz/tests/fuzz/fuzz_modal_file -max_total_time="${1:-60}" -timeout=10 -rss_limit_mb=1024 -max_len=16384 \
    -artifact_prefix=build/fuzz/ -print_final_stats=1 "$corpus"
