#!/usr/bin/env bash
# Installs what is missing, builds (incrementally on a second run) and starts the program.
# The build folder holds the shipped data beside the program, so it runs from there as a
# portable installation.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release
exec build/release/bin/quorlen "$@"
