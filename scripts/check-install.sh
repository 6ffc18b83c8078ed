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
c++ -std=c++20 tests/consumer/consumer.cpp -o "$place/by-pkg-config" \
  $(pkg-config --cflags --libs TNV_SampleBenchNative) -Wl,-rpath,"$(pkg-config --variable=libdir TNV_SampleBenchNative)"
"$place/by-pkg-config" "$place/more-projects/"

# The front end of the documentation, which shows its source.
diff <(sed -n '/^```cpp$/,/^```$/p' docs/frontend.md | sed '1d;$d') tests/consumer/frontend.cpp ||
  { echo "check-install: docs/frontend.md shows another source than tests/consumer/frontend.cpp" >&2; exit 1; }
[ "$(wc -l <tests/consumer/frontend.cpp)" -le 60 ] ||
  { echo "check-install: the front end of the documentation is to have 60 lines at most" >&2; exit 1; }
samplebench() { "$place/prefix/bin/samplebench" --projects "$place/front" --quiet "$@"; }
samplebench create clicks >/dev/null
samplebench class add clicks leaf >/dev/null
samplebench import clicks first docs >/dev/null
printf '0.1 0.2 0.4 0.5\n\n0.3 0.3 0.6 0.6\n' |
  "$place/consumer/frontend" "$place/front/" clicks "$place/seen.ppm" >"$place/front.log"
[ "$(head -c 2 "$place/seen.ppm")" = P6 ]
samplebench list clicks | grep -q 'total: 2 pictures, 2 marks'

# What guards against errors that slipped through.
for file in "$place/prefix/bin/samplebench" "$(find "$place/prefix" -name 'libTNV_SampleBenchNative.so.*.*')"; do
  elf=$(readelf --wide --file-header --dynamic --program-headers --dyn-syms "$file")
  for guard in 'Type: +DYN' 'FLAGS.* NOW|BIND_NOW' GNU_RELRO __stack_chk_fail '_chk@GLIBC'; do
    grep -qE "$guard" <<<"$elf" || { echo "check-install: $file has no $guard" >&2; exit 1; }
  done
done

# What shells and man look for.
for text in bash-completion/completions/samplebench zsh/site-functions/_samplebench \
  fish/vendor_completions.d/samplebench.fish man/man1/samplebench.1.gz; do
  [ -s "$place/prefix/share/$text" ] || { echo "check-install: share/$text is missing" >&2; exit 1; }
done

"$place/prefix/bin/samplebench" demo "$place/demo" >"$place/demo.txt" 2>"$place/demo.log" ||
  { cat "$place/demo.log" >&2; exit 1; }
echo "check-install: package, pkg-config and program work from $place/prefix"
