#!/usr/bin/env bash
# Does what nobody hopes for, as often as it takes to believe in the outcome, and writes down how often
# and how it ended: docs/reliability.md. Takes so many seconds for each fuzz target (default: half an
# hour) and about a quarter of an hour for the rest.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-1800}
work=build/reliability
page=$work/reliability.md
failed=0
mkdir -p "$work"

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release

row() { printf '| %s | %s | %s |\n' "$@" >>"$page"; }

# Runs a test so often, and sets $outcome, and a variable for each figure that it notes down. Those of a
# test that failed before it came so far are unknown.
try() {
  local name=$1 times=$2
  outcome='nothing lost'
  killed='?' between='?' limits='?' disks='?' closed='?' steps='?' complete='?' stopped='?'
  rm -f "$work/$name.xml"
  echo "reliability: $name"
  SAMPLEBENCH_REPEATS=$times build/release/bin/tests_reliability --gtest_filter="$name" \
    --gtest_output="xml:$work/$name.xml" >"$work/$name.log" 2>&1 || { outcome='**failed**' failed=1; }
  [ -f "$work/$name.xml" ] || return 0
  eval "$(sed -nE 's/.*<property name="([a-z]+)" value="([0-9]+)".*/\1=\2/p' "$work/$name.xml")"
}

cat >"$page" <<EOF
# Reliability

Made by \`scripts/reliability.sh $seconds\` on $(date +%F), with $(nproc) processor cores and
$(. /etc/os-release && echo "$PRETTY_NAME"). "Nothing lost" means that each file is the old or the new one,
whole, that the project loads, and that no mark is gone which had been on the disk before.

| what happens | how often | outcome |
| --- | --- | --- |
EOF

try Saving.KilledAtAnyMomentLosesNothing 1000
row 'a save of 200 pictures is killed at a random moment' \
  "$killed times, $between of them between the first picture's file and the last" "$outcome"
try Saving.FilesThatMayNotGrowLoseNothing 1
row 'files may not grow beyond a limit' "$limits limits" "$outcome"
try Saving.ADiskThatIsFullLosesNothing 1
[ "$disks" != 0 ] || outcome='not tried: mounting a disk takes more rights'
row 'the disk is full' "with $disks amounts of free space" "$outcome"
try Saving.DirectoriesThatMayNotBeWrittenToLoseNothing 1
row 'directories may not be written to' "$closed combinations" "$outcome"
try Stress.OneProjectIsAnnotatedWhileAnotherOneIsGeneratedFrom 5000
row 'one project is annotated while another one is generated from and stopped, in four threads' \
  "$steps steps through the pictures, $complete complete and $stopped stopped runs" \
  "${outcome/nothing lost/all marks and samples are there}"
try LongUse.PicturesThatWereLookedAtDoNotPileUp 1000
row 'pictures are looked at one after the other' "$steps of them" \
  "${outcome/nothing lost/memory and open files stay where they were}"

echo 'reliability: tests with the numbers of a German desktop'
if scripts/test-locale.sh >"$work/locale.log" 2>&1; then outcome='all pass'; else outcome='**failed**' failed=1; fi
row 'numbers have commas for points (`de_DE.UTF-8`)' \
  "$(sed -nE 's/^test-locale: ([0-9]+) tests passed$/\1/p' "$work/locale.log") tests" "$outcome"

cat >>"$page" <<EOF

Each reader of files and replies was fed with inputs that grow out of sound ones, for $seconds seconds,
under the address and undefined behaviour sanitizers (\`scripts/fuzz.sh\`). What a reader promises is checked
for each input: what was saved comes back, labels that are found are taken or rejected, and so on.

| reader | inputs | outcome |
| --- | --- | --- |
EOF
scripts/fuzz.sh "$seconds" >"$work/fuzz.log" 2>&1 || failed=1
while read -r target inputs _; do
  row "$target" "$inputs" 'no finding'
done < <(grep ' inputs, ' "$work/fuzz.log" | sort)
grep -o '^fuzz: .* failed' "$work/fuzz.log" | while read -r _ target _; do row "$target" '' '**failed**'; done || true

cp "$page" docs/reliability.md
cat "$page"
exit "$failed"
