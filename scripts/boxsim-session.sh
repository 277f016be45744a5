# Sourced, not run, by the scripts that check the program against the box simulator, once
# they have set `bin` (the build's bin folder) and `name`. Makes `work`, a temporary folder
# that goes at exit (KEEP_DIR=DIR puts everything in DIR instead and keeps it), stops the
# simulator at exit, and gives `start_boxsim`.

if [ -n "${KEEP_DIR:-}" ]; then
    work=$KEEP_DIR
    mkdir -p "$work"
else
    work=$(mktemp -d "${TMPDIR:-/tmp}/quorlen-$name.XXXXXX")
fi
box_pid=
cleanup() {
    [ -n "$box_pid" ] && kill "$box_pid" 2>/dev/null || true
    [ -n "${KEEP_DIR:-}" ] || rm -rf "$work"
}
trap cleanup EXIT INT TERM

# start_boxsim ARGS...: the simulator on "$work/box" with ARGS, what it prints in
# "$work/boxsim.out"; returns when it says it is ready, or after two seconds, when the first
# use of the port tells what went wrong.
start_boxsim() {
    "$bin/boxsim" --link "$work/box" "$@" > "$work/boxsim.out" &
    box_pid=$!
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        grep -q ready "$work/boxsim.out" 2>/dev/null && break
        sleep 0.2
    done
}
