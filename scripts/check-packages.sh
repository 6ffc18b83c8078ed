#!/usr/bin/env bash
# Makes the Debian packages, looks them through, unpacks them into an empty root, and uses what is
# there as their users would: runs the program, and builds a consumer against the library.
set -euo pipefail
cd "$(dirname "$0")/.."
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

scripts/package.sh >/dev/null
# Two of these find fault with what concerns an upload to Debian, which this is not; the third with
# the scripts that CPack adds to a package with a library, beside the trigger that suffices.
lintian --allow-root --fail-on error,warning \
  --suppress-tags initial-upload-closes-no-bugs,package-name-doesnt-match-sonames \
  --suppress-tags maintscript-calls-ldconfig \
  build/release/packages/*.deb

for package in build/release/packages/*.deb; do
  dpkg-deb -x "$package" "$place/root"
done
libraries=$(dirname "$(find "$place/root" -name 'libTNV_SampleBenchNative.so.*.*.*')")
export LD_LIBRARY_PATH=$libraries

"$place/root/usr/bin/samplebench" demo "$place/demo" >"$place/demo.txt" 2>"$place/demo.log" ||
  { cat "$place/demo.log" >&2; exit 1; }
cmake -S tests/consumer -B "$place/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$place/root/usr" >/dev/null
cmake --build "$place/consumer" >/dev/null
"$place/consumer/consumer" "$place/projects/"
# A folder of labelled pictures becomes a set in five commands, without a display.
bench() { env -u DISPLAY -u WAYLAND_DISPLAY "$place/root/usr/bin/samplebench" --projects "$place/walk" "$@" >>"$place/walk.txt" 2>"$place/walk.log" || { cat "$place/walk.log" >&2; exit 1; }; }
mkdir "$place/labelled"
printf 'screw\nnut\nwasher\n' >"$place/labelled/classes.txt"
cp "$place"/demo/pictures/parts_0*.jpg "$place/labelled"
for picture in "$place"/labelled/*.jpg; do
  echo "1 0.5 0.5 0.25 0.25" >"${picture%.jpg}.txt"
done
bench create walk
bench labels import walk all "$place/labelled"
bench generate walk --output "$place/walk-set" --keep-together source --test-ratio 0.3
bench verify "$place/walk-set"
grep -q '^9 pictures, 9 labels, 0 findings' "$place/walk.txt" ||
  { cat "$place/walk.txt" >&2; exit 1; }

man --warnings -l "$(find "$place/root" -name 'samplebench.1.gz')" >/dev/null
echo "check-packages: program and library work from the packages"
