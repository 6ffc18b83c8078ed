#!/usr/bin/env bash
# Runs the release build's tests as on a German desktop, where a number has a comma for its point. Tests
# that start the program are left out: it is its own process, which sets no locale.
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

# The tests of the program's parts stay in the process: those without a fixture, and those of the sets
# that are verified.
parts=$(grep -ohE '^TEST\(\w+' tests/app/*.cpp | sed 's/TEST(//; s/$/.*/' | sort -u | paste -sd:)
for tests in build/release/bin/tests_*; do
  filter='*'
  [ "$(basename "$tests")" != tests_app ] || filter="$parts:VerifiedSetTest.*:DescribedSetTest.*"
  log=$place/$(basename "$tests").log
  "$tests" --gtest_brief=1 --gtest_filter="$filter" >"$log" 2>&1 || { cat "$log" >&2; failed=1; }
  count=$(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\.$/\1/p' "$log")
  passed=$((passed + ${count:-0}))
done
echo "test-locale: $passed tests passed"
exit "$failed"
