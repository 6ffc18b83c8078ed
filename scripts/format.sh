#!/usr/bin/env bash
# Formats all sources in place; with --check only says which are not formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" = --check ]; then
  git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
else
  git ls-files '*.h' '*.cpp' | xargs clang-format -i
fi
