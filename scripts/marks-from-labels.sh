#!/bin/sh
# Prints a list of marks for `samplebench mark PROJECT --list FILE` from pictures that have label
# texts beside them, one box a line: <class number> <centre x> <centre y> <width> <height>, relative
# to the picture. Right and bottom edges come a millionth, the last digit of a label, further in: an
# edge on the border of two pixels would otherwise touch the next one. The names file has the class names, one a line, in the order of the numbers.
#
# Usage: marks-from-labels.sh DIRECTORY NAMES_FILE > marks.txt
set -eu
export LC_ALL=C

if [ $# -ne 2 ]; then
  echo "usage: $0 DIRECTORY NAMES_FILE" >&2
  exit 2
fi
directory=$(cd "$1" && pwd)
names=$2

# Written at the end alone: half a list would look like a whole one.
list=$(mktemp)
trap 'rm -f "$list"' EXIT

for picture in "$directory"/*.jpg; do
  labels=${picture%.jpg}.txt
  [ -f "$labels" ] || continue
  PICTURE=$picture awk '
    function clamped(value) { return value < 0 ? 0 : value > 1 ? 1 : value }
    function fail(reason) {
      printf "%s:%d: %s\n", FILENAME, FNR, reason > "/dev/stderr"
      exit 1
    }
    { sub(/\r$/, "") }
    FILENAME == ARGV[1] { name[FNR - 1] = $0; next }
    NF == 0 { next }
    NF != 5 { fail("expected 5 fields, found " NF) }
    !($1 in name) { fail("no name for class " $1) }
    {
      printf "%s\tRect\t%s\t%.9f,%.9f %.9f,%.9f\n", ENVIRON["PICTURE"], name[$1],
        clamped($2 - $4 / 2), clamped($3 - $5 / 2), clamped($2 + $4 / 2 - 1e-6), clamped($3 + $5 / 2 - 1e-6)
    }
  ' "$names" "$labels" >> "$list"
done
cat "$list"
