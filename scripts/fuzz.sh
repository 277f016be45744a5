#!/usr/bin/env bash
# Fuzzes every parser of files and of the serial line: builds the targets of tests/fuzz with
# clang's libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer (preset "fuzz", folder
# build/fuzz), then runs each for SECONDS (60 by default), one after the other.
#
#   scripts/fuzz.sh [SECONDS] [TARGET ...]     e.g. scripts/fuzz.sh 600 qxl_file ini
#
# Each target starts from its corpus in tests/fuzz/corpus/NAME and keeps what it learns in
# build/fuzz/work/NAME/corpus, so a second run goes on where the first stopped. A crash, a
# hang (over 10 s for one input) or a sanitizer report stops that target and is saved under
# build/fuzz/work/NAME/; once fixed, copy the input into tests/fuzz/corpus/NAME/ under a name
# that says what it found, so the normal test suite replays it. Exit 1 when any target failed.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
[ $# -gt 0 ] && shift
case "$seconds" in
'' | *[!0-9]*) echo "fuzz.sh: SECONDS must be a whole number" >&2; exit 2 ;;
esac

command -v clang++ >/dev/null && [ -n "$(clang++ -print-file-name=libclang_rt.fuzzer-x86_64.a 2>/dev/null | grep /)" ] ||
    scripts/deps.sh fuzz
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake --preset fuzz "${launcher[@]}" >/dev/null
cmake --build --preset fuzz

bin=build/fuzz/bin
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for exe in "$bin"/fuzz_*; do
        name=${exe##*/fuzz_}
        case "$name" in replay_* | *.dict) continue ;; esac
        targets+=("$name")
    done
fi

# The targets write scratch files; a folder in memory keeps fsync from setting the pace.
[ -d /dev/shm ] && [ -w /dev/shm ] && export TMPDIR=/dev/shm
failed=()
for name in "${targets[@]}"; do
    exe=$bin/fuzz_$name
    [ -x "$exe" ] || { echo "fuzz.sh: no target $name" >&2; failed+=("$name"); continue; }
    work=build/fuzz/work/$name
    mkdir -p "$work/corpus"
    options=(-max_total_time="$seconds" -timeout=10 -print_final_stats=1 -artifact_prefix="$work/")
    [ -f "$exe.dict" ] && options+=(-dict="$exe.dict")
    printf '%-16s' "$name"
    if "$exe" "${options[@]}" "$work/corpus" "tests/fuzz/corpus/$name" >"$work/log.txt" 2>&1; then
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/log.txt")
        speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$work/log.txt")
        edges=$(grep -o 'cov: [0-9]*' "$work/log.txt" | tail -1)
        echo "ok: ${runs:-?} runs, ${speed:-?}/s, ${edges:-cov: ?}"
    else
        failed+=("$name")
        found=$(ls -t "$work"/crash-* "$work"/timeout-* "$work"/leak-* "$work"/oom-* 2>/dev/null | head -1 || true)
        echo "FAILED: ${found:-see $work/log.txt}"
        grep -m1 -E 'ERROR:|runtime error:|==[0-9]+==' "$work/log.txt" | sed 's/^/    /' || true
    fi
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "fuzz.sh: failed: ${failed[*]} (logs in build/fuzz/work/NAME/log.txt)" >&2
    exit 1
fi
