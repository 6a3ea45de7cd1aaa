#!/usr/bin/env python3
"""What the Python package costs: calls, functions that shade, pixels.

cost.py: one thread, best of nine. ZEBCORE_LIBRARY names the library where the package has none.
"""
import time

import numpy as np
import zebcore as zeb

ROUNDS = 9


def bests(*runs):
    """Seconds of the processor's time that each takes at best, taken in turn."""
    times = [[] for _ in runs]
    for _ in range(ROUNDS):
        for run, taken in zip(runs, times):
            start = time.thread_time()
            run()
            taken.append(time.thread_time() - start)
    return [min(taken) for taken in times]


def best(run):
    return bests(run)[0]


def nanoseconds(call, count=20000):
    def run():
        for _ in range(count):
            call()
    return best(run) / count * 1e9


def sheet():
    x, y = np.meshgrid(np.linspace(-1, 1, 9), np.linspace(-1, 1, 9))
    zeb.patch_mesh(np.dstack([x, y, 0 * x]), "bilinear")


def render(shape, surface, **attributes):
    with zeb.Picture(640, 480, threads=1, progress=False) as picture:
        zeb.perspective(30)
        zeb.translate(0, 0, 4.5)
        with picture.world():
            zeb.light("ambient", intensity=0.1)
            zeb.light("distant", to=(1, -1, 1))
            with zeb.attributes(surface=surface, color=(.8, .3, .2), **attributes):
                shape()
    return picture


@zeb.surface
def plastic(g):
    g.Ci = g.Os * (g.Cs * (g.ambient() + 0.5 * g.diffuse()) + 0.5 * g.specular(0.1))


@zeb.surface
def nothing(g):
    pass


def calls():
    raw = zeb.raw.lib.zebTranslate
    color = np.array((.8, .3, .2), np.float32)
    with zeb.Picture(8, 8, progress=False) as picture:
        zeb.hider("null")
        with picture.world():
            print("| call | ns |\n|---|---|")
            for name, call in (("`raw.lib.zebTranslate(0, 0, 0)`", lambda: raw(0, 0, 0)),
                               ("`translate(0, 0, 0)`", lambda: zeb.translate(0, 0, 0)),
                               ("`color` of an array", lambda: zeb.color(color)),
                               ("`sphere(1)`", lambda: zeb.sphere(1)),
                               ("`sphere(1, color=...)`", lambda: zeb.sphere(1, color=color)),
                               ("`attributes(color=...)`, begin and end", block)):
                print(f"| {name} | {nanoseconds(call):.0f} |")


def block():
    with zeb.attributes(color=(.8, .3, .2)):
        pass


def shading():
    rows = []

    @zeb.surface
    def count(g):
        rows.append(g.count)

    print("\n| surface, 640 x 480, 2 x 2 samples | ms | rows | points a row | us a row |")
    print("|---|---|---|---|---|")
    smooth = dict(shading_rate=1, shading_model="smooth")
    for text, shape, attributes in (("ball", zeb.sphere, {}), ("ball, rate 1, smooth", zeb.sphere, smooth),
                                    ("sheet", sheet, {})):
        rows.clear()
        render(shape, count, **attributes)
        surfaces = {"\"constant\", which does least": "constant", "\"plastic\"": "plastic",
                    "a function that does nothing": nothing, "plastic in NumPy": plastic}
        least, *others = bests(*(lambda surface=surface: render(shape, surface, **attributes)
                                 for surface in surfaces.values()))
        for name, took in zip(surfaces, (least, *others)):
            row = f"{(took - least) / len(rows) * 1e6:.0f}"
            print(f"| {name}, {text} | {took * 1e3:.0f} | {len(rows)} | {np.mean(rows):.0f} | {row} |")


def pixels():
    """Of an empty picture nothing takes time but the pixels' way."""
    def empty(size):
        with zeb.Picture(size, size, threads=1, progress=False) as picture:
            with picture.world():
                pass
    print(f"\nAn empty picture of 1024 x 1024: {best(lambda: empty(1024)) * 1e3:.0f} ms.")


calls()
shading()
pixels()
