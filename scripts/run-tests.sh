#!/usr/bin/env bash
# Installs what is missing, builds (incrementally on a second run) and runs every test.
#   PRESET=asan scripts/run-tests.sh    the same under AddressSanitizer and UBSan
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${PRESET:-release}

scripts/deps.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
export QT_QPA_PLATFORM=offscreen
ctest --preset "$preset" -j "$(nproc)"
