#!/usr/bin/env bash
# Builds the library and runs the demo on a small generated orders document.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset default >/dev/null
cmake --build --preset default -j"$(nproc)" --target qzxml_demo
sample=build/default/orders_demo.xml
python3 examples/orders/gen_orders.py 3 "$sample"
./build/default/examples/qzxml_demo "$sample" "$@"
