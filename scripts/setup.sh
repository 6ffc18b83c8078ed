#!/usr/bin/env bash
# Installs what the project needs on a Debian machine. Does nothing where all of it is there.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t wanted < <(grep -v '^#' scripts/packages.txt)

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

missing=()
for package in "${wanted[@]}"; do
  is_installed "$package" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null || ! sudo -n true 2>/dev/null; then
    echo "setup: these packages are missing and installing them needs root:" >&2
    printf '  %s\n' "${missing[@]}" >&2
    echo "setup: install them, or run scripts/setup.sh as root, and try again." >&2
    exit 1
  fi
  as_root=(sudo)
fi

echo "setup: installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
