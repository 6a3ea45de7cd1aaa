#!/usr/bin/env bash
# with_screen.sh -24|-8 COMMAND...: runs a command on an X server of its own, with 24 bits a pixel
# or, with 8, a palette of 256 colours. Ends with the command's status, or with 77 where there is no
# such server.
set -euo pipefail
depth=${1#-}
shift
# To list its tests a program needs no screen.
[[ " $* " == *" --gtest_list_tests "* ]] && exec "$@"
command -v Xvfb >/dev/null || {
    echo "with_screen.sh: no Xvfb" >&2
    exit 77
}
numbers=$(mktemp -u)
mkfifo "$numbers"
Xvfb -displayfd 3 -screen 0 "1024x768x$depth" -nolisten tcp >/dev/null 2>&1 3>"$numbers" &
server=$!
trap 'kill $server 2>/dev/null || true; rm -f "$numbers"' EXIT
read -r number <"$numbers"
status=0
DISPLAY=:$number SCREEN_SERVER=$server "$@" || status=$?
exit $status
