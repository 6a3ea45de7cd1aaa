"""A plot of points and a surface, through the library's own functions and nothing but Python's.

scatter.py LIBRARY PICTURE [PERCENT]: renders into memory and writes the picture as a portable
pixmap; or gives it up when so much of it is done.
"""
import ctypes as c
import math
import random
import sys

zeb = c.CDLL(sys.argv[1])
zeb.zebQuark.restype = c.c_ushort

WIDTH, HEIGHT, COUNT = 320, 240, 5000
STOP = int(sys.argv[3]) if len(sys.argv) > 3 else 101
pixels = bytearray(3 * WIDTH * HEIGHT)
heard = []

SPAN = c.CFUNCTYPE(None, c.c_void_p, c.c_long, c.c_long, c.c_long, c.POINTER(c.c_uint))
PROGRESS = c.CFUNCTYPE(c.c_short, c.c_void_p, c.c_long)


class Display(c.Structure):  # of its functions the plot needs one
    _fields_ = [("data", c.c_void_p), ("open", c.c_void_p), ("span", SPAN),
                ("flush", c.c_void_p), ("close", c.c_void_p)]


@SPAN
def span(_, x0, x1, y, words):
    begin, count = 3 * (y * WIDTH + x0), 3 * (x1 - x0 + 1)
    pixels[begin:begin + count] = bytes(words[:count])


@PROGRESS
def progress(_, percent):
    heard.append(percent)
    return percent >= STOP


def floats(values):
    values = list(values)
    return (c.c_float * len(values))(*values)


def token(name):
    return c.c_int(zeb.zebQuark(name.encode()))


def height(x, y):
    return 0.8 * math.sin(1.7 * x) * math.cos(1.3 * y)


zeb.zebReset()  # a plain name, though the header's is decorated
device = Display(span=span)
zeb.zebCustomDisplay(c.byref(device))
zeb.zebProgressCallback(progress, None)
zeb.zebRasterViewport(c.c_long(0), c.c_long(WIDTH), c.c_long(0), c.c_long(HEIGHT))
zeb.zebViewPerspective(c.c_float(40))
zeb.zebLookAt(floats((3.8, -5.6, 4)), floats((0, 0, 0)), floats((0, 0, 1)))
zeb.zebSceneBegin()
zeb.zebLightSource(token("ambient"), token("intensity"), floats([0.3]), c.c_int(0))
zeb.zebLightSource(token("distant"), token("to"), floats((-1, 2, -3)), c.c_int(0))
zeb.zebSurface(token("plastic"), c.c_int(0))

rng = random.Random(1)
places = [(rng.uniform(-2, 2), rng.uniform(-2, 2), rng.gauss(0, 0.3)) for _ in range(COUNT)]
centers = floats(v for x, y, off in places for v in (x, y, height(x, y) + off))
colors = floats(v for _, _, off in places for v in ((1, 0.3, 0.1) if off > 0 else (0.1, 0.4, 1)))
zeb.zebSpheres(c.c_long(COUNT), centers, floats([0.03] * COUNT), token("color"), colors, c.c_int(0))

zeb.zebColor(floats((0.6, 0.65, 0.7)))
places = [(i / 3 - 2, j / 3 - 2) for j in range(13) for i in range(13)]
points = floats(v for x, y in places for v in (x, y, height(x, y)))
axis = (c.c_long(13), c.c_long(4), floats([0] * 3 + list(range(11)) + [10] * 3), c.c_float(0), c.c_float(10))
zeb.zebArray(points, c.c_long(13 * 13), c.c_long(0))  # one that is too short would be refused
zeb.zebNurbMesh(*axis, *axis, token("point"), points, c.c_int(0))
zeb.zebSceneEnd()

given_up = STOP <= heard[-1] < 100
if zeb.zebLastError() or given_up != (STOP <= 100) or heard != sorted(set(heard)):
    sys.exit(f"code {zeb.zebLastError()}, progress {heard}")
with open(sys.argv[2], "wb") as file:
    file.write(b"P6 %d %d 255\n" % (WIDTH, HEIGHT) + pixels)
