#!/usr/bin/env bash
# Installs the package on this machine as a user would, starts the installed program from its
# launcher on a virtual X server as a new user, checks that it found its data (copied into the
# user's folder from /usr/share/quorlen) and opens the manual (F1) in the desktop's viewer, then
# removes the package and checks that nothing of it is left.
#
#   sudo scripts/install-check.sh [build/release/quorlen_<version>_<arch>.deb]
#
# Needs root (dpkg), xvfb-run, openbox, xdotool and wmctrl. Exit 0 when every step passed.
set -euo pipefail
cd "$(dirname "$0")/.."
deb=${1:-$(ls build/release/quorlen_*.deb | head -1)}
[ "$(id -u)" -eq 0 ] || { echo "install-check: run as root (it installs and removes the package)" >&2; exit 2; }
if dpkg-query -W -f='${Status}' quorlen 2>/dev/null | grep -q "install ok installed"; then
    echo "install-check: quorlen is installed already; remove it first" >&2
    exit 2
fi
work=$(mktemp -d "${TMPDIR:-/tmp}/quorlen-install-check.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() {
    echo "FAIL: $*" >&2
    exit 1
}

echo "== install $deb"
dpkg -i "$deb" || DEBIAN_FRONTEND=noninteractive apt-get install -f -y -q
dpkg-query -W -f='${Status}\n' quorlen | grep -q "install ok installed" || fail "not installed"
dpkg -L quorlen >"$work/files"

launcher=/usr/share/applications/com.velmora.Quorlen.desktop
exec_word=$(sed -n 's/^Exec=//p' "$launcher" | cut -d' ' -f1)
program=$(command -v "$exec_word") || fail "the launcher's Exec ($exec_word) is not on the PATH"
echo "the launcher starts $program"

# A new user: an empty home, and a desktop whose document viewer only notes what it is given.
home=$work/home
mkdir -p "$home" "$work/viewer"
cat >"$work/viewer/xdg-open" <<VIEWER
#!/bin/sh
echo "\$1" >>"$work/opened"
VIEWER
chmod +x "$work/viewer/xdg-open"

cat >"$work/session.sh" <<'SESSION'
#!/usr/bin/env bash
set -euo pipefail
work=$1 program=$2
openbox >/dev/null 2>&1 &
wm=$!
sleep 1
"$program" >"$work/program.log" 2>&1 &
app=$!
wid=
for _ in $(seq 150); do
    wid=$(xdotool search --onlyvisible --name "New1.qxs" 2>/dev/null | head -1 || true)
    [ -n "$wid" ] && break
    sleep 0.1
done
[ -n "$wid" ] || { echo "the main window did not show"; cat "$work/program.log"; kill $app $wm; exit 1; }
sleep 2
# The first start asks whether to run the setup guide: not now.
xdotool key Escape
sleep 0.5
xdotool windowactivate --sync "$wid" 2>/dev/null || xdotool windowfocus --sync "$wid"
xdotool key F1
for _ in $(seq 50); do
    [ -s "$work/opened" ] && break
    sleep 0.1
done
wmctrl -i -c "$wid"
for _ in $(seq 100); do
    kill -0 $app 2>/dev/null || break
    sleep 0.1
done
kill $app 2>/dev/null && echo "the program did not close by its window"
# Once more, reporting its messages instead of showing them: a default settings file it could
# not find or read would be said here.
"$program" --unattended --quit-after-load >"$work/second.log" 2>&1 || true
kill $wm 2>/dev/null || true
SESSION
chmod +x "$work/session.sh"

echo "== start it from the launcher as a new user"
HOME=$home XDG_DATA_HOME= XDG_CONFIG_HOME= PATH="$work/viewer:$PATH" QT_QPA_PLATFORM=xcb \
    xvfb-run -a -s "-screen 0 1600x1000x24" "$work/session.sh" "$work" "$program"

data=$home/.local/share/quorlen
status=0
check() {
    if eval "$2"; then echo "ok: $1"; else echo "FAIL: $1"; status=1; fi
}
check "the user's data folder was made from /usr/share/quorlen" \
    "[ -f '$data/RZ400_800M3.ini' ] && [ -f '$data/RZ400_800M3_Default_Settings.qxs' ]"
check "the base maps came with it" "ls '$data'/Basemaps/*.qxs >/dev/null 2>&1"
# This machine has no adapter: the connection check's note of it is the one error expected.
check "the program started and logged no error but the missing adapter" \
    "grep -q 'Quorlen started' '$data/Debug_file.log' && ! grep 'Error in' '$data/Debug_file.log' | grep -vq 'Error in Check connection timer'"
check "a second start found its settings and had nothing to say" \
    "grep -q 'start-up to ready main window' '$work/second.log' && ! grep -q '^\[inform\]' '$work/second.log'"
check "F1 opened the manual of the user's folder in the viewer" \
    "grep -qx 'file://$data/Manual/RZ400_800M3_Manual.pdf' '$work/opened' 2>/dev/null"
check "the manual is a PDF" "head -c 5 '$data/Manual/RZ400_800M3_Manual.pdf' | grep -q '%PDF-'"
check "nothing was written under /usr" \
    "[ -z \"\$(find /usr/share/quorlen -newer '$work/files' -print -quit)\" ]"

if [ $status -ne 0 ]; then
    echo "-- Debug_file.log:"; cat "$data/Debug_file.log" 2>/dev/null || true
    echo "-- the program's output:"; cat "$work/program.log" 2>/dev/null || true
fi

echo "== remove"
dpkg -r quorlen
left=0
while read -r path; do
    [ -e "$path" ] || continue
    [ -d "$path" ] && [ -n "$(dpkg -S "$path" 2>/dev/null)" ] && continue # a folder other packages share
    [ -d "$path" ] && [ -n "$(ls -A "$path")" ] && continue                 # shared and not empty
    echo "left behind: $path"
    left=1
done <"$work/files"
check "dpkg -r removed every file of the package" "[ $left -eq 0 ] && [ ! -e /usr/share/quorlen ] && [ ! -e /usr/bin/quorlen ]"
check "dpkg no longer knows the package as installed" \
    "! dpkg-query -W -f='\${Status}' quorlen 2>/dev/null | grep -q 'install ok installed'"
[ $status -eq 0 ] && echo "PASS" || echo "FAIL"
exit $status
