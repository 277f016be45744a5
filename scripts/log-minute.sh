#!/bin/sh
# A minute of live data from the box simulator, recorded as a tuner would with quorlen-cli,
# in text rows and in binary frames, then reopened and exported. Checks 20 rows a second
# with no row lost (the simulator numbers its rows in column 30) and the simulator's image in
# the log's settings section.
#
#   scripts/log-minute.sh [BUILD_DIR] [SECONDS]
#
# Takes a little over two minutes by default. Exit 0 when both logs pass.
set -eu

build=${1:-build/release}
seconds=${2:-60}
bin=$build/bin
name=log-minute
. "$(dirname "$0")/boxsim-session.sh"

start_boxsim --image "$bin/RZ400_800M3_Default_Settings.qxs"

status=0
for mode in text binary; do
    flag=
    [ "$mode" = binary ] && flag=--binary
    log="$work/minute-$mode.qxl"
    echo "== $mode: $seconds s"
    "$bin/quorlen-cli" log --port "$work/box" --seconds "$seconds" --settings $flag -o "$log"
    "$bin/quorlen-cli" log-info "$log"
    "$bin/quorlen-cli" log-csv "$log" > "$work/minute-$mode.csv"
    python3 - "$log" "$work/minute-$mode.csv" "$bin/RZ400_800M3_Default_Settings.qxs" "$seconds" <<'EOF' || status=1
import sys
log, csv, qxs, seconds = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4])
text = open(log, "rb").read().decode("latin-1")
rows = [l for l in text.split("\r\n") if l.startswith("$") and len(l) == 171]
counters = [int(r[4 * 30 - 1:4 * 30 + 2]) for r in rows]
gaps = sum(1 for a, b in zip(counters, counters[1:]) if (b - a) % 256 != 1)
dataset = text[text.index("[log_dataset]") + 15:text.index("[end log_dataset]")].split("\r\n")[:-1]
image = open(qxs, "rb").read().decode("latin-1").split("\r\n")[:1024]
same_image = [int(x) for x in dataset] == [int(x) for x in image]
csv_rows = sum(1 for _ in open(csv)) - 1
rate = len(rows) / seconds
print("rows %d in %d s (%.2f a second), gaps %d, csv rows %d, box image in the log: %s"
      % (len(rows), seconds, rate, gaps, csv_rows, "yes" if same_image else "NO"))
ok = gaps == 0 and same_image and csv_rows == len(rows) and 19.8 <= rate <= 20.05
print("PASS" if ok else "FAIL")
sys.exit(0 if ok else 1)
EOF
done
exit $status
