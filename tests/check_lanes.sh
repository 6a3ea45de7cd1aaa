#!/usr/bin/env bash
# check_lanes.sh FOLDER EXAMPLE...: fails if an example's picture, at one sample a pixel, is not the
# same, bit for bit, by every number of lanes, and the plain way. Where the machine has no more, the
# most lanes stand for fewer.
set -euo pipefail
folder=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for example in "$@"; do
    "$folder/example_$example" "$work/most.png" 1
    ZEBCORE_PLAIN=1 "$folder/example_$example" "$work/plain.png" 1
    for lanes in 1 4 8; do
        ZEBCORE_LANES=$lanes "$folder/example_$example" "$work/$lanes.png" 1
    done
    for picture in plain 1 4 8; do
        if ! cmp "$work/most.png" "$work/$picture.png" >&2; then
            echo "$example: $picture differs" >&2
            exit 1
        fi
    done
done
