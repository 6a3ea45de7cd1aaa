"""What a program with types may write; ./dev python has mypy read it."""
from collections.abc import Callable

import numpy as np
import zebcore as zeb
import zebcore.distributed
from distributed import Client
from numpy.typing import NDArray


@zeb.surface
def checks(g: zeb.Row) -> None:
    odd = (np.floor(8 * g.s) + np.floor(8 * g.t)) % 2
    g.Ci[:] = g.Os * (g.Cs * odd * g.diffuse() + 0.5 * g.specular(0.1))


@zeb.surface(opacity=True)
def veil(g: zeb.Row) -> None:
    g.Oi[:] = 0.5
    g.Ci = g.Oi * zeb.rgb(1, 0, 0)


@zeb.light_shader(ambient=True)
def glow(g: zeb.Row) -> None:
    g.Cl = 0.1 + 0 * g.P


def render(width: int) -> NDArray[np.float32]:
    with zeb.Picture(width, 480, samples=(2, 3), progress=lambda percent: percent > 99) as picture:
        zeb.look_at((0, 0, -5), at=np.zeros(3))
        zeb.filter("box")
        with picture.world(crop=(0, 12, 0, 12)):
            lamp: zeb.Light = zeb.light(glow)
            lamp.switch(False)
            with zeb.attributes(surface=("plastic", {"kd": 0.5}), color=(1, 0, 0)), zeb.transform():
                zeb.mesh(np.eye(3), [(0, 1, 2)], color=0.5)
                zeb.patch_mesh(height=np.zeros((4, 4)))
            with zeb.Object() as ball:
                zeb.sphere(1)
            ball()
    picture.save("a.png", bits=16)
    return picture.rgba


def ball(size: float) -> Callable[[], None]:
    zeb.perspective(30)
    return lambda: zeb.sphere(size)


def share(client: Client) -> zeb.Picture:
    for picture in zebcore.distributed.frames(ball, np.linspace(1, 2), 64, 48, client, ahead=3):
        picture.save("b.exr")
    return zebcore.distributed.render(lambda: ball(1), 64, 48, client, tile=(24, 12), gamma=2.2,
                                      progress=lambda percent: percent > 99)
