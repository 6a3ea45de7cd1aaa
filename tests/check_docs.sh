#!/usr/bin/env bash
# What the documents name is there: functions of the interface, members of classes, files. And every
# function of the interface occurs in an example or in the guide.
set -euo pipefail
cd "$(dirname "$0")/.."

header=include/zebcore/zebcore.h
documents=(README.md CONTRIBUTING.md docs/*.md)
bad=0
complain() {
    echo "$*" >&2
    bad=1
}

# Every function that the header declares.
functions=$(grep -v '^#' "$header" | tr '\n' ' ' | grep -oE 'ZEB_API [^;]*;' |
    sed -E 's/^[^(]*\b(zeb[A-Z]\w*)\(.*/\1/' | sort -u)
[ "$(wc -l <<<"$functions")" -gt 100 ] || complain "$header: too few functions found to be all"

shown=$(cat examples/*.c examples/*.h docs/guide*.md | grep -oE '\bzeb[A-Z]\w*' | sort -u)
while read -r name; do
    complain "$name occurs in no example and not in the guide"
done < <(comm -23 <(echo "$functions") <(echo "$shown") | grep . || true)

# Macros are those of the header and the options of the build.
declared=$({ echo "$functions"; grep -ohE '\bZEB_\w+|\bZeb[A-Z]\w*' "$header" CMakeLists.txt; } | sort -u)
for document in "${documents[@]}"; do
    # What ends in an underscore, or stands before a star or dots, is the beginning of several names.
    while read -r name; do
        complain "$document: there is no $name"
    done < <(grep -oE '(\bzeb[A-Z]\w*|\bZEB_\w+|\bZeb[A-Z]\w*)(\.\.\.|\*)?' "$document" | grep -vE '_$|[*.]$' | sort -u |
        comm -23 - <(echo "$declared") || true)
done

# The lines of a class, a struct or a namespace, wherever it is defined.
definition() {
    awk -v name="$1" '
        FNR == 1 { inside = 0 }
        !inside && $0 ~ "^ *(class|struct|namespace) " name "( |$)" && $0 !~ /;$/ {
            match($0, /^ */)
            indent = RLENGTH
            inside = 1
        }
        inside
        inside && /^ *}/ {
            match($0, /^ */)
            if (RLENGTH == indent) inside = 0
        }' "${sources[@]}"
}

mapfile -t sources < <(find src include \( -name '*.h' -o -name '*.cpp' \) ! -name '*_test.cpp')
design=docs/design.md
while read -r name; do
    definition "${name%%::*}" | grep -w -- "${name##*::}" >/dev/null || complain "$design: src has no $name"
done < <(grep -oE '\b[A-Za-z]\w*::\w+' "$design" | sort -u)

# Classes, functions, members and globals that stand alone: every word in backticks that can be one.
while read -r name; do
    grep -qw -- "${name%()}" "${sources[@]}" || complain "$design: src has no $name"
done < <(grep -oE '`[A-Za-z]\w*(\(\))?`' "$design" | tr -d '`' | sort -u)

for document in "${documents[@]}"; do
    while read -r file; do
        compgen -G "$file" >/dev/null || complain "$document: there is no $file"
    done < <(grep -oE '`(src|tests|apps|examples|docs|cmake|include|bench)/[^` ]*`' "$document" | tr -d '`' | sort -u)
    # Links to files, seen from the document's folder.
    while read -r file; do
        [ -e "$(dirname "$document")/$file" ] || complain "$document: links to $file, which is not there"
    done < <(grep -oE '\]\([^)#:]+' "$document" | cut -c3- | sort -u)
done
exit $bad
