#!/bin/sh
# High-speed captures from the box simulator, taken as a tuner would with quorlen-cli: 10 s
# at 115200 and at 625000 baud of a 36-1 wheel at 3000 rpm, each checked for its number of
# samples (baud / 10 a second, within 1 %) and every check byte of 255, then analysed
# against 35 crank teeth a turn: 3000 rpm within 1 %, a cam pulse every second turn and one
# pulse of each ignition channel a turn (the shipped layout fires its coils in pairs).
#
#   scripts/hslog-check.sh [BUILD_DIR] [SECONDS]
#
# Exit 0 when both captures pass.
set -eu

build=${1:-build/release}
seconds=${2:-10}
bin=$build/bin
name=hslog-check
. "$(dirname "$0")/boxsim-session.sh"

start_boxsim --hs-rpm 3000

status=0
for baud in 115200 625000; do
    file="$work/wheel-$baud.qxo"
    echo "== $baud baud: $seconds s"
    "$bin/quorlen-cli" hslog --port "$work/box" --seconds "$seconds" --baud "$baud" -o "$file" | tee "$work/capture.txt"
    "$bin/quorlen-cli" hs-analyze "$file" --teeth 35 | tee "$work/analysis.txt"
    python3 - "$file" "$baud" "$seconds" "$work/capture.txt" "$work/analysis.txt" <<'PYEOF' || status=1
import re, sys
path, baud, seconds = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
capture, analysis = open(sys.argv[4]).read(), open(sys.argv[5]).read()
lines = open(path, "rb").read().decode("ascii").split("\r\n")
samples = lines[1:lines.index("[End_Log_Osc_Data]")]
n = len(samples)
expected = seconds * baud // 10
checks = [samples[k - 1] for k in range(2 + 11520, n + 1, 11520)]
def value(label):
    m = re.search(re.escape(label) + r": *([0-9.]+)", analysis)
    return float(m.group(1)) if m else -1
rpm, cam, ign_a, ign_b = value("RPM"), value("CAM   pulse/rev"), value("IGN A pulse/rev"), value("IGN B pulse/rev")
ok_count = abs(n - expected) <= expected / 100
ok_checks = len(checks) > 0 and all(c == "255" for c in checks)
ok_rpm = abs(rpm - 3000) <= 30
ok_pulses = abs(cam - 0.5) <= 0.02 and abs(ign_a - 1) <= 0.02 and abs(ign_b - 1) <= 0.02
print("samples %d (expected %d +- 1 %%): %s; check bytes %d, all 255: %s; rpm %.1f: %s; "
      "cam %.2f, IGN A %.2f, IGN B %.2f a turn: %s"
      % (n, expected, "ok" if ok_count else "NO", len(checks), "yes" if ok_checks else "NO", rpm,
         "ok" if ok_rpm else "NO", cam, ign_a, ign_b, "ok" if ok_pulses else "NO"))
ok = ok_count and ok_checks and ok_rpm and ok_pulses
print("PASS" if ok else "FAIL")
sys.exit(0 if ok else 1)
PYEOF
done
exit $status
