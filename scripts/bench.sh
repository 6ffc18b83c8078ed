#!/usr/bin/env bash
# Builds the benchmarks and runs them all, which takes some minutes, and writes docs/performance.md.
# With --smoke each runs just once, at its smallest size, so that they keep working; other arguments
# go to the program, as in: scripts/bench.sh --benchmark_filter=save
# SAMPLEBENCH_PICTURES may name a directory of photographs that training sets are generated from.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release -DTNV_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release --target benchmarks

# A disk's moods would drown what is measured, so files lie in memory where there is room for them.
memory=/dev/shm
if [ -z "${TMPDIR:-}" ] && [ -w "$memory" ] &&
  [ "$(df --output=avail -k "$memory" | tail -n 1)" -gt 4000000 ]; then
  export TMPDIR="$memory"
fi
if [ "$#" -eq 0 ]; then set -- --report=docs; fi
build/release/bin/benchmarks "$@"
