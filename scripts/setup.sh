#!/usr/bin/env bash
# Installs the Debian packages that scripts/packages.txt names, where they are missing.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t wanted < <(grep -v '^#' scripts/packages.txt)
missing=()
for package in "${wanted[@]}"; do
  dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
"${as_root[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
