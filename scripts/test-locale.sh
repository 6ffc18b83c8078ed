#!/usr/bin/env bash
# Runs the release build's tests as on a German desktop, where a number has a comma for its point. The
# tests of the program are left out: it starts as its own process, which sets no locale.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
place=$PWD/build/locale
mkdir -p "$place"
[ -d "$place/de_DE.UTF-8" ] || localedef -i de_DE -f UTF-8 "$place/de_DE.UTF-8"
LOCPATH=$place SAMPLEBENCH_TEST_LOCALE=de_DE.UTF-8 ctest --preset release --exclude-regex '^Program' "$@"
