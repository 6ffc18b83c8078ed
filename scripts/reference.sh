#!/usr/bin/env bash
# Makes the reference of the exported headers in build/reference/html. A warning is a failure.
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p build/reference
doxygen docs/Doxyfile
echo "reference: build/reference/html/index.html"
