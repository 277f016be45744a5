#!/usr/bin/env bash
# The main window stands where it was left: on a virtual X server with a window manager
# (openbox), the program is started, its window moved and resized as a user would, and closed
# through the window manager; then it is started and closed ten more times, each time checked
# to come up at the same place and size.
#
#   scripts/geometry-check.sh [BUILD_DIR] [RUNS]
#
# Needs xvfb-run, openbox, xdotool, wmctrl and xwininfo (x11-utils); installs them when
# missing. Exit 0 when every start stands where the first was left.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
runs=${2:-10}

if [ -z "${GEOMETRY_CHECK_INSIDE:-}" ]; then
    tools=(xvfb xauth openbox xdotool wmctrl x11-utils)
    missing=()
    for p in "${tools[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    if [ ${#missing[@]} -gt 0 ]; then
        sudo_cmd=()
        [ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
        DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
    fi
    GEOMETRY_CHECK_INSIDE=1 exec xvfb-run -a -s "-screen 0 1600x1000x24" "$0" "$@"
fi

bin=$build/bin
work=$(mktemp -d "${TMPDIR:-/tmp}/quorlen-geometry.XXXXXX")
wm_pid=
app_pid=
cleanup() {
    [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null || true
    [ -n "$wm_pid" ] && kill "$wm_pid" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT INT TERM

openbox >"$work/openbox.log" 2>&1 &
wm_pid=$!
sleep 1

# A data folder of the check's own, without the start question.
cp "$bin"/RZ400_800M3.ini "$bin"/RZ400_800M3_Default_Settings.qxs "$bin"/RZ400_800M3_Default_Log_Settings.qxl "$work/"
sed -i 's/^Autoguide=.*/Autoguide=0\r/' "$work/RZ400_800M3.ini"

export QT_QPA_PLATFORM=xcb
start() {
    "$bin/quorlen" --app-path "$work" --unattended >>"$work/quorlen.log" 2>&1 &
    app_pid=$!
    wid=
    for _ in $(seq 100); do
        wid=$(xdotool search --onlyvisible --name "New1.qxs" 2>/dev/null | head -1 || true)
        [ -n "$wid" ] && break
        sleep 0.1
    done
    [ -n "$wid" ] || { echo "geometry-check: the main window did not show" >&2; cat "$work/quorlen.log" >&2; exit 1; }
    # Let the window manager frame and place it.
    sleep 1.5
}
place() {
    xwininfo -id "$wid" | awk '/Absolute upper-left X/ {x=$4} /Absolute upper-left Y/ {y=$4}
        /Width:/ {w=$2} /Height:/ {h=$2} END {print x "," y " " w "x" h}'
}
stop() {
    wmctrl -i -c "$wid"
    for _ in $(seq 100); do
        kill -0 "$app_pid" 2>/dev/null || break
        sleep 0.1
    done
    if kill -0 "$app_pid" 2>/dev/null; then
        echo "geometry-check: the program did not close" >&2
        exit 1
    fi
    wait "$app_pid" 2>/dev/null || true
    app_pid=
}

start
# Where a user might put it: away from the corner, smaller than the screen.
wmctrl -i -r "$wid" -e 0,237,143,1100,720
sleep 1
left=$(place)
stop
echo "left at: $left"

status=0
for run in $(seq "$runs"); do
    start
    now=$(place)
    stop
    if [ "$now" = "$left" ]; then
        echo "start $run: $now"
    else
        echo "start $run: $now  -- moved (left at $left)"
        status=1
    fi
done
grep -a "Main_Window_Size" "$work/RZ400_800M3.ini" | tr '\t\r' ' ' || true
[ $status -eq 0 ] && echo "PASS: $runs starts, the window stood where it was left" || echo "FAIL"
exit $status
