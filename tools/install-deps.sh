#!/usr/bin/env bash
# Installs the Debian packages that building, testing and benchmarking need,
# skipping what is already installed. Safe to run again.
set -euo pipefail

packages=(g++ cmake make pkg-config python3 libexpat1-dev zlib1g-dev libpcre2-dev
          libgtest-dev libbenchmark-dev libxml2-utils)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "install-deps: all packages present"
    exit 0
fi

echo "install-deps: installing ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
