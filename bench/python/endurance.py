#!/usr/bin/env python3
"""Many small pictures, with all that the package keeps alive for them: memory must not grow.

endurance.py PICTURES: prints memory and objects on the way. Every tenth picture is one that a
function's exception gives up. It reads /proc.
"""
import gc
import sys
import time

import numpy as np
import zebcore as zeb
from zebcore import _core, _picture, _primitives, _shading

zeb.declare("warmth", "varying", "float")


@zeb.light_shader
def lamp(g):
    g.L = zeb.rgb(1, -1, 1)
    g.Cl = 1


def picture(k):
    image = zeb.Image(np.random.rand(8, 8, 3))

    @zeb.surface
    def paint(g):
        if k % 10 == 3:
            raise LookupError
        g.Ci = g.Os * (g.Cs * g.diffuse() + g.image(image, g.s, g.t) + g.variable("warmth"))

    with zeb.Picture(24, 18, gamma=2.2, threads=1, progress=False) as result:
        zeb.translate(0, 0, 3)
        zeb.filter(lambda dx, dy, x, y: 1.0)
        zeb.shading_rate(8)
        with result.world():
            zeb.light(lamp)
            zeb.light("distant")
            with zeb.Object() as small:
                zeb.sphere(.2)
            with zeb.attributes(color=(.8, .3, .2), surface=paint):
                zeb.sphere(.7, warmth=[0, 1, 0, 1])
                zeb.procedural((-1, 1, -1, 1, -1, 1), lambda detail: zeb.disk(.5), lambda: None)
            small()
            zeb.mesh([(0, 0, 0), (1, 0, 0), (0, 1, 0)], [(0, 1, 2)], color=[(1, 0, 0)] * 3)
    return result._repr_png_()


def main(count):
    start = time.monotonic()
    marks = {max(1, count * k // 8) for k in range(9)} | {min(100, count)}
    for k in range(1, count + 1):
        try:
            picture(k)
        except LookupError:
            pass
        if k in marks:
            gc.collect()
            with open("/proc/self/statm") as file:
                pages = int(file.read().split()[1])
            print(f"{k} pictures: {4 * pages} KB, {len(gc.get_objects())} objects, "
                  f"{time.monotonic() - start:.0f} s", flush=True)
    kept = (_shading._shaders, _primitives._procedurals, _picture._open)
    return any(kept) or len(_core.state.options) > 1


if __name__ == "__main__":
    sys.exit(main(int(sys.argv[1])))
