#!/usr/bin/env bash
# Includes point down the layers, never up: util, math, state, then geom, shade and display, which
# may see each other's headers as listed, then hider, then api.
set -euo pipefail
cd "$(dirname "$0")/../src"

declare -A sees=(
    [util]="util"
    [math]="util math"
    [state]="util math state"
    [geom]="util math state geom"
    [shade]="util math state geom shade"
    [display]="util math state display"
    [hider]="util math state geom display hider"
    [api]="util math state geom shade display hider api"
)
bad=0
while IFS=: read -r file line text; do
    layer=${file%%/*}
    target=$(sed -E 's/.*"([a-z]+)\/.*/\1/' <<<"$text")
    [ "$target" = zebcore ] && continue
    if [[ " ${sees[$layer]} " != *" $target "* ]]; then
        echo "$file:$line: $layer may not include $target"
        bad=1
    fi
done < <(grep -rnE '^#include "[a-z]+/' --include='*.h' --include='*.cpp' . | sed 's|^\./||' | grep -v '_test\.cpp:')
exit $bad
