#!/usr/bin/env bash
# Does what nobody hopes for, as often as it takes to believe in the outcome, and writes down how often
# and how it ended: docs/reliability.md. Takes so many seconds for each fuzz target (default: half an
# hour) and about half an hour for the rest.
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
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target tests_reliability
export TSAN_OPTIONS="halt_on_error=1 suppressions=$PWD/tests/support/tsan.supp"

row() { printf '| %s | %s | %s |\n' "$@" >>"$page"; }

# Runs tests of a build, with so many repeats where they take a number, and sets $tests, how many they
# were, $passed, and a variable for each figure that they note down. Those of a test that failed before
# it came so far are unknown.
try() {
  local program=build/$1/bin/$2 name=$1-${3//[^A-Za-z]/}
  passed=yes tests=0
  killed='?' between='?' limits='?' disks='?' closed='?' steps='?' complete='?' stopped='?'
  rm -f "$work/$name.xml"
  echo "reliability: $name"
  env ${4:+SAMPLEBENCH_REPEATS="$4"} "$program" --gtest_filter="$3" \
    --gtest_output="xml:$work/$name.xml" >"$work/$name.log" 2>&1 || passed=no
  if [ -f "$work/$name.xml" ]; then
    tests=$(sed -nE 's/^<testsuites tests="([0-9]+)".*/\1/p' "$work/$name.xml")
    eval "$(sed -nE 's/.*<property name="([a-z]+)" value="([0-9]+)".*/\1=\2/p' "$work/$name.xml")"
  fi
  # A name that no test has is passed by, too.
  [ "$tests" -gt 0 ] || passed=no
  [ $passed = yes ] || failed=1
}

# The row of what was tried last.
tried() {
  local outcome=$3
  [ $passed = yes ] || outcome='**failed**'
  row "$1" "$2" "$outcome"
}

cat >"$page" <<EOF
# Reliability

Made by \`scripts/reliability.sh $seconds\` on $(date +%F), with $(nproc) processor cores and
$(. /etc/os-release && echo "$PRETTY_NAME"). "Nothing lost" means that each file is the old or the new one,
whole, that the project loads, and that no mark is gone which had been on the disk before.

| what happens | how often | outcome |
| --- | --- | --- |
EOF

try release tests_reliability Saving.KilledAtAnyMomentLosesNothing 1000
tried 'a save of 200 pictures is killed, half of the times while the records take their places' \
  "$killed times, $between of them when some records were new and some were old" \
  'nothing lost, and the project knows the class of each mark'
try release tests_reliability Saving.FilesThatMayNotGrowLoseNothing
tried 'files may not grow beyond a limit' "$limits limits" 'nothing lost'
try release tests_reliability Saving.ADiskThatIsFullLosesNothing
if [ "$disks" = 0 ]; then
  tried 'the disk is full' '' 'not tried: mounting a disk takes more rights'
else
  tried 'the disk is full' "with $disks amounts of free space" 'nothing lost'
fi
try release tests_reliability Saving.DirectoriesThatMayNotBeWrittenToLoseNothing
tried 'directories may not be written to' "$closed combinations" 'nothing lost'
try release tests_reliability 'Flush.*'
tried 'the order of flushes and renames in a save of one file and of many' "$tests tests" \
  'files are on the disk before they take their places, many of them in one pass'
try release tests_e2e 'Unchanged.*'
tried 'a project with each kind of mark is opened and saved unchanged, again and again' \
  "$tests test" 'files stay the same, byte by byte'
try release tests_reliability '*/Hostile.*'
tried 'records with counts, numbers, texts and depths out of all measure' \
  "$((tests / 3)) records; each is looked at, goes through a run and is saved" \
  'answered or refused in less than 2 GiB; the pictures beside it are kept and shown'
try release tests_reliability 'HostileFiles.*'
tried 'the same in pictures, lists, settings, task trees, templates and labels, and zooms' \
  "$tests tests" 'answered or refused in less than 2 GiB'
for build in release tsan; do
  try $build tests_reliability Stress.OneProjectIsAnnotatedWhileAnotherOneIsGeneratedFrom 5000
  under=''
  [ $build = release ] || under=', under the thread sanitizer'
  tried "one project is annotated while another one is generated from and stopped, in four threads$under" \
    "$steps steps through the pictures, $complete complete and $stopped stopped runs" \
    'all marks and samples are there'
done
try release tests_reliability LongUse.PicturesThatWereLookedAtDoNotPileUp 1000
tried 'pictures are looked at one after the other' "$steps of them" \
  'no more memory than for those that are held, no more open files'
try release tests_app 'ProgramLock.*'
tried 'the program is started twice for a project or an output' "$tests tests" \
  'one of them writes, the others are told and change nothing'
try release tests_app 'ProgramRelink.*:ProgramMoved.*'
tried 'pictures and projects are moved and copied' "$tests tests" \
  'found again when it is told where to, and nothing changes before'
try release tests_app 'ProgramCheck.*'
tried 'a project is checked with files that are missing, damaged or changed' "$tests tests" \
  'each is named'

echo 'reliability: tests with the numbers of a German desktop'
passed=yes
scripts/test-locale.sh >"$work/locale.log" 2>&1 || passed=no failed=1
tried 'numbers have commas for points (`de_DE.UTF-8`)' \
  "$(sed -nE 's/^test-locale: ([0-9]+) tests passed$/\1/p' "$work/locale.log") tests" 'all pass'

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
