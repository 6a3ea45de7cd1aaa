#!/usr/bin/env bash
# tiles_mpi.sh PROGRAM MPIRUN FOLDER: four ranks render what one process does, byte for byte; and if
# one of them is killed, the program ends with a message and without a picture.
set -euo pipefail

program=$1 mpirun=$2 folder=$3/tiles_mpi
# More ranks than cores, on this machine alone, whoever runs the tests.
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1
export OMPI_MCA_rmaps_base_oversubscribe=1 OMPI_MCA_btl=self,vader OMPI_MCA_plm=isolated
rm -rf "$folder"
mkdir -p "$folder"

fail() {
    echo "$*" >&2
    exit 1
}

if ! "$mpirun" -n 4 true >"$folder/start.log" 2>&1; then
    echo "skipped: MPI itself does not start here: $(cat "$folder/start.log")"
    exit 77
fi

"$mpirun" -n 1 "$program" "$folder/one.ppm" 2
"$mpirun" -n 4 "$program" "$folder/four.ppm" 2
cmp "$folder/one.ppm" "$folder/four.ppm" || fail "four ranks render another picture than one process"

# The processes that work on a picture; those of a rank, if one is given.
processes() {
    local process
    for process in /proc/[0-9]*; do
        tr '\0' '\n' <"$process/cmdline" 2>/dev/null | grep -qxF "$1" || continue
        [ $# = 1 ] || tr '\0' '\n' <"$process/environ" 2>/dev/null |
            grep -qx "OMPI_COMM_WORLD_RANK=$2" || continue
        echo "${process#/proc/}"
    done
}

for rank in 0 2; do
    picture=$folder/killed$rank.ppm
    # Large enough not to be done before.
    "$mpirun" -n 4 "$program" "$picture" 8 8000 >"$folder/killed$rank.log" 2>&1 &
    running=$!
    for _ in {1..100}; do
        process=$(processes "$picture" "$rank")
        [ -z "$process" ] || break
        sleep 0.1
    done
    [ -n "$process" ] || fail "rank $rank was not found"
    sleep 1
    kill -9 "$process"
    status=0
    wait "$running" || status=$?
    [ "$status" != 0 ] || fail "the program does not tell that rank $rank was killed"
    grep -q "rank $rank .*signal 9" "$folder/killed$rank.log" ||
        fail "no message names rank $rank: $(cat "$folder/killed$rank.log")"
    [ ! -e "$picture" ] && [ ! -e "$picture.part" ] || fail "there is a picture, or part of one"
    for _ in {1..100}; do
        [ -n "$(processes "$picture")" ] || break
        sleep 0.1
    done
    [ -z "$(processes "$picture")" ] || fail "ranks are left"
done
