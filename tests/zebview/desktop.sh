#!/usr/bin/env bash
# desktop.sh SOURCES ZEBVIEW: what desktops and shells are told of zebview is right.
set -euo pipefail
desktop=$(cd "$1" && pwd)/apps/zebview/desktop
PATH=$(cd "$(dirname "$2")" && pwd):$PATH
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
trap 'echo "desktop.sh: line $LINENO went wrong" >&2' ERR
export XDG_CONFIG_HOME=$folder/config
cd "$folder"

fail() { echo "desktop.sh: $*" >&2; exit 1; }

desktop-file-validate "$desktop/zebview.desktop" || fail "zebview.desktop is not valid"

# Every type is one that is known, by the desktop or by zebview.xml.
mkdir -p mime/packages
cp /usr/share/mime/packages/freedesktop.org.xml "$desktop/zebview.xml" mime/packages
XDG_DATA_HOME=$folder update-mime-database mime 2>errors
[ ! -s errors ] || fail "zebview.xml: $(cat errors)"
types() { sed -n 's/^MimeType=//p' "$desktop/$1" | tr ';' '\n' | sed '/^$/d'; }
for file in zebview.desktop zebview.thumbnailer; do
    types $file | sort -u >listed
    [ "$(types $file | wc -l)" = "$(wc -l <listed)" ] || fail "$file names a type twice"
    while read -r type; do grep -qx "$type" mime/types || fail "$file: nothing is known of $type"; done <listed
done
for pattern in '*.ply' '*.off' '*.dae' '*.fbx'; do
    grep -qF ":$pattern" mime/globs || fail "$pattern has no type"
done

# The line that makes thumbnails does so, into files without an ending, and ends with an error if there
# is nothing to be seen.
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >model.obj
mkdir -p config/zebview && echo 'size = 10x10' >config/zebview/config
line=$(sed -n 's/^Exec=//p' "$desktop/zebview.thumbnailer")
thumbnail() { sh -c "$(sed "s,%i,$1,; s,%o,thumb,; s,%s,96,g" <<<"$line")"; }
thumbnail model.obj
[ "$(identify -format '%m %wx%h' thumb)" = "PNG 96x96" ] || fail "the thumbnail is $(identify thumb)"
rm thumb
printf 'v 0 0 0\n' >model.obj
! thumbnail model.obj 2>/dev/null || fail "a thumbnail of nothing"
[ ! -e thumb ] || fail "a thumbnail of nothing is left"

# complete WORD...: what the last word is completed to.
. "$desktop/zebview.bash"
complete_line() {
    COMP_WORDS=(zebview "$@")
    COMP_CWORD=$#
    _zebview
    local IFS=' '
    echo "${COMPREPLY[*]}"
}
expect() {
    local wanted=$1 found
    shift
    found=$(complete_line "$@")
    [ "$found" = "$wanted" ] || fail "zebview $*: completed to '$found', not to '$wanted'"
}
touch sky.exr
mkdir sub
expect "--fit --filter" --fi
expect "gaussian" --filter g
expect "x y z -x -y -z" --up ''
expect "sky.exr" --environment sk
expect "sky.exr" -o sk
expect "sub" --textures su
expect "" --size ''
expect "model.obj" --shadows mo
expect "model.obj" mo
for option in $(zebview --help | grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'); do
    [[ " $(complete_line --) " == *" $option "* ]] || fail "$option is not completed"
done
echo "desktop.sh: all is right"
