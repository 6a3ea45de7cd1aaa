#!/usr/bin/env python3
"""sky.py FILE: writes a sky with a low sun, over a meadow, as a picture of all directions in Radiance's
format, for zebview's --environment. It takes no packages."""
import math
import sys

WIDTH, HEIGHT = 512, 256
SUN = (-0.6, 0.5, 0.62)  # to the left, in front
SUN_SIZE = math.radians(4)


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def light(x, y, z):
    """What arrives from a direction, y being up."""
    if y < 0:
        return mix((0.20, 0.19, 0.15), (0.09, 0.12, 0.05), min(-3 * y, 1))
    color = mix((0.75, 0.80, 0.85), (0.12, 0.27, 0.62), y ** 0.5)
    length = math.hypot(*SUN)
    cosine = sum(a * b for a, b in zip((x, y, z), SUN)) / length
    glow = 0.6 * max(cosine, 0) ** 24
    sun = 120 if cosine > math.cos(SUN_SIZE) else 0
    return tuple(c + (glow + sun) * s for c, s in zip(color, (1, 0.93, 0.8)))


def rgbe(color):
    """Three bytes and the exponent that they share."""
    exponent = math.frexp(max(color))[1]
    return bytes([*(int(math.ldexp(c, 8 - exponent)) for c in color), exponent + 128])


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "wb") as file:
        file.write(f"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y {HEIGHT} +X {WIDTH}\n".encode())
        for row in range(HEIGHT):
            down = math.pi * (row + 0.5) / HEIGHT
            for column in range(WIDTH):
                # The middle of the picture is what an eye before the model looks at.
                across = 2 * math.pi * ((column + 0.5) / WIDTH - 0.5)
                side = math.sin(down)
                file.write(rgbe(light(side * math.sin(across), math.cos(down),
                                      -side * math.cos(across))))


main()
