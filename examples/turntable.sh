#!/usr/bin/env bash
# turntable.sh ZEBVIEW MODEL OUT_DIR [FRAMES [WIDTHxHEIGHT [OPTION...]]]: shows a model from all sides.
# Writes the frames of a turntable, OUT_DIR/frame-000.png and so on, and OUT_DIR/sheet.png, a contact
# sheet of as many views, but 24 at most, at half the size, and prints where they are. Further options
# go to zebview.
#
# A film comes of the frames with, for example,
#     ffmpeg -framerate 24 -i OUT_DIR/frame-%03d.png -pix_fmt yuv420p turntable.mp4
set -euo pipefail

if [ $# -lt 3 ]; then
    echo "usage: turntable.sh ZEBVIEW MODEL OUT_DIR [FRAMES [WIDTHxHEIGHT [OPTION...]]]" >&2
    exit 2
fi
zebview=$1
model=$2
out=$3
frames=${4:-72}
size=${5:-640x480}
options=("${@:6}")

fail() {
    echo "turntable.sh: $*" >&2
    exit 1
}

[[ $frames =~ ^[1-9][0-9]{0,3}$ ]] || fail "'$frames' is not a number of frames from 1 to 9999"
[[ $size =~ ^([1-9][0-9]{0,4})x([1-9][0-9]{0,4})$ ]] || fail "'$size' is not a size such as 640x480"
half=$(((BASH_REMATCH[1] + 1) / 2))x$(((BASH_REMATCH[2] + 1) / 2))

# About as many columns as rows; one column more if nothing is left over then.
views=$((frames < 24 ? frames : 24))
columns=1
while [ $((columns * columns)) -lt "$views" ]; do columns=$((columns + 1)); done
if [ $((views % columns)) -ne 0 ] && [ $((views % (columns + 1))) -eq 0 ]; then columns=$((columns + 1)); fi
rows=$(((views + columns - 1) / columns))

mkdir -p "$out"
# In names a percent sign stands for something.
folder=${out//%/%%}
"$zebview" "$model" -o "$folder/frame-%03d.png" --frames "$frames" --fit sphere --size "$size" "${options[@]}"
"$zebview" "$model" -o "$folder/sheet.png" --frames "$views" --fit sphere --size "$half" \
    --sheet "${columns}x$rows" "${options[@]}"
printf '%s/frame-%03d.png to %s/frame-%03d.png\n' "$out" 0 "$out" $((frames - 1))
echo "$out/sheet.png"
