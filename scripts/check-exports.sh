#!/usr/bin/env bash
# Fails if the shared library exports anything but the front end's classes and the observers, or if
# the list of what it exports is not the one in tests/exports.txt. --update writes that list anew.
set -euo pipefail
cd "$(dirname "$0")/.."
library=${LIBRARY:-build/release/lib/libTNV_SampleBenchNative.so}
list=tests/exports.txt

exported() {
  nm -D --defined-only -C "$library" | cut -d' ' -f3- | grep -v '^TNV_SampleBenchNative' | sort -u
}

strangers=$(exported | grep -vE '^((vtable|typeinfo|typeinfo name) for )?(WTNV|TNVObserver|TNVHandler[A-Za-z]+Observer)' || true)
if [ -n "$strangers" ]; then
  echo "check-exports: these names must not be exported:" >&2
  echo "$strangers" >&2
  exit 1
fi
if [ "${1:-}" = --update ]; then
  exported > "$list"
elif ! exported | diff "$list" -; then
  echo "check-exports: the exported names changed; scripts/check-exports.sh --update accepts that" >&2
  exit 1
fi
