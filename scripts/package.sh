#!/usr/bin/env bash
# Makes the Debian packages out of the release build and says where they lie.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# Packages install below /usr, where the dynamic linker finds the library by itself.
cmake --preset release -DCMAKE_INSTALL_PREFIX=/usr -DTNV_INSTALL_RPATH=OFF >/dev/null
restore() { cmake --preset release -UCMAKE_INSTALL_PREFIX -DTNV_INSTALL_RPATH=ON >/dev/null; }
trap restore EXIT
cmake --build --preset release
rm -rf build/release/packages
(cd build/release && cpack >/dev/null)
ls build/release/packages/*.deb
