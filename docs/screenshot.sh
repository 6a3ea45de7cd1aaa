#!/usr/bin/env bash
# screenshot.sh BUILD_DIR FILE: takes the picture of window and console that the documentation shows,
# on a screen of its own. Needs Debian's packages xvfb, openbox, xdotool, x11-xserver-utils and
# imagemagick.
set -euo pipefail
if [ $# != 2 ]; then
    echo "usage: screenshot.sh BUILD_DIR FILE" >&2
    exit 2
fi
cd "$(dirname "$0")/.."
if [ -z "${SCREEN_SERVER:-}" ]; then
    exec tests/window/with_screen.sh -24 docs/screenshot.sh "$@"
fi
openbox 2>/dev/null &
sleep 1
xsetroot -solid '#5a7a94'
"$1/examples/example_window" &
program=$!
xdotool search --sync --name 'ZEB Messages' windowmove 300 480 >/dev/null
xdotool search --sync --name Beads windowmove 20 40 windowraise >/dev/null
# Until it is rendered.
sleep 5
import -window root -crop 990x728+0+0 +repage -strip "PNG24:$2"
kill $program %1 && wait || true
