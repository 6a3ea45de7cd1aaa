#!/usr/bin/env bash
# run_in_chroot.sh BIN_DIR CHROOT_DIR: runs 32-bit test programs under Wine in a small i386 Debian,
# which is made in CHROOT_DIR if it isn't there. Needs root and debootstrap.
set -euo pipefail

if [ $# != 2 ]; then
    echo "usage: run_in_chroot.sh BIN_DIR CHROOT_DIR" >&2
    exit 2
fi
bin=$1
root=$2
tests=$(dirname "$0")/..

mirror() {
    local uri
    # shellcheck disable=SC2016 # apt fills the name in
    uri=$(apt-get indextargets --format '$(REPO_URI)' 'Codename: bookworm' 'Origin: Debian' | head -1)
    echo "${uri:-http://deb.debian.org/debian}"
}

if [ ! -d "$root" ]; then
    rm -rf "$root.part"
    debootstrap --arch=i386 --variant=minbase --include=wine,wine32,xvfb,xauth bookworm "$root.part" "$(mirror)"
    mv "$root.part" "$root"
fi

mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
trap 'umount "$root/proc"' EXIT
rm -rf "$root/programs"
mkdir -p "$root/programs/window" "$root/programs/windows"
cp -r "$bin" "$root/programs/bin"
cp -r "$tests/fuzz/corpus" "$root/programs"
cp "$tests/window/with_screen.sh" "$root/programs/window"
cp "$tests/windows/run_programs.sh" "$root/programs/windows"
chroot "$root" env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
    /programs/windows/run_programs.sh /programs/bin /programs/prefix /programs/corpus
