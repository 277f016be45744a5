#!/bin/sh
# A minute of log from the box simulator with the engine running, on a line paced like
# 115200 baud, while quorlen-cli writes ten bytes and has the box move its running cell five
# times. Checks that the box ends equal to the program's image, that the log lost no more
# rows than the stream stood still for (the simulator numbers its rows in column 30, and its
# engine runs on while the stream stands), and that every change said its texts in order.
#
#   scripts/live-minute.sh [BUILD_DIR] [SECONDS]
#
# Takes a little over a minute by default. Exit 0 when all of it holds.
set -eu

build=${1:-build/release}
seconds=${2:-60}
bin=$build/bin
name=live-minute
. "$(dirname "$0")/boxsim-session.sh"

start_boxsim --engine-running --wire-baud 115200

# Ten writes spread over the first two thirds, five adjustments over the last third.
events=$(python3 -c '
import sys
s = int(sys.argv[1])
writes = ["300=40", "301=41", "420=90", "421=91", "660=30", "661=31", "700=32", "40=3", "41=4", "302=42"]
out = []
for i, w in enumerate(writes):
    out += ["--at", "%.2f:%s" % (s * (i + 1) / 16.0, w)]
for i, a in enumerate(["+", ">", "-", "<", "+"]):
    out += ["--adjust", "%.2f:%s" % (s * (11 + i) / 16.0, a)]
print(" ".join(out))
' "$seconds")
log="$work/live.qxl"
echo "== $seconds s, ten writes and five cell adjustments"
status=0
# shellcheck disable=SC2086
"$bin/quorlen-cli" live --port "$work/box" --seconds "$seconds" -o "$log" --verify $events > "$work/said.txt" ||
    status=1
cat "$work/said.txt"
python3 - "$log" "$work/said.txt" "$seconds" <<'EOF' || status=1
import math, re, sys
log, said_file, seconds = sys.argv[1], sys.argv[2], int(sys.argv[3])
said = [re.sub(r"^\s*[0-9.]+ s  ", "", l.rstrip("\n")) for l in open(said_file)]
ok = "verify: the box holds the image" in said
order_ok, windows, changes = True, [], 0
for i, line in enumerate(said):
    if not (line.startswith("write ") or line.startswith("adjust ")):
        continue
    changes += 1
    write = line.startswith("write ")
    j = i + 2
    while j < len(said) and said[j] != "< Settings updated >":
        good = said[j].startswith(" FWrite finished") if write else said[j] in ("<Update OK>", "<Not in cell>")
        order_ok = order_ok and good
        j += 1
    order_ok = order_ok and said[i + 1] == ("< Updateing ... >" if write else "< Updating ... >") and j > i + 2
    order_ok = order_ok and j + 1 < len(said) and said[j + 1].startswith("stream stood still ")
    if j + 1 < len(said):
        windows.append(float(said[j + 1].split()[3]))
text = open(log, "rb").read().decode("latin-1")
rows = [l for l in text.split("\r\n") if l.startswith("$") and len(l) == 171]
counters = [int(r[4 * 30 - 1:4 * 30 + 2]) for r in rows]
steps = [(b - a) % 256 for a, b in zip(counters, counters[1:])]
allowed = 1 + math.ceil(max(windows or [0]) / 50.0)
lost = sum(s - 1 for s in steps)
print("rows %d in %d s, rows lost %d over %d changes, windows %.1f..%.1f ms (mean %.1f), texts in order: %s"
      % (len(rows), seconds, lost, changes, min(windows or [0]), max(windows or [0]),
         sum(windows) / max(len(windows), 1), "yes" if order_ok else "NO"))
ok = ok and order_ok and changes == 15 and all(1 <= s <= allowed for s in steps)
print("PASS" if ok else "FAIL")
sys.exit(0 if ok else 1)
EOF
exit $status
