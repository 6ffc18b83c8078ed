#!/usr/bin/env bash
# Sets up, builds and runs all tests. Arguments go to ctest, as in: scripts/test.sh -R TNVSettings
# PRESET=asan or PRESET=tsan runs them under the sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${PRESET:-release}

scripts/setup.sh
cmake --preset "$preset" -DTNV_WARNINGS_AS_ERRORS=ON
cmake --build --preset "$preset"
ctest --preset "$preset" "$@"
