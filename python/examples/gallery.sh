#!/usr/bin/env bash
# gallery.sh PYTHON OUT_DIR: runs every example with a Python that has zebcore, into
# OUT_DIR/python-NAME, and puts the pictures on white, as docs/gallery keeps them.
set -euo pipefail

if [ $# -ne 2 ]; then
    echo "usage: gallery.sh PYTHON OUT_DIR" >&2
    exit 2
fi
here=$(dirname "$0")
mkdir -p "$2"
for name in first plot molecule mesh shading cluster; do
    file=$2/python-$name.png
    "$1" "$here/$name.py" "$file" >/dev/null
    convert "$file" -background white -flatten -strip "PNG24:$file.white"
    mv "$file.white" "$file"
    echo "$file"
done
"$1" "$here/turntable.py" "$2/python-turntable.gif"
echo "$2/python-turntable.gif"
