#!/usr/bin/env bash
# gallery.sh BUILD_DIR OUT_DIR [WIDTH]: runs every example and renders two models with zebview into
# OUT_DIR, and prints where each picture is. With WIDTH all pictures become PNG files of 256 colours,
# so many pixels wide, as docs/gallery keeps them.
set -euo pipefail

if [ $# -lt 2 ] || [ $# -gt 3 ]; then
    echo "usage: gallery.sh BUILD_DIR OUT_DIR [WIDTH]" >&2
    exit 2
fi
build=$1
out=$2
width=${3:-}
models=/usr/share/glmark2/models # Debian's package glmark2-data

fail() {
    echo "gallery.sh: $*" >&2
    exit 1
}

# picture FILE COMMAND...: the command writes FILE; what it prints is shown only if it fails.
picture() {
    local file=$1 log
    shift
    rm -f "$file"
    log=$("$@" 2>&1) || fail "$* failed: $log"
    [ -s "$file" ] || fail "$* wrote no $file: $log"
    if [ -n "$width" ]; then
        local small=${file%.*}.png
        convert "$file" -colorspace sRGB -background white -flatten -resize "$width" -depth 8 \
            -dither FloydSteinberg -colors 256 -strip "PNG8:$small.small"
        rm -f "$file"
        mv "$small.small" "$small"
        file=$small
    fi
    echo "$file"
}

if [ -n "$width" ] && ! convert -list format 2>/dev/null | grep -q ' EXR '; then
    fail "no convert that reads EXR: install the packages imagemagick and libmagickcore-6.q16-6-extra"
fi
mkdir -p "$out"
for program in "$build"/examples/example_*; do
    [ -x "$program" ] || fail "no examples in $build: build them first"
    name=${program##*/example_}
    case $name in
    exr) file=$name.exr ;;
    host_device | scatter | tiles_mpi) file=$name.ppm ;;
    *) file=$name.png ;;
    esac
    picture "$out/$file" "$program" "$out/$file"
done

[ -d "$models" ] || fail "no $models: install the package glmark2-data"
zebview=("$build/zebview" --size 640x480 --samples 4)
picture "$out/horse.png" "${zebview[@]}" "$models/horse.3ds" -o "$out/horse.png" \
    --up y --view 50,8 --surface plastic --color 0.6,0.27,0.12 --background 0.93,0.9,0.85
picture "$out/bunny.png" "${zebview[@]}" "$models/bunny.obj" -o "$out/bunny.png" \
    --view -20,15 --surface plastic --color 0.16,0.45,0.42 --background 0.93,0.9,0.85
