#!/usr/bin/env bash
# compare.sh SCENE BEFORE AFTER [ROUNDS [NAME...]]: renders scenes with the libraries in the folders
# BEFORE and AFTER, in turn, and prints the best times, their ratios, and the peaks of memory.
set -euo pipefail

scene=$1 before=$2 after=$3 rounds=${4:-3}
shift $(($# < 4 ? $# : 4))
names=("$@")
[ ${#names[@]} -gt 0 ] || mapfile -t names < <(LD_LIBRARY_PATH=$after "$scene")

printf '%-24s %10s %10s %7s %9s %9s  %s\n' scene 'before ms' 'after ms' ratio 'before MB' 'after MB' pictures
for name in "${names[@]}"; do
    for ((round = 0; round < rounds; ++round)); do
        for folder in "$before" "$after"; do
            echo "$folder $(LD_LIBRARY_PATH=$folder "$scene" "$name")"
        done
    done | awk -v name="$name" -v first="$before" '
        { k = $1 == first ? 0 : 1 }
        !(k in best) || $2 < best[k] { best[k] = $2 }
        $3 > peak[k] { peak[k] = $3 }
        { hash[k] = $4 }
        END {
            printf "%-24s %10d %10d %7.2f %9d %9d  %s\n", name, best[0], best[1],
                best[0] / (best[1] > 0 ? best[1] : 1), peak[0], peak[1],
                hash[0] == hash[1] ? "same" : "differ"
        }'
done
