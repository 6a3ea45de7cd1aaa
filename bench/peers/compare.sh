#!/usr/bin/env bash
# compare.sh HOSTS ZEBVIEW PICTURES ROUNDS [NAME...]: renders scenes with zebcore and with its peers,
# in turn, one thread each, and prints the best times and their ratios: those of a peer divided by
# zebcore's. HOSTS and PICTURES are folders.
set -euo pipefail

hosts=$1 zebview=$2 pictures=$3 rounds=$4
shift 4
peers=(povray osmesa embree f3d)
model=/usr/share/glmark2/models/bunny.obj
whole=bunny-command
mapfile -t known < <("$hosts/zebcore" && echo "$whole")
names=("${@:-${known[@]}}")
for name in "${names[@]}"; do
    if [[ " ${known[*]} " != *" $name "* ]]; then
        echo "compare.sh: no scene $name; there are ${known[*]}" >&2
        exit 2
    fi
done

# OpenGL in software, in the thread that calls it.
export LIBGL_ALWAYS_SOFTWARE=1 GALLIUM_DRIVER=llvmpipe LP_NUM_THREADS=0

# Runs its arguments, and prints the milliseconds of processor time that they take, start and files
# included. As text, because it also runs below xvfb-run, whose own time shall not count.
timer='TIMEFORMAT="%3U %3S"; exec 3>/dev/null
    { time "$@" >&3 2>&3; } 2>&1 | awk "{ print 1000 * (\$1 + \$2) }"'

# whole_command PROGRAM PICTURE: as somebody types it who knows neither program well.
whole_command() {
    case $1 in
    zebcore)
        bash -c "$timer" - "$zebview" "$model" -o "$2" --size 1024x1024 --threads 1
        ;;
    f3d)
        xvfb-run -a bash -c "$timer" - f3d --dry-run --fxaa --output "$2" \
            --resolution 1024,1024 "$model"
        ;;
    esac
}

# render PROGRAM NAME: renders, and prints the program and its times, or nothing if it has no such scene.
render() {
    local picture=$pictures/$2-$1.png times
    case $2:$1 in
    "$whole":zebcore | "$whole":f3d) times=$(whole_command "$1" "$picture") ;;
    "$whole":* | *:f3d) return 0 ;;
    *) times=$("$hosts/$1" "$2" "$picture") ;;
    esac
    echo "$1 $times"
}

# difference NAME: the mean one from zebcore's picture, in steps of 255, of the peer that is farthest off.
difference() {
    local peer most=0 steps
    for peer in povray osmesa embree; do
        # It fails where pictures differ at all, which they do.
        steps=$(compare -metric MAE "$pictures/$1-zebcore.png" "$pictures/$1-$peer.png" null: 2>&1) || true
        steps=$(sed 's/.*(\(.*\))/\1/' <<<"$steps")
        most=$(awk -v a="$most" -v b="$steps" 'BEGIN { b *= 255; print (a > b ? a : b) }')
    done
    printf '%.1f' "$most"
}

printf '%-14s %10s' scene 'zebcore ms'
for peer in 'POV-Ray' '(tracing)' OSMesa Embree F3D; do printf ' %10s ms  ratio' "$peer"; done
printf '  %s\n' difference
for name in "${names[@]}"; do
    for ((round = 0; round < rounds; ++round)); do
        for program in zebcore "${peers[@]}"; do render "$program" "$name"; done
    done | awk -v name="$name" '
        function keep(key, value) { if (!(key in best) || value < best[key]) best[key] = value }
        function cell(key) {
            if (key in best) printf " %13.0f %6.2f", best[key], best[key] / best["zebcore"]
            else printf " %13s %6s", "", ""
        }
        { keep($1, $2) }
        $1 == "povray" { keep("tracing", $3) }
        # Two clocks, and their grain.
        $1 ~ /^(zebcore|osmesa|embree)$/ && NF == 3 && $2 > 1.1 * $3 + 20 {
            print name ": " $1 " used more than one thread" >"/dev/stderr"
        }
        END {
            printf "%-14s %10.0f", name, best["zebcore"]
            cell("povray"); cell("tracing"); cell("osmesa"); cell("embree"); cell("f3d")
        }'
    if [ "$name" = "$whole" ]; then echo; else printf '  %10s\n' "$(difference "$name")"; fi
done
cat <<'TEXT'

Times are of the processor, the best of the rounds; a ratio is a peer's time divided by zebcore's, so
that below 1 the peer is faster. The difference is the mean one of a pixel's colours, in steps of 255,
between zebcore's picture and that of the peer that is farthest off.
POV-Ray      parsing, bounding and tracing, and (tracing) alone; it takes more than one sample only
             where neighbouring pixels differ
OSMesa       buffers, drawing and averaging; contexts are made and shaders compiled before
Embree       building its tree, and tracing; its spheres are exact
F3D          shows models only, and as a command: its time is compared with that of all of zebview.
             Camera, samples, lights and materials are each program's own. The other peers are no
             commands that read models
TEXT
