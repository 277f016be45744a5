#!/usr/bin/env bash
# A smart-card reader and memory card without hardware: the real PC/SC stack (pcscd in the
# foreground with the virtual reader driver of vsmartcard-vpcd), with only the card simulated
# (tools/vcard/memory_card.py). pcscd always listens on /run/pcscd, so this one runs in a
# private mount namespace with its own /run/pcscd: a system pcscd and its readers are left
# alone, and only the command given sees the virtual reader.
#
#   scripts/virtual-card.sh run [--card FILE] [--type SLE4442|SLE4428] [--pin HEX] -- CMD ARGS...
#         starts pcscd and the reader (and a card from FILE when given), runs CMD, stops them all
#   scripts/virtual-card.sh insert FILE [--type T] [--pin HEX] [--counter N]
#         inside a run: puts a card in the reader; its memory is FILE (created when missing)
#   scripts/virtual-card.sh remove
#         inside a run: takes the card out
#
# Example, the program with a card in a reader:
#   scripts/virtual-card.sh run --card /tmp/card.bin -- build/release/bin/quorlen
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
card_py="$here/../tools/vcard/memory_card.py"
driver=/usr/lib/pcsc/drivers/serial/libifdvpcd.so

die() {
    echo "virtual-card: $*" >&2
    exit 1
}

need_run() {
    [ -n "${VCARD_DIR:-}" ] && [ -d "$VCARD_DIR" ] || die "$1 works only inside 'virtual-card.sh run'"
}

card_insert() {
    need_run insert
    local file=${1:?insert needs the file of the card}
    shift
    card_remove
    /usr/bin/python3 "$card_py" --file "$file" --port "$(cat "$VCARD_DIR/port")" "$@" \
        >"$VCARD_DIR/card.log" 2>&1 &
    echo $! >"$VCARD_DIR/card.pid"
    # The card has connected when it says so; it gives up by itself when no reader listens.
    for _ in $(seq 200); do
        grep -q "in the reader" "$VCARD_DIR/card.log" 2>/dev/null && return 0
        kill -0 "$(cat "$VCARD_DIR/card.pid")" 2>/dev/null || break
        sleep 0.05
    done
    cat "$VCARD_DIR/card.log" >&2
    die "the card did not reach the reader"
}

card_remove() {
    need_run remove
    [ -f "$VCARD_DIR/card.pid" ] || return 0
    local pid
    pid=$(cat "$VCARD_DIR/card.pid")
    rm -f "$VCARD_DIR/card.pid"
    kill "$pid" 2>/dev/null || return 0
    for _ in $(seq 100); do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.02
    done
    kill -9 "$pid" 2>/dev/null || true
}

free_port() {
    /usr/bin/python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

stop_all() {
    card_remove || true
    kill "$pcscd_pid" 2>/dev/null || true
    wait "$pcscd_pid" 2>/dev/null || true
    rm -rf "$VCARD_DIR"
}

# Runs inside the private namespace: /run/pcscd here is ours alone.
inside() {
    mount -t tmpfs -o mode=0755 tmpfs /run/pcscd
    export VCARD_DIR
    VCARD_DIR=$(mktemp -d /tmp/vcard.XXXXXX)
    local port
    port=$(free_port)
    echo "$port" >"$VCARD_DIR/port"
    mkdir "$VCARD_DIR/reader.conf.d"
    printf 'FRIENDLYNAME "Virtual PCD"\nDEVICENAME /dev/null:0x%X\nLIBPATH %s\nCHANNELID 0x%X\n' \
        "$port" "$driver" "$port" >"$VCARD_DIR/reader.conf.d/vpcd"

    pcscd --foreground --config "$VCARD_DIR/reader.conf.d" >"$VCARD_DIR/pcscd.log" 2>&1 &
    pcscd_pid=$!
    trap stop_all EXIT
    for _ in $(seq 200); do
        [ -S /run/pcscd/pcscd.comm ] && break
        kill -0 "$pcscd_pid" 2>/dev/null || { cat "$VCARD_DIR/pcscd.log" >&2; die "pcscd did not start"; }
        sleep 0.05
    done
    [ -S /run/pcscd/pcscd.comm ] || die "pcscd did not open its socket"

    if [ -n "$card_file" ]; then card_insert "$card_file" "${card_args[@]}"; fi
    set +e
    "$@"
    local rc=$?
    set -e
    return $rc
}

run() {
    card_file=""
    card_args=()
    while [ $# -gt 0 ]; do
        case "$1" in
        --card) card_file=$2; shift 2 ;;
        --type | --pin | --counter) card_args+=("$1" "$2"); shift 2 ;;
        --) shift; break ;;
        *) break ;;
        esac
    done
    [ $# -gt 0 ] || die "run needs a command after --"
    command -v pcscd >/dev/null || die "pcscd is not installed (scripts/deps.sh installs it)"
    [ -f "$driver" ] || die "the virtual reader driver is missing (package vsmartcard-vpcd)"
    [ -d /usr/lib/python3/site-packages/virtualsmartcard ] || die "python3-virtualsmartcard is missing"
    if [ "${VCARD_NAMESPACE:-}" = 1 ]; then
        inside "$@"
        return
    fi
    # /run/pcscd must exist to be covered; pcscd's package normally makes it.
    [ -d /run/pcscd ] || mkdir -p /run/pcscd 2>/dev/null || die "/run/pcscd is missing"
    local unshare_args=(--mount --propagation private)
    [ "$(id -u)" -eq 0 ] || unshare_args=(--user --map-root-user "${unshare_args[@]}")
    local self
    self=$(readlink -f "$0")
    VCARD_NAMESPACE=1 exec unshare "${unshare_args[@]}" "$self" run \
        ${card_file:+--card "$card_file"} "${card_args[@]}" -- "$@"
}

case "${1:-}" in
run) shift; run "$@" ;;
insert) shift; card_insert "$@" ;;
remove) shift; card_remove ;;
*) sed -n '2,19p' "$0" | sed 's/^# \{0,1\}//'; exit 2 ;;
esac
