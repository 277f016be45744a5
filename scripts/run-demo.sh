#!/usr/bin/env bash
# Installs what is missing, builds (incrementally on a second run) and starts the program.
# The build folder holds the shipped data beside the program, so it runs from there as a
# portable installation.
#
# Demo mode: the box simulator stands in for the box. It answers on a link in
# $XDG_RUNTIME_DIR (else /tmp), the program talks to it, and it stops when the program exits.
# BOXSIM_ARGS adds simulator options, e.g. BOXSIM_ARGS="--engine-running --slave".
# With a real box, start build/release/bin/quorlen itself.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release

bin=build/release/bin
link="${XDG_RUNTIME_DIR:-/tmp}/quorlen-box"
ready=$(mktemp)
# shellcheck disable=SC2086 # the options are words
"$bin/boxsim" --link "$link" ${BOXSIM_ARGS:-} >"$ready" &
boxsim=$!
trap 'kill "$boxsim" 2>/dev/null; wait "$boxsim" 2>/dev/null; rm -f "$ready"' EXIT
for _ in $(seq 50); do
    grep -q '^ready ' "$ready" && break
    kill -0 "$boxsim" 2>/dev/null || { echo "run-demo: the box simulator did not start" >&2; exit 1; }
    sleep 0.1
done
grep -q '^ready ' "$ready" || { echo "run-demo: the box simulator is not ready" >&2; exit 1; }
echo "Demo mode: the box simulator answers on $link"
"$bin/quorlen" --port "$link" "$@"
