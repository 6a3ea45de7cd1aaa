"""A picture that many processes render, on this machine or on others, by Dask.

cluster.py FILE [SCHEDULER]: on the cluster whose scheduler has that address, such as
tcp://192.0.2.1:8786; without one on workers on this machine, one for each core.
"""
import sys

import numpy as np
import zebcore as zeb
import zebcore.distributed
from distributed import Client

SEEDS = 300


@zeb.surface
def husk(g):
    streak = 0.75 + 0.35 * np.sin(12 * g.u * np.pi)
    g.Ci = g.Os * (g.Cs * streak * (g.ambient() + g.diffuse()) + 0.3 * g.specular(0.1))


def scene():
    zeb.perspective(28)
    zeb.look_at((0, -2.4, 3.4), (0, -0.04, 0), up=(0, 0, 1))
    with zeb.Object() as seed:
        zeb.sphere(1)

    def world():
        zeb.light("ambient", intensity=0.25)
        zeb.light("distant", intensity=1, from_=(-1, -1, 2), to=(0, 0, 0))
        for k in range(SEEDS):
            out = np.sqrt((k + 0.5) / SEEDS)
            with zeb.attributes(surface=husk, color=(0.25 + 0.65 * out, 0.2 + 0.4 * out**2, 0.12)):
                zeb.rotate(137.508 * k, 0, 0, 1)
                zeb.translate(out, 0, 0.25 * (1 - out**2))
                zeb.scale(0.083, 0.046, 0.06)
                seed()
    return world


if __name__ == "__main__":  # workers on this machine read the file, too
    where = dict(address=sys.argv[2]) if len(sys.argv) > 2 else dict(dashboard_address=":0")
    with Client(**where) as client:
        picture = zebcore.distributed.render(scene, 480, 360, client, samples=4, gamma=2.2)
    picture.save(sys.argv[1] if len(sys.argv) > 1 else "cluster.png")
