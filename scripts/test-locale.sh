#!/usr/bin/env bash
# Runs the release build's tests as on a German desktop, where a number has a comma for its point. The
# tests of the program are left out: it starts as its own process, which sets no locale.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release
place=$PWD/build/locale
mkdir -p "$place"
[ -d "$place/de_DE.UTF-8" ] || localedef -i de_DE -f UTF-8 "$place/de_DE.UTF-8"
export LOCPATH=$place SAMPLEBENCH_TEST_LOCALE=de_DE.UTF-8
passed=0
failed=0
for tests in build/release/bin/tests_*; do
  [ "$(basename "$tests")" != tests_app ] || continue
  log=$place/$(basename "$tests").log
  "$tests" --gtest_brief=1 >"$log" 2>&1 || { cat "$log" >&2; failed=1; }
  count=$(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\.$/\1/p' "$log")
  passed=$((passed + ${count:-0}))
done
echo "test-locale: $passed tests passed"
exit "$failed"
