#!/usr/bin/env bash
# Installs what is missing, builds (incrementally on a second run) and runs every test.
#   PRESET=asan scripts/run-tests.sh    the same under AddressSanitizer and UBSan
#
# The window tests run on a virtual X server (Xvfb) through Qt's xcb platform, with Mesa's
# software OpenGL, so the 3D views are drawn and tested too. Without xvfb-run (a developer's
# machine without X) they run offscreen and the OpenGL views are left out. So they do under
# the sanitizers: the X and OpenGL libraries keep memory to the end of the process (Mesa's
# driver is even unloaded first), which the leak check cannot tell from ours.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${PRESET:-release}

scripts/deps.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
export QT_QPA_PLATFORM=offscreen
if [ "$preset" != asan ] && command -v xvfb-run >/dev/null; then
    export QUORLEN_TEST_PLATFORM=xcb LIBGL_ALWAYS_SOFTWARE=1
    # -a takes the first free display from -n on; a start of our own keeps two runs on one
    # machine from taking the same display at the same moment. -noreset: by default the server
    # resets whenever its last client leaves, and drops a test that connects during the reset
    # ("could not connect to display"); with two tests starting and ending side by side that
    # happened about once in thirty connections.
    exec xvfb-run -a -n $((100 + $$ % 800)) -s "-noreset -screen 0 1920x1200x24" \
        ctest --preset "$preset" -j "$(nproc)"
fi
ctest --preset "$preset" -j "$(nproc)"
