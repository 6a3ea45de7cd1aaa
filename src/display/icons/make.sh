#!/usr/bin/env bash
# make.sh BUILD_DIR: draws the icons anew with the example that shows how. Needs imagemagick.
set -euo pipefail
build=$(cd "${1:?usage: make.sh BUILD_DIR}" && pwd)
cd "$(dirname "$0")"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
for name in picture messages; do
    "$build/examples/example_icon" "$folder/$name.png" 8 "$name"
    convert "$folder/$name.png" -strip \( -clone 0 -resize 48 \) \( -clone 0 -resize 32 \) \
        \( -clone 0 -resize 16 \) -delete 0 "$name.ico"
done
