#!/bin/sh
# The tuning loop as a tuner runs it with quorlen-cli against the box simulator: an engine that
# needs 12 % more fuel between 3000 and 5000 rpm and 1.0 to 1.5 bar is swept through its map
# and logged, the log corrects the shipped settings, the result is written to the box and a
# second log is taken. The region's cells that had a second of steady time each must read
# about 12 % lean in the first log and within 3 % in the second, and no cell outside the
# region may move by more than one byte.
#
#   scripts/fuel-loop-check.sh [BUILD_DIR] [SECONDS]
#
# Exit 0 when the loop passes. Takes twice SECONDS (default 300) and a little more.
# Needs python3 for the figures.
set -eu

build=${1:-build/release}
seconds=${2:-300}
bin=$build/bin
settings=$bin/RZ400_800M3_Default_Settings.qxs
# KEEP_DIR=DIR keeps the logs, the corrected settings and the grids there to look at.
name=fuel-loop
. "$(dirname "$0")/boxsim-session.sh"

start_boxsim --engine-running --drive sweep --fuel-error 3000-5000:1.0-1.5:+12

cli=$bin/quorlen-cli
echo "== first log, $seconds s"
"$cli" log --port "$work/box" --seconds "$seconds" -o "$work/first.qxl"
"$cli" log-hits "$work/first.qxl" --settings "$settings" --table fuel --lambda > "$work/before.txt"
echo "== fuel-correct"
"$cli" fuel-correct "$work/first.qxl" --settings "$settings" -o "$work/corrected.qxs" | tee "$work/changes.txt"
echo "== write"
"$cli" write --port "$work/box" "$work/corrected.qxs"
echo "== second log, $seconds s"
"$cli" log --port "$work/box" --seconds "$seconds" -o "$work/second.qxl"
"$cli" log-hits "$work/second.qxl" --settings "$work/corrected.qxs" --table fuel --lambda > "$work/after.txt"
"$cli" qxs-diff "$settings" "$work/corrected.qxs" > "$work/diff.txt" || true

python3 - "$work/before.txt" "$work/after.txt" "$work/diff.txt" <<'PYEOF'
import sys
def grid(path):
    rows = [line.rstrip("\n").split("\t") for line in open(path)]
    rpm = [float(x) for x in rows[0][1:]]
    load = [float(r[0]) for r in rows[1:]]
    cells = {(r, c): float(v) for r, row in enumerate(rows[1:], 1) for c, v in enumerate(row[1:], 1) if v}
    return rpm, load, cells
rpm, load, before = grid(sys.argv[1])
_, _, after = grid(sys.argv[2])
region = {(r, c) for r in range(1, len(load) + 1) for c in range(1, len(rpm) + 1)
          if 3000 <= rpm[c - 1] <= 5000 and 1.0 <= load[r - 1] <= 1.5}
counted = sorted(k for k in region if k in before and k in after)
mean = lambda values: sum(values) / len(values) if values else float("nan")
err_before = mean([abs(before[k]) for k in counted])
err_after = mean([abs(after[k]) for k in counted])
cols, rows = len(rpm), len(load)
start = 256 + cols + rows + 2
outside = []
for line in open(sys.argv[3]):
    address, a, b = (int(x) for x in line.split())
    if start <= address < start + rows * cols:
        cell = ((address - start) // cols + 1, (address - start) % cols + 1)
        if cell not in region:
            outside.append((cell, b - a))
worst = max([abs(d) for _, d in outside], default=0)
print("region cells with enough steady time in both logs: %d of %d" % (len(counted), len(region)))
print("mean lambda error in them: %.2f %% before, %.2f %% after" % (err_before, err_after))
print("cells outside the region changed: %d, by at most %d byte(s)" % (len(outside), worst))
ok = counted and 9 <= err_before <= 15 and err_after < 3 and worst <= 1
print("PASS" if ok else "FAIL")
sys.exit(0 if ok else 1)
PYEOF
