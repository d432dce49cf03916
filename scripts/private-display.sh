# Sourced by the scripts that show a dialog without a desktop (demo.sh, core-check.sh): a work
# folder and background processes that go when the script ends, a waiting helper, a private
# Xvfb with openbox, and the server's dialog window. Messages start with "$tool:".
tool=$(basename "$0" .sh)
work=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

# Waits up to $1 seconds for the command after it to succeed.
wait_for() {
    local seconds=$1
    shift
    for ((i = 0; i < seconds * 10; i++)); do
        "$@" >/dev/null 2>&1 && return 0
        sleep 0.1
    done
    echo "$tool: gave up waiting for: $*" >&2
    return 1
}

# Xvfb on a free display, DISPLAY set to it, and openbox started on it. Openbox announces
# itself before its start is done and does not manage a window mapped in between: its theme
# property on the root window comes last.
start_private_display() {
    Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
    pids+=($!)
    wait_for 10 test -s "$work/display"
    export DISPLAY=":$(head -n1 "$work/display")"
    openbox --sm-disable >/dev/null 2>&1 &
    pids+=($!)
    wait_for 10 sh -c 'xprop -root _OB_THEME | grep -q ='
}

# The server's dialog window, found by its class (the title is in the product language); the
# script ends with what the client printed (file $1) when none appears within 30 s.
dialog_window() {
    local window
    window=$(timeout 30 xdotool search --sync --onlyvisible --classname '^ukey-uiserver$' |
        tail -n1 || true)
    [[ -n "$window" ]] || { echo "$tool: the dialog did not appear" >&2; cat "$1" >&2; exit 1; }
    echo "$window"
}
