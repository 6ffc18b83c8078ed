#!/usr/bin/env bash
# Sets up, builds, and makes a training set from pictures: from ones that it draws, or, as in
# scripts/demo.sh OUTPUT --pictures DIRECTORY, from your own.
set -euo pipefail
cd "$(dirname "$0")/.."
output=${1:-build/demo}
[ $# -gt 0 ] && shift

scripts/setup.sh
cmake --preset release
cmake --build --preset release --target samplebench
build/release/bin/samplebench demo "$output" "$@"
