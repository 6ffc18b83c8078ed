#!/usr/bin/env bash
# Installs the release build into an empty directory and uses it as a stranger would: from CMake, from
# pkg-config, and by running the installed program.
set -euo pipefail
cd "$(dirname "$0")/.."
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

cmake --install build/release --prefix "$place/prefix" >/dev/null
cmake -S tests/consumer -B "$place/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$place/prefix" >/dev/null
cmake --build "$place/consumer" >/dev/null
"$place/consumer/consumer" "$place/projects/"

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$place/prefix" -name TNV_SampleBenchNative.pc)")
# shellcheck disable=SC2046
c++ -std=c++20 tests/consumer/main.cpp -o "$place/by-pkg-config" \
  $(pkg-config --cflags --libs TNV_SampleBenchNative) -Wl,-rpath,"$(pkg-config --variable=libdir TNV_SampleBenchNative)"
"$place/by-pkg-config" "$place/more-projects/"

"$place/prefix/bin/samplebench" demo "$place/demo" >"$place/demo.txt" 2>"$place/demo.log" ||
  { cat "$place/demo.log" >&2; exit 1; }
echo "check-install: package, pkg-config and program work from $place/prefix"
