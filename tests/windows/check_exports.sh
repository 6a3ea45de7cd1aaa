#!/usr/bin/env bash
# check_exports.sh BUILD_DIR TARGET: zebcore.dll of the build exports the functions that the header
# declares, under the names it gives them, and nothing else; and it needs no DLL but those of every
# Windows. TARGET names the binutils, such as x86_64-w64-mingw32.
set -euo pipefail

if [ $# != 2 ]; then
    echo "usage: check_exports.sh BUILD_DIR TARGET" >&2
    exit 2
fi
dll=$1/bin/zebcore.dll
header=$(dirname "$0")/../../include/zebcore/zebcore.h
system_dlls='advapi32|gdi32|kernel32|msvcrt|user32'

dump=$("$2-objdump" -p "$dll")

# A declaration's names are the function's own and that of its label, if it has one.
declared=$(grep -v '^#' "$header" | tr '\n' ' ' | grep -oE 'ZEB_API [^;]*;' |
    sed -nE 'h; s/^[^(]*\b(zeb\w+)\(.*/\1/p; g; s/.*ZEB_DECORATED\("(\w+)"\).*/\1/p' | LC_ALL=C sort)
exported=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$dump" |
    sed -nE 's/^\s*\[ *[0-9]+\] (.*)$/\1/p' | LC_ALL=C sort)
foreign=$(sed -nE 's/^\s*DLL Name: (.*)$/\1/p' <<<"$dump" | grep -ivE "^($system_dlls)\.dll$" || true)

bad=0
if [ "$(wc -l <<<"$declared")" -lt 100 ]; then
    echo "$header: $(wc -l <<<"$declared") functions found, too few to be all"
    bad=1
fi
if ! diff <(echo "$declared") <(echo "$exported"); then
    echo "$dll: exports (>) are not the functions of the header (<)"
    bad=1
fi
if [ -n "$foreign" ]; then
    echo "$dll: needs" $foreign
    bad=1
fi
exit $bad
