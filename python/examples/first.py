"""A first picture: a ball whose surface is a function of arrays."""
import sys

import numpy as np
import zebcore as zeb


@zeb.surface
def checks(g):
    odd = (np.floor(8 * g.s) + np.floor(8 * g.t)) % 2
    g.Ci = g.Os * (g.Cs * (0.2 + 0.8 * odd) * (g.ambient() + g.diffuse()) + 0.5 * g.specular(0.1))


with zeb.Picture(480, 360, samples=4, gamma=2.2) as picture:
    zeb.perspective(30)
    zeb.translate(0, 0, 4.5)
    with picture.world():
        zeb.light("ambient", intensity=0.15)
        zeb.light("distant", intensity=1.2, to=(1, -1, 1))
        with zeb.attributes(color=(.8, .3, .2), surface=checks):
            zeb.rotate(-60, 1, 0, 0)
            zeb.sphere(1)

picture.save(sys.argv[1] if len(sys.argv) > 1 else "first.png")
