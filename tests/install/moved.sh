#!/usr/bin/env bash
# moved.sh BUILD_DIR WORK_DIR [CHECK_PICTURE]: installs the build, moves the folder, and there runs
# zebview, if the build has it, and two hosts: one that CMake configures and builds, one that is
# compiled with what pkg-config says. CC, CFLAGS and CMAKE_GENERATOR are those of the build.
set -euo pipefail

build=$1
work=$2
check_picture=${3:-}
here=$(cd "$(dirname "$0")" && pwd)

fail() {
    echo "moved.sh: $*" >&2
    exit 1
}

# run PROGRAM ARGUMENT...: it must load the library that was moved, and succeed.
run() {
    local library
    library=$(ldd "$1" | sed -n 's/.*libzebcore\.so[.0-9]* => \(.*\) (.*/\1/p')
    [ -n "$library" ] && [ "$(realpath -m "$library")" = "$installed" ] ||
        fail "$1 loads \"$library\" and not $installed"
    "$@" || fail "$* failed"
}

rm -rf "$work"
mkdir -p "$work"
work=$(cd "$work" && pwd)
cmake --install "$build" --prefix "$work/first" >"$work/install.log" || fail "$(cat "$work/install.log")"
mv "$work/first" "$work/moved"
installed=$(realpath "$(find "$work/moved" -name 'libzebcore.so')")

if [ -x "$build/zebview" ]; then
    printf 'v %s\n' '0 0 0' '1 0 0' '0 1 0' '0 0 1' >"$work/model.obj"
    printf 'f %s\n' '1 3 2' '1 2 4' '2 3 4' '3 1 4' >>"$work/model.obj"
    run "$work/moved/bin/zebview" "$work/model.obj" -o "$work/model.png" --size 160x120
    if [ -n "$check_picture" ]; then "$check_picture" "$work/model.png" 160 120; fi
fi

cmake -S "$here/host" -B "$work/host" -DCMAKE_PREFIX_PATH="$work/moved" >"$work/host.log" &&
    cmake --build "$work/host" >>"$work/host.log" || fail "$(cat "$work/host.log")"
run "$work/host/host"

PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name zebcore.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086 # each of them is several words
"$CC" -std=c99 $CFLAGS "$here/../host/main.c" "$here/../c_host.c" -o "$work/plain_host" \
    $(pkg-config --cflags --libs zebcore) -Wl,-rpath,"$(pkg-config --variable=libdir zebcore)" ||
    fail "the host that pkg-config helps to build is not built"
run "$work/plain_host"
