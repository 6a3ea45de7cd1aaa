#!/usr/bin/env python3
"""What tiles on a local cluster cost and give, against the same pictures made in this process.

cluster.py: 1024 x 1024 pixels, best of five, taken in turn. Workers are processes of one thread each. The
last column compares the time of processors, in all processes together. ZEBCORE_LIBRARY names the library
where the package has none.
"""
import time

import numpy as np
import zebcore as zeb
import zebcore.distributed
from distributed import Client

SIDE, ROUNDS = 1024, 5


def camera():
    zeb.perspective(30)
    zeb.translate(0, 0, 4.5)


def lights():
    zeb.light("ambient", intensity=0.1)
    zeb.light("distant", to=(1, -1, 1))


def nothing():
    return lambda: None


def balls():
    camera()

    def world():
        lights()
        random = np.random.default_rng(1)
        for place, color in zip(random.uniform(-1.2, 1.2, (400, 3)), random.random((400, 3))):
            with zeb.attributes(color=color):
                zeb.translate(*place)
                zeb.sphere(0.12)
    return world


def mesh():
    camera()
    u, v = np.meshgrid(*2 * [np.linspace(0, 2 * np.pi, 300, endpoint=False)], indexing="ij")
    out = 0.8 + 0.3 * np.cos(v) + 0.02 * np.sin(9 * u + 5 * v)
    points = np.stack([out * np.cos(u), out * np.sin(u), 0.3 * np.sin(v)], axis=-1).reshape(-1, 3)
    at = np.arange(300 * 300).reshape(300, 300)
    corners = [np.roll(at, shift, (0, 1)) for shift in ((0, 0), (-1, 0), (-1, -1), (0, -1))]
    with zeb.Object() as knot:
        zeb.mesh(points, np.stack(corners, axis=-1).reshape(-1, 4))

    def world():
        lights()
        zeb.rotate(50, 1, 0, 0)
        knot()
    return world


@zeb.surface
def plastic(g):
    g.Ci = g.Os * (g.Cs * (g.ambient() + 0.5 * g.diffuse()) + 0.5 * g.specular(0.1))


def shaded():
    camera()

    def world():
        lights()
        with zeb.attributes(surface=plastic, color=(.8, .3, .2)):
            zeb.sphere(1)
    return world


def here(scene, threads):
    with zeb.Picture(SIDE, SIDE, threads=threads, progress=False) as picture:
        world = scene()
        with picture.world():
            world()
    return picture


def main():
    options = dict(threads_per_worker=1, dashboard_address=":0")
    with Client(n_workers=1, **options) as one, Client(n_workers=2, **options) as two:
        def worked():
            """Seconds that processors have worked for this process and for the workers."""
            return sum((time.process_time(), *one.run(time.process_time).values(),
                        *two.run(time.process_time).values()))

        def there(scene, client):
            return zebcore.distributed.render(scene, SIDE, SIDE, client, progress=False)

        print("| scene | 1 thread, ms | 2 threads | 1 worker | 2 workers | work of 2 workers to 1 thread's |")
        print("|---" * 6 + "|")
        for name, scene in (("nothing", nothing), ("400 spheres", balls), ("a mesh of 90,000 faces", mesh),
                            ("a ball, shaded in NumPy", shaded)):
            ways = [lambda: here(scene, 1), lambda: here(scene, 2), lambda: there(scene, one),
                    lambda: there(scene, two)]
            assert len({way().rgba.tobytes() for way in ways}) == 1
            times = np.empty((ROUNDS, 2, len(ways)))
            for k in range(ROUNDS):
                for n, way in enumerate(ways):
                    before, start = worked(), time.perf_counter()
                    way()
                    times[k, :, n] = time.perf_counter() - start, worked() - before
            clock, work = times.min(axis=0)
            print(f"| {name} |" + "".join(f" {1000 * t:.0f} |" for t in clock)
                  + f" {work[3] / work[0]:.2f} |", flush=True)


if __name__ == "__main__":
    main()
