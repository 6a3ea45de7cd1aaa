"""Shading in NumPy: marble, a map that is an image, a cartoon, a sieve, an orange, a lamp with blinds, haze."""
import sys

import numpy as np
import zebcore as zeb

rgb = zeb.rgb


def mix(t, a, b):
    return a + t * (b - a)


def lit(g, color, shine=0.4, roughness=0.06):
    g.Ci = g.Os * (color * (g.ambient() + 0.85 * g.diffuse()) + shine * g.specular(roughness))


@zeb.surface
def marble(g):
    place = 1.7 * g.transform(g.P)  # in the space where the ball was made, which turns with it
    veins = g.turbulence(place, 8, 0.55, absolute=True)
    t = (0.5 + 0.5 * np.sin(2 * place[0] + 1.2 * place[1] + 7 * veins))**0.35
    lit(g, mix(t, rgb(.04, .07, .09), rgb(.90, .87, .80)))


# An image is an array: here bands of latitude, and land where waves meet.
lon, lat = np.meshgrid(np.linspace(0, 2 * np.pi, 512), np.linspace(np.pi / 2, -np.pi / 2, 256))
spot = np.stack([np.cos(lat) * np.cos(lon), np.cos(lat) * np.sin(lon), np.sin(lat)])
waves = sum(np.sin((1 + k) * (a * spot[0] + b * spot[1] + c * spot[2]) + a) / k**0.5
            for k, (a, b, c) in enumerate([(2.1, 0.5, -1.2), (-0.7, 1.4, 0.9), (1.0, -0.4, 1.2),
                                           (-1.2, 0.8, 0.7), (0.9, 1.1, -0.8)], 1))
land = (waves > 0.45)[..., None]
ice = (np.abs(lat) > 1.25)[..., None]
earth = zeb.Image(np.where(ice, (.9, .92, .95), np.where(land, (.10, .28, .06), (.02, .12, .35))), "repeat")


@zeb.surface
def globe(g):
    lit(g, g.image(earth, g.u, 1 - g.v), shine=0.3)


@zeb.surface
def cartoon(g):
    N = g.facing()
    edge = -(N * g.I).sum(axis=0) / np.linalg.norm(g.I, axis=0)
    tone = 0.3 + 0.35 * g.step(0.15, g.diffuse(N)[1]) + 0.35 * g.step(0.6, g.diffuse(N)[1])
    g.Ci = g.Os * g.Cs * tone * g.step(0.3, edge)


@zeb.surface(opacity=True)
def sieve(g):
    u, v = 24 * g.u % 1 - 0.5, 10 * g.v % 1 - 0.5
    g.Oi = g.step(0.33, np.hypot(u, v))
    g.Ci = g.Oi * g.Cs * (g.ambient() + 0.6 * g.diffuse() + g.specular(0.15))


# Where things stand, and how wide they are: lights cast no shadows, but a floor may know.
THINGS = ((-2.35, 0.2, 0.95), (-0.45, 0.8, 1.05), (1.75, 0.6, 0.8), (3, -0.7, 0.78),
          (0.75, -1, 0.45))


@zeb.surface
def tiles(g):
    x, _, z = g.transform(g.P, to="world")
    color = mix(g.checks(1.4 * x, 1.4 * z), rgb(.22, .25, .30), rgb(.75, .70, .62))
    for at, depth, radius in THINGS:
        color = color * (1 - 0.75 * np.exp(-1.6 * ((x - at)**2 + (z - depth)**2) / radius**2))
    lit(g, color, shine=0.1)


@zeb.displacement
def pores(g):
    depth = 0.02 * np.clip(2 * g.noise(11 * g.transform(g.P)), 0, 1)
    g.P -= depth * g.N / np.linalg.norm(g.N, axis=0)


@zeb.light_shader
def blinds(g):
    """Light from the upper left, through slits."""
    x, y, z = g.transform(g.P)
    slits = 0.5 + 0.5 * np.cos(3 * (x - 0.55 * y + 0.5 * z))
    g.L = g.transform(rgb(1, -1.1, 1) + 0 * g.P, "shader", "eye", kind="vector")
    g.Cl = rgb(1, .93, .82) * (0.25 + 0.85 * np.clip(3 * slits - 0.8, 0, 1))


@zeb.atmosphere
def haze(g):
    t = np.clip((g.P[2] - 9) / 16, 0, 1)
    g.Ci = mix(t, g.Ci, g.Oi * rgb(.62, .72, .80))


with zeb.Picture(480, 300, samples=4, gamma=2.2) as picture:
    zeb.perspective(32)
    zeb.translate(-0.25, -0.7, 9)
    zeb.rotate(-14, 1, 0, 0)
    with picture.world():
        zeb.shading_model("smooth")
        zeb.shading_rate(1)
        zeb.light("ambient", intensity=0.3)
        zeb.light(blinds)
        with zeb.attributes(surface="constant", color=(.62, .72, .80)):
            zeb.polygon([(-30, -20, 24), (-30, 20, 24), (30, 20, 24), (30, -20, 24)])
        zeb.atmosphere_shader(haze)
        with zeb.attributes(surface=tiles):
            zeb.rotate(-90, 1, 0, 0)
            zeb.disk(23)
        for x, z, radius, look in ((-2.35, 0.2, 0.95, marble), (-0.45, 0.8, 1.05, globe)):
            with zeb.attributes(surface=look):
                zeb.translate(x, radius, z)
                zeb.rotate(-110, 1, 0, 0)
                zeb.sphere(radius)
        with zeb.attributes(surface=sieve, color=(.80, .55, .20)):
            zeb.translate(1.75, 0, 0.6)
            zeb.rotate(-90, 1, 0, 0)
            zeb.cylinder(0.75, 0, 1.8)
        with zeb.attributes(surface=cartoon, color=(.9, .12, .06)):
            zeb.translate(1.75, 0.5, 0.6)
            zeb.sphere(0.45)
        with zeb.attributes(surface=cartoon, color=(.05, .45, .38)):
            zeb.translate(3, 0.28, -0.7)
            zeb.rotate(-90, 1, 0, 0)
            zeb.torus(0.5, 0.28)
        with zeb.attributes(displacement=pores, displacement_bound=0.02, color=(.95, .45, .05)):
            zeb.translate(0.75, 0.45, -1)
            zeb.rotate(-70, 1, 0.3, 0)
            zeb.sphere(0.45)

picture.save(sys.argv[1] if len(sys.argv) > 1 else "shading.png")
