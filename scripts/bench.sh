#!/usr/bin/env bash
# Builds the benchmarks and runs them. With --smoke each runs just once, at its smallest size, so that
# they keep working; other arguments go to the program, as in: scripts/bench.sh --benchmark_filter=save
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release -DTNV_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release --target benchmarks
build/release/bin/benchmarks "$@"
