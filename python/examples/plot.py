"""A function of two variables, with a colour map and contour lines that a shader draws."""
import sys

import numpy as np
import zebcore as zeb

x, y = np.meshgrid(np.linspace(-3.15, 3.15, 43), np.linspace(-3.15, 3.15, 43))
z = (1 - x / 2 + x**5 + y**3) * np.exp(-x**2 - y**2) * 1.6

# The map: colours at equal steps between the lowest and the highest value.
MAP = np.array([(.03, .01, .12), (.02, .11, .33), (.00, .30, .38), (.05, .50, .25), (.60, .70, .05),
                (1.0, .72, .10)])
low, high = z.min(), z.max()
SPACING = 0.2


def coverage(g, distance, width):
    """How much of a line a point lies under: a distance in units of the picture's own steps."""
    along, across = g.differences(distance)
    step = np.hypot(along, across) + 1e-12
    return np.clip(0.5 + (width - np.abs(distance)) / step, 0, 1)


@zeb.surface
def contours(g):
    px, py, height = g.transform(g.P, to="plot")
    share = (height - low) / (high - low) * (len(MAP) - 1)
    color = np.stack([np.interp(share, np.arange(len(MAP)), MAP[:, c]) for c in range(3)])
    level = height / SPACING + 0.5
    line = coverage(g, level - np.round(level), 0.03) * 0.75
    grid = np.maximum(coverage(g, px - np.round(px), 0.004), coverage(g, py - np.round(py), 0.004)) * 0.3
    color = color * (1 - line) * (1 - grid) + grid * (1 - line)
    g.Ci = g.Os * (color * (g.ambient() + 0.8 * g.diffuse()) + 0.12 * g.specular(0.08))


with zeb.Picture(480, 360, samples=4, gamma=2.2) as picture:
    zeb.perspective(27.5)
    zeb.look_at((6.6, -10.4, 9.4), (0.05, 0, -0.8), up=(0, 0, 1))
    with picture.world():
        zeb.light("ambient", intensity=0.35)
        zeb.light("distant", intensity=0.9, to=(-1, 0.6, -1.5))
        zeb.mark_space("plot")
        zeb.shading_model("smooth")
        # A spline through all points but those of the border.
        with zeb.attributes(surface=contours, basis="catmull_rom", shading_rate=0.5):
            zeb.patch_mesh(np.dstack([x, y, z]))
        with zeb.attributes(surface="constant", color=0.3):
            t = np.linspace(0, 1, 400)[:, None]
            corners = np.array([(-3, -3), (3, -3), (3, 3), (-3, 3)])
            for a, b in zip(corners, np.roll(corners, -1, axis=0)):  # the frame below, of beads
                zeb.spheres(np.column_stack([a * (1 - t) + b * t, np.full(400, low - 0.3)]), 0.015)

picture.save(sys.argv[1] if len(sys.argv) > 1 else "plot.png")
