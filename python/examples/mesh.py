"""A mesh as programs for meshes hold one: vertices, faces, normals and colours as arrays."""
import sys
from dataclasses import dataclass

import numpy as np
import zebcore as zeb


@dataclass
class Mesh:
    vertices: np.ndarray        # (n, 3)
    faces: np.ndarray           # (m, 3)
    vertex_normals: np.ndarray  # (n, 3)


def knot(p=2, q=3, around=48, along=600, radius=0.42):
    """A tube that winds about itself."""
    def path(a):
        ring = 2 + np.cos(q * a)
        return np.stack([ring * np.cos(p * a), ring * np.sin(p * a), 1.1 * np.sin(q * a)], axis=-1)

    a = np.linspace(0, 2 * np.pi, along, endpoint=False)
    center, ahead, behind = path(a), path(a + 1e-3), path(a - 1e-3)
    tangent = ahead - behind
    bend = ahead + behind - 2 * center
    across = np.cross(tangent, bend)
    across /= np.linalg.norm(across, axis=1, keepdims=True)
    inwards = np.cross(across, tangent)
    inwards /= np.linalg.norm(inwards, axis=1, keepdims=True)
    b = np.linspace(0, 2 * np.pi, around, endpoint=False)
    ring = np.cos(b)[:, None] * across[:, None] + np.sin(b)[:, None] * inwards[:, None]
    size = radius * (1 + 0.12 * np.sin(24 * a[:, None] + 5 * b))[..., None]
    vertices = (center[:, None] + size * ring).reshape(-1, 3)
    i, j = np.meshgrid(np.arange(along), np.arange(around), indexing="ij")
    right, up = (i + 1) % along, (j + 1) % around
    corner = lambda i, j: (i * around + j).ravel()  # noqa: E731
    faces = np.concatenate([np.stack([corner(i, j), corner(right, j), corner(right, up)], axis=1),
                            np.stack([corner(i, j), corner(right, up), corner(i, up)], axis=1)])
    return Mesh(vertices, faces, normals(vertices, faces))


def normals(vertices, faces):
    """Means of the normals of the faces around each vertex."""
    a, b, c = (vertices[faces[:, k]] for k in range(3))
    of_faces = np.cross(b - a, c - a)
    result = np.zeros_like(vertices)
    for k in range(3):
        np.add.at(result, faces[:, k], of_faces)
    return result / np.linalg.norm(result, axis=1, keepdims=True)


def colors(mesh):
    """Warm where the surface looks up, cool where it looks down."""
    up = 0.5 + 0.5 * mesh.vertex_normals[:, 2:]
    return up * (0.95, 0.45, 0.12) + (1 - up) * (0.05, 0.16, 0.45)


def light():
    zeb.light("ambient", intensity=0.25)
    zeb.light("distant", intensity=0.85, to=(-0.7, 1, -1.4))
    zeb.light("distant", intensity=0.3, to=(1, 0.4, 0.2))


def draw(mesh):
    with zeb.attributes(surface=("plastic", dict(kd=0.9, ks=0.4, roughness=0.06)),
                        shading_model="smooth", shading_rate=1):
        zeb.mesh(mesh.vertices, mesh.faces, normal=mesh.vertex_normals, color=colors(mesh))


if __name__ == "__main__":
    with zeb.Picture(480, 360, samples=4, gamma=2.2) as picture:
        zeb.perspective(30)
        zeb.look_at((0, -8, 8.2), (0, 0, -0.1), up=(0, 0, 1))
        with picture.world():
            light()
            draw(knot())
    picture.save(sys.argv[1] if len(sys.argv) > 1 else "mesh.png")
