#!/usr/bin/env python3
"""vase.py FILE: writes a vase and a bowl as an OBJ file of rational B-splines, and their glazes as an MTL
file beside it. It takes no packages."""
import math
import os
import sys

# Radius and height, from the middle of the foot up the outside and down the inside.
VASE = [(0, 0), (0.5, 0), (0.52, 0.08), (0.75, 0.4), (1.3, 1.0), (1.0, 1.9), (0.3, 2.1), (0.26, 2.6),
        (0.6, 2.85), (0.62, 2.92), (0.5, 2.86), (0.2, 2.6), (0.22, 2.1), (0.6, 1.9)]
BOWL = [(0, 0), (0.35, 0), (0.36, 0.1), (0.45, 0.12), (0.95, 0.25), (1.0, 0.8), (1.02, 0.86), (0.96, 0.85),
        (0.9, 0.3), (0.45, 0.2), (0, 0.2)]
# A circle: its points' x and z, and their weights.
HALF = math.sqrt(0.5)
CIRCLE = [(1, 0, 1), (1, 1, HALF), (0, 1, 1), (-1, 1, HALF), (-1, 0, 1), (-1, -1, HALF), (0, -1, 1), (1, -1, HALF),
          (1, 0, 1)]
GLAZES = {"celadon": (0.26, 0.47, 0.40), "rust": (0.62, 0.25, 0.10)}


def numbers(values):
    return " ".join(f"{value:.9g}" for value in values)


def clamped(count):
    """Knots of a cubic that begins and ends at its first and last control points."""
    inner = count - 3
    return [0] * 3 + list(range(inner + 1)) + [inner] * 3


def turned(name, glaze, profile, x, z):
    """A profile that has been turned about a vertical line."""
    knots = clamped(len(profile))
    points = [f"v {numbers((x + r * a, y, z - r * b, weight))}" for r, y in profile for a, b, weight in CIRCLE]
    corners = " ".join(str(i - len(points)) for i in range(len(points)))
    return "\n".join(points + [
        f"g {name}", f"usemtl {glaze}", "cstype rat bspline", "deg 2 3", f"surf 0 4 0 {knots[-1]} {corners}",
        "parm u 0 0 0 1 1 2 2 3 3 4 4 4", f"parm v {numbers(knots)}", "end", ""])


def main():
    if len(sys.argv) != 2 or not sys.argv[1].endswith(".obj"):
        sys.exit(__doc__)
    library = sys.argv[1][:-4] + ".mtl"
    with open(library, "w") as file:
        for name, color in GLAZES.items():
            file.write(f"newmtl {name}\nKd {numbers(color)}\nKs 0.5 0.5 0.5\nNs 200\n\n")
    with open(sys.argv[1], "w") as file:
        file.write(f"mtllib {os.path.basename(library)}\n")
        file.write(turned("vase", "celadon", VASE, 0, 0))
        file.write(turned("bowl", "rust", BOWL, 1.9, 0.9))


main()
