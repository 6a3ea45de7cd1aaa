#!/usr/bin/env bash
# check_hardening.sh LIBRARY PROGRAM...: that what was built can hardly be made use of where it should
# have a mistake.
set -euo pipefail
failed=0
complain() {
    echo "$1" >&2
    failed=1
}

for file in "$@"; do
    segments=$(readelf -lW "$file") dynamic=$(readelf -dW "$file") symbols=$(nm -D "$file")
    grep -q 'GNU_STACK.* RW ' <<<"$segments" || complain "$file: its stack can be executed"
    grep -q 'LOAD.* RWE ' <<<"$segments" && complain "$file: memory can be written and executed"
    grep -q 'GNU_RELRO' <<<"$segments" || complain "$file: tables of the linker can be written"
    grep -qE 'BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" || complain "$file: functions are bound late"
    grep -q 'TEXTREL' <<<"$dynamic" && complain "$file: code is changed as it is loaded"
    grep -q '__stack_chk_fail' <<<"$symbols" || complain "$file: stacks are not watched"
    grep -qE '__(memcpy|memset|snprintf|vsnprintf|fprintf|strcpy|strcat|read)_chk' <<<"$symbols" ||
        complain "$file: buffers are not watched"
    readelf -hW "$file" | grep -q 'Type: *DYN' || complain "$file: it has to lie at one place"
done
exit $failed
