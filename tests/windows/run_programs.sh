#!/usr/bin/env bash
# run_programs.sh BIN_DIR PREFIX_DIR CORPUS_DIR: runs the test programs of a build for Windows under
# Wine, which keeps its files in PREFIX_DIR. Each is one process: starting one takes seconds. Those
# that open windows get a screen of their own.
set -euo pipefail

if [ $# != 3 ]; then
    echo "usage: run_programs.sh BIN_DIR PREFIX_DIR CORPUS_DIR" >&2
    exit 2
fi
bin=$(realpath "$1")
mkdir -p "$2"
prefix=$(realpath "$2")
corpus=$(realpath "$3")
with_screen=$(realpath "$(dirname "$0")/../window/with_screen.sh")

# first_of NAME...: the first program there is; Debian keeps some of Wine's out of PATH.
first_of() {
    local name
    for name in "$@"; do
        command -v "$name" && return
    done
    echo "run_programs.sh: none of $* found" >&2
    return 1
}
wine=$(first_of wine64 /usr/lib/wine/wine64 wine)
wineserver=$(first_of wineserver /usr/lib/wine/wineserver /usr/lib/wine/wineserver64)

# No questions about add-ons, no menu entries; and no debugger, under which a crash would count as success.
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml=;winedbg.exe=;winemenubuilder.exe='
unset DISPLAY
trap '"$wineserver" -k || true' EXIT
if [ ! -e "$prefix/system.reg" ]; then
    "$wine" wineboot -i >/dev/null 2>&1
fi

failed=()
# run PROGRAM ARGUMENTS...
run() {
    echo "== $1"
    timeout 900 "$wine" "./$1.exe" "${@:2}" </dev/null || failed+=("$1")
}

cd "$bin"
run zeb_c_host
run zeb_unit_tests --gtest_brief=1
run zeb_interface_tests --gtest_brief=1
for lanes in 1 4; do
    ZEBCORE_LANES=$lanes run zeb_interface_tests --gtest_brief=1 --gtest_filter='Bits.*'
done
run zeb_fuzz_replay 400 "$corpus"
rm -f host_device.ppm
run example_host_device host_device.ppm >/dev/null
# A header of 15 bytes, and three bytes a pixel.
[ "$(stat -c %s host_device.ppm)" = $((15 + 640 * 480 * 3)) ] || failed+=("the picture of example_host_device")

# run_on_screen BITS PROGRAM ARGUMENTS...: with an X server of its own, which Wine must forget before
# it goes.
export WINESERVER=$wineserver
# shellcheck disable=SC2016 # for the inner shell
and_forget='"$@"; status=$?; "$WINESERVER" -k; exit $status'
run_on_screen() {
    echo "== $2 ${*:3}"
    timeout 900 "$with_screen" "-$1" bash -c "$and_forget" - "$wine" "./$2.exe" "${@:3}" </dev/null ||
        failed+=("$2 ${*:3}")
}

# set_x11 NAME VALUE: one of Wine's settings for X.
set_x11() {
    "$wine" reg add 'HKCU\Software\Wine\X11 Driver' /v "$1" /d "$2" /f >/dev/null
}

# At every window Wine would wait for a window manager, which these screens have not.
set_x11 Managed N
"$wineserver" -k || true
run_on_screen 24 zeb_window_tests --gtest_brief=1 --gtest_filter=-Console.*
# The console lives as long as its process: every test has one of its own.
names=$("$wine" ./zeb_window_tests.exe --gtest_list_tests --gtest_filter=Console.* | tr -d '\r' | grep '^  ')
for name in $names; do
    "$wineserver" -k || true
    run_on_screen 24 zeb_window_tests --gtest_brief=1 --gtest_filter="Console.$name"
done
# Wine gives programs the whole palette of a screen only if told to, and if it draws there directly.
set_x11 PrivateColorMap Y
set_x11 ClientSideGraphics N
"$wineserver" -k || true
run_on_screen 8 zeb_palette_tests --gtest_brief=1
"$wine" reg delete 'HKCU\Software\Wine\X11 Driver' /f >/dev/null

if [ ${#failed[@]} != 0 ]; then
    printf 'failed: %s\n' "${failed[@]}" >&2
    exit 1
fi
