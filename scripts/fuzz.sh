#!/usr/bin/env bash
# Feeds each reader of files and replies with inputs that nobody would write, for so many seconds each
# (default: half an hour), and says how many it took. An input that brought one down stays in
# build/fuzz/findings/; its target, called with that file, shows it again.
set -euo pipefail
cd "$(dirname "$0")/.."
export seconds=${1:-1800}
jobs=${JOBS:-$(nproc)}

scripts/setup.sh
cmake --preset asan >/dev/null
cmake --build --preset asan --target fuzzers

# Beside the seeds of its own, what the project ships.
shipped() {
  case $1 in
    tasktree) echo augments ;;
    template) echo platforms/darknet/configs platforms/darknet/nets ;;
  esac
}

fuzz() {
  local target=$1 run=build/fuzz/runs/$1
  local files
  # In memory where that can be: each input becomes a file.
  mkdir -p "$run/corpus" build/fuzz/findings
  files=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "$PWD/build/fuzz")")
  # shellcheck disable=SC2064
  trap "rm -rf '$files'" EXIT
  local seeds=()
  [ -d "tests/fuzz/seeds/$target" ] && seeds+=("tests/fuzz/seeds/$target")
  # shellcheck disable=SC2046
  if ! TMPDIR=$files build/asan/bin/fuzz_"$target" -max_total_time="$seconds" \
    -timeout=25 -rss_limit_mb=2048 -max_len=16384 -print_final_stats=1 -dict=tests/fuzz/numbers.dict \
    -artifact_prefix="build/fuzz/findings/$target-" "$run/corpus" "${seeds[@]}" $(shipped "$target") \
    >"$run/log" 2>&1; then
    echo "fuzz: $target failed:" >&2
    tail -40 "$run/log" >&2
    return 1
  fi
  awk -v target="$target" '/number_of_executed_units/ { runs = $2 } /cov:/ { covered = $0 }
    END { sub(/.*cov: /, "", covered); sub(/ .*/, "", covered)
          printf "%-10s %10d inputs, %6d places reached\n", target, runs, covered }' "$run/log"
}
export -f fuzz shipped

find build/asan/bin -name 'fuzz_*' -printf '%f\n' | sed 's/^fuzz_//' | sort |
  xargs -P "$jobs" -I{} bash -euo pipefail -c 'fuzz {}'
