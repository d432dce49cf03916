#!/usr/bin/env bash
# The first thing to run: installs what is missing, builds, starts the UI server and asks it for
# a PIN through ukey-uictl, then prints the answer.
#
# With a display (DISPLAY reachable) the verify dialog appears there for you to answer. Without
# one, the demo brings up a private Xvfb with a window manager, types a PIN itself, saves a
# screenshot of the dialog as demo.png in the current directory, presses Enter and prints the
# answer.
set -euo pipefail
# The dialogs' texts are UTF-8 whatever the machine's locale (a fresh system has none set).
export LC_ALL=C.UTF-8
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh" run build
"$root/scripts/build.sh" demo
bin="$root/build/bin"
request=(verify --min 6 --max 16)

if [[ -n "${DISPLAY:-}" ]] && xdpyinfo >/dev/null 2>&1; then
    echo "demo: answer the dialog on display $DISPLAY"
    exec "$bin/ukey-uictl" "${request[@]}"
fi

# shellcheck source=scripts/private-display.sh
source "$root/scripts/private-display.sh"
echo "demo: no display; starting a private Xvfb with openbox"
start_private_display

"$bin/ukey-uictl" "${request[@]}" >"$work/answer" 2>&1 &
uictl=$!
pids+=($uictl)
window=$(dialog_window "$work/answer")
sleep 0.5  # the dialog takes the keyboard once mapped
xdotool type --delay 40 'abc123'
# The dialog with its title bar: the client's place widened by the window manager's frame.
read -r X Y WIDTH HEIGHT < <(xwininfo -id "$window" | awk '
    /Absolute upper-left X/ {x = $NF} /Absolute upper-left Y/ {y = $NF}
    /Width:/ {w = $NF} /Height:/ {h = $NF} END {print x, y, w, h}')
read -r left right top bottom < <(xprop -id "$window" _NET_FRAME_EXTENTS | tr -dc '0-9 ' | xargs)
fw=$((WIDTH + left + right)) fh=$((HEIGHT + top + bottom)) fx=$((X - left)) fy=$((Y - top))
# The dialog redraws after the last key (dots, the typed-characters counter, OK's state): take
# pictures until two in a row are the same.
shot() { import -window root -crop "${fw}x${fh}+${fx}+${fy}" +repage "$1"; }
shot "$work/shot.png"
for ((i = 0; i < 50; i++)); do
    sleep 0.2
    mv "$work/shot.png" "$work/previous.png"
    shot "$work/shot.png"
    cmp -s "$work/shot.png" "$work/previous.png" && break
done
cp "$work/shot.png" demo.png
echo "demo: typed the PIN abc123; screenshot saved as $PWD/demo.png"
xdotool key Return
wait "$uictl"
echo "demo: the server answered:"
cat "$work/answer"
