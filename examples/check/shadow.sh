#!/usr/bin/env bash
# shadow.sh PROGRAM FOLDER: at three scales, what is lit is lit evenly, shadows are dark and begin at
# the foot of things, and all three pictures are the same.
set -euo pipefail

program=$1 folder=$2/shadow_scales
rm -rf "$folder"
mkdir -p "$folder"

fail() {
    echo "scale $scale: $*" >&2
    exit 1
}

# measure WHAT REGION: of the brightness there.
measure() {
    convert "$folder/$scale.png" -background white -flatten -colorspace gray -crop "$2" +repage -format "%[fx:$1]" info:
}

# holds LEFT SIGN RIGHT
holds() { awk "BEGIN { exit !($1 $2 $3) }"; }

for scale in 1 0.01 100; do
    "$program" "$folder/$scale.png" 1 "$scale"
    floor=$(measure mean 780x60+10+380)
    spread=$(measure maxima-minima 780x60+10+380)
    core=$(measure maxima 30x14+390+306)
    foot=$(measure mean 4x2+636+366)
    holds "$floor" ">" 0.6 || fail "the floor is at $floor"
    holds "$spread" "<" 0.02 || fail "the lit floor is uneven by $spread"
    holds "$core" "<" "0.55 * $floor" || fail "within the large shadow it is $core"
    holds "$foot" "<" "0.65 * $floor" || fail "at the foot of the smallest ball it is $foot"
    other=$(compare -metric AE -fuzz 2% "$folder/1.png" "$folder/$scale.png" null: 2>&1) || true
    holds "$other" "<" 40 || fail "$other pixels differ from those at scale 1"
done
