#!/usr/bin/env bash
# Builds everything with the default preset and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset default
cmake --build --preset default -j"$(nproc)"
ctest --preset default -j"$(nproc)"
