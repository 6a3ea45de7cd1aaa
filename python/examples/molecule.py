"""A molecule of 5,000 atoms: a double helix that is wound up, in one call."""
import sys

import numpy as np
import zebcore as zeb

PAIRS = 250      # rungs of the ladder
ATOMS = 20       # of each


def axis(t):
    """The way of the helix: a knot, closed, for t from 0 to 1."""
    a = 2 * np.pi * t[..., None]
    ring = 2 + 0.75 * np.cos(3 * a)
    return np.concatenate([ring * np.cos(2 * a), ring * np.sin(2 * a), 0.95 * np.sin(3 * a)], axis=-1)


t = np.arange(PAIRS) / PAIRS
center = axis(t)
along = axis(t + 1e-4) - axis(t - 1e-4)
along /= np.linalg.norm(along, axis=1, keepdims=True)
side = np.cross(along, center)
side /= np.linalg.norm(side, axis=1, keepdims=True)
other = np.cross(along, side)

turn = (2 * np.pi * 24 * t)[:, None]  # 24 turns of the ladder
across = np.cos(turn) * side + np.sin(turn) * other
beside = -np.sin(turn) * side + np.cos(turn) * other

# Of each rung: where its atoms are, across and beside it and along the axis, and what they are.
rng = np.random.default_rng(5)
place = np.zeros((ATOMS, 3))
place[:4, 0] = np.linspace(-0.36, -0.27, 4)     # one strand's backbone
place[4:8, 0] = np.linspace(0.27, 0.36, 4)      # the other's
place[8:, 0] = np.linspace(-0.22, 0.22, 12)     # bases
place[:8, 2] = np.tile([-0.035, 0.035, -0.03, 0.03], 2)
place[8:, 1] = 0.05 * np.where(np.arange(12) % 2, 1, -1)
kind = np.array([0, 1, 2, 1] * 2 + [1, 3, 1, 3, 1, 2, 2, 1, 3, 1, 3, 1])
COLORS = np.array([(.95, .42, .05), (.16, .17, .19), (.75, .04, .04), (.05, .13, .70)])  # P C O N
RADII = np.array([0.080, 0.062, 0.056, 0.058])

centers = (center[:, None] + place[:, 0, None] * across[:, None] + place[:, 1, None] * beside[:, None]
           + place[:, 2, None] * along[:, None]).reshape(-1, 3)
kinds = np.tile(kind, PAIRS)

with zeb.Picture(480, 400, samples=4, gamma=2.2) as picture:
    zeb.perspective(30)
    zeb.look_at((0.7, -6.7, 7.9), (0, 0, 0), up=(0, 0, 1))
    with picture.world():
        zeb.light("ambient", intensity=0.25)
        zeb.light("distant", intensity=0.9, to=(0.8, 1.2, -1.6))
        zeb.light("distant", intensity=0.25, color=(.6, .8, 1), to=(-1, 0.3, -0.3))
        with zeb.attributes(surface=("plastic", dict(kd=0.9, ks=0.35, roughness=0.08)),
                            atmosphere=("depthcue", dict(hither=9.5, yon=24, color=(1, 1, 1)))):
            zeb.spheres(centers, RADII[kinds], color=COLORS[kinds])

print(len(centers), "atoms")
picture.save(sys.argv[1] if len(sys.argv) > 1 else "molecule.png")
