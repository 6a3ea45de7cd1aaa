"""Primitives, objects, procedurals and lights.

Primitives are legal in a world block and what nests in it. Each takes primitive variables as keyword
arguments: "color", "opacity", "normal", parameters of the surface such as "kd", and whatever
`declare` makes. How many values a variable has is said by its class, uniform, varying or vertex; a
single value stands for all of them.
"""
from __future__ import annotations

from collections.abc import Callable, Sequence
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike

from . import raw
from ._arrays import (Floats, Longs, Parameters, as_floats, as_longs, choice, floats_of, named,
                      number, optional, quark, vector, whole)
from ._core import Block, call, callback, claim, state
from ._shading import Shader
from .raw import lib


def _corners(where: str, variables: dict[str, Any]) -> Parameters:
    """Curved surfaces have one value, or four at the corners of their parameters."""
    return Parameters(where, {"uniform": (), "varying": (4,), "vertex": (4,)}).add(variables)


def sphere(radius: float = 1, zmin: Optional[float] = None, zmax: Optional[float] = None,
           thetamax: float = 360, **variables: Any) -> None:
    """Adds a sphere about the origin, or the part of it from zmin to zmax.

    Of quadrics u runs along the turn about z, v along the curve that turns. Varying variables have
    four values, at (u, v) = (0, 0), (1, 0), (0, 1) and (1, 1).
    """
    r = number("sphere()", "radius", radius)
    _corners("sphere()", variables).call(
        lib.zebSphereV, r, optional("sphere()", "zmin", zmin, -abs(r)),
        optional("sphere()", "zmax", zmax, abs(r)), *floats_of("sphere()", thetamax=thetamax))


def cone(radius: float = 1, height: float = 1, cutheight: Optional[float] = None,
         thetamax: float = 360, **variables: Any) -> None:
    """Adds the side of a cone on the xy plane with its tip at z = height, up to cutheight."""
    h = number("cone()", "height", height)
    _corners("cone()", variables).call(
        lib.zebConeV, *floats_of("cone()", radius=radius), h,
        optional("cone()", "cutheight", cutheight, h), *floats_of("cone()", thetamax=thetamax))


def cylinder(radius: float = 1, zmin: float = -1, zmax: float = 1, thetamax: float = 360,
             **variables: Any) -> None:
    """Adds the side of a cylinder from zmin to zmax."""
    _corners("cylinder()", variables).call(lib.zebCylinderV, *floats_of(
        "cylinder()", radius=radius, zmin=zmin, zmax=zmax, thetamax=thetamax))


def hyperboloid(point1: ArrayLike, point2: ArrayLike, thetamax: float = 360,
                **variables: Any) -> None:
    """Adds the surface that the straight line between two points sweeps."""
    ends = [vector("hyperboloid()", n, v) for n, v in (("point1", point1), ("point2", point2))]
    _corners("hyperboloid()", variables).call(
        lib.zebHyperboloidV, ends[0].ctypes, ends[1].ctypes,
        *floats_of("hyperboloid()", thetamax=thetamax))


def paraboloid(rmax: float = 1, zmin: float = 0, zmax: float = 1, thetamax: float = 360,
               **variables: Any) -> None:
    """Adds a paraboloid with its tip at the origin and the radius rmax at zmax, from zmin on."""
    _corners("paraboloid()", variables).call(lib.zebParaboloidV, *floats_of(
        "paraboloid()", rmax=rmax, zmin=zmin, zmax=zmax, thetamax=thetamax))


def disk(radius: float = 1, innerradius: float = 0, thetamax: float = 360,
         **variables: Any) -> None:
    """Adds a disk in the xy plane about the origin, or a ring."""
    _corners("disk()", variables).call(lib.zebDiskV, *floats_of(
        "disk()", innerradius=innerradius, radius=radius, thetamax=thetamax))


def torus(majorradius: float = 1, minorradius: float = 0.25, phimin: float = 0, phimax: float = 360,
          thetamax: float = 360, **variables: Any) -> None:
    """Adds a torus about the z axis; phimin and phimax bound the tube's circle, in degrees."""
    _corners("torus()", variables).call(lib.zebTorusV, *floats_of(
        "torus()", majorradius=majorradius, minorradius=minorradius, phimin=phimin, phimax=phimax,
        thetamax=thetamax))


def _points(where: str, name: str, value: ArrayLike, width: int = 3) -> Floats:
    array = as_floats(where, name, value)
    if array.ndim != 2 or array.shape[1] != width:
        raise ValueError(f"{where}: {name!r} has the shape {array.shape}, not (n, {width})")
    return array


def spheres(centers: ArrayLike, radii: ArrayLike, **variables: Any) -> None:
    """Adds many spheres at once.

    centers  (n, 3)
    radii    (n,), or one for all
    Variables have n values: color (n, 3).
    """
    places = _points("spheres()", "centers", centers)
    n = len(places)
    sizes = as_floats("spheres()", "radii", radii)
    if sizes.shape not in ((), (n,)):
        raise ValueError(f"spheres(): 'radii' has the shape {sizes.shape}, not ({n},) or ()")
    shapes = dict.fromkeys(("uniform", "varying", "vertex"), (n,))
    parameters = Parameters("spheres()", shapes)
    first = parameters.floats(places)
    second = parameters.floats(np.broadcast_to(sizes, (n,)))
    parameters.add(variables).call(lib.zebSpheresV, n, first, second)


def polygon(points: ArrayLike, **variables: Any) -> None:
    """Adds a planar convex polygon of the corners (n, 3). Varying variables have n values."""
    corners = _points("polygon()", "points", points)
    n = len(corners)
    shapes = {"uniform": (), "varying": (n,), "vertex": (n,)}
    Parameters("polygon()", shapes).add(dict(point=corners, **variables)).call(lib.zebPolygonV, n)


def general_polygon(loops: Sequence[ArrayLike], **variables: Any) -> None:
    """Adds a planar polygon, concave or with holes.

    loops  arrays (n, 3): the outline, then the holes. Varying variables follow loop by loop.
    """
    where = "general_polygon()"
    corners = [_points(where, f"loops[{k}]", loop) for k, loop in enumerate(loops)]
    if not corners:
        raise ValueError(f"{where}: 'loops' is empty")
    sizes = as_longs(where, "loops", [len(loop) for loop in corners])
    n = int(sizes.sum())
    shapes = {"uniform": (), "varying": (n,), "vertex": (n,)}
    variables = dict(point=np.concatenate(corners), **variables)
    Parameters(where, shapes).add(variables).call(lib.zebGeneralPolygonV, len(sizes), sizes.ctypes)


def _indices(where: str, name: str, value: Any, n: int) -> Longs:
    indices = as_longs(where, name, value).ravel()
    if indices.size and (indices.min() < 0 or indices.max() >= n):
        raise ValueError(f"{where}: {name!r} has indices from {indices.min()} to {indices.max()}, "
                         f"and there are {n} points")
    return indices


def _flat(where: str, faces: Any, n: int) -> tuple[Longs, Longs]:
    """The sizes of faces, and the corners of all of them."""
    if isinstance(faces, np.ndarray) and faces.dtype != object:
        array = as_longs(where, "faces", faces)
        if array.ndim != 2:
            raise ValueError(f"{where}: 'faces' has the shape {array.shape}, not (m, corners)")
        sizes = np.full(len(array), array.shape[1], dtype=array.dtype)
        return sizes, _indices(where, "faces", array, n)
    lists = [as_longs(where, f"faces[{k}]", face) for k, face in enumerate(faces)]
    for k, face in enumerate(lists):
        if face.ndim != 1:
            raise ValueError(f"{where}: 'faces[{k}]' has the shape {face.shape}, not (corners,)")
    sizes = as_longs(where, "faces", [len(face) for face in lists])
    return sizes, _indices(where, "faces", np.concatenate(lists) if lists else lists, n)


def mesh(points: ArrayLike, faces: Any, **variables: Any) -> None:
    """Adds convex polygons that share vertices.

    points  (n, 3)
    faces   (m, 3), (m, 4) or so: indices into the points, from 0; or a sequence of as many lists of
            indices, of any lengths
    Uniform variables have m values, varying ones n. Corners run counter-clockwise seen from outside
    in a right-handed space; `orientation` turns that round.
    """
    vertices = _points("mesh()", "points", points)
    sizes, corners = _flat("mesh()", faces, len(vertices))
    n = len(vertices)
    shapes = {"uniform": (len(sizes),), "varying": (n,), "vertex": (n,)}
    Parameters("mesh()", shapes).add(dict(point=vertices, **variables)).call(
        lib.zebPolygonMeshV, len(sizes), sizes.ctypes, corners.ctypes)


def general_mesh(points: ArrayLike, faces: Sequence[Sequence[ArrayLike]], **variables: Any) -> None:
    """Adds general polygons that share vertices.

    points  (n, 3)
    faces   of each face its loops: lists of indices, the outline first, then the holes
    Uniform variables have a value a face, varying ones n.
    """
    where = "general_mesh()"
    vertices = _points(where, "points", points)
    n = len(vertices)
    counts = as_longs(where, "faces", [len(loops) for loops in faces])
    loops = [as_longs(where, f"faces[{k}]", loop) for k, face in enumerate(faces) for loop in face]
    sizes = as_longs(where, "faces", [loop.size for loop in loops])
    corners = _indices(where, "faces", np.concatenate(loops) if loops else [], n)
    shapes = {"uniform": (len(counts),), "varying": (n,), "vertex": (n,)}
    Parameters(where, shapes).add(dict(point=vertices, **variables)).call(
        lib.zebGeneralPolygonMeshV, len(counts), counts.ctypes, sizes.ctypes, corners.ctypes)


def _net(where: str, points: Any, height: Any, pointw: Any) -> tuple[int, int, dict[str, Any]]:
    """A net of control points: how many in u and in v, and what they are."""
    given = {name: as_floats(where, name, value) for name, value in
             (("point", points), ("height", height), ("pointw", pointw)) if value is not None}
    if len(given) != 1:
        raise TypeError(f"{where} takes one of 'points', 'height' and 'pointw'")
    (name, array), = given.items()
    width = {"point": (3,), "height": (), "pointw": (4,)}[name]
    if array.ndim < 2 or array.shape[2:] != width:
        shown = "points" if name == "point" else name
        raise ValueError(f"{where}: {shown!r} has the shape {array.shape}, not "
                         f"({', '.join(['nv', 'nu', *map(str, width)])})")
    return array.shape[1], array.shape[0], {name: array}


def _net_list(where: str, nu: int, nv: int, variables: dict[str, Any]) -> Parameters:
    return Parameters(where, {"uniform": (), "varying": (4,), "vertex": (nv, nu)}).add(variables)


def patch(points: Optional[ArrayLike] = None, kind: Union[str, int] = "bicubic", *,
          height: Optional[ArrayLike] = None, **variables: Any) -> None:
    """Adds a patch.

    points  (4, 4, 3), or (2, 2, 3) of kind "bilinear"; the last axis but one runs along u
    height  instead of points: z over the unit square, (4, 4) or (2, 2)
    Varying variables have four values, at the corners; vertex ones, such as "vertexcolor", one a
    control point.
    """
    nu, nv, place = _net("patch()", points, height, None)
    type_ = choice("patch()", "kind", kind, "ZEB_")
    side = {raw.ZEB_BILINEAR: 2, raw.ZEB_BICUBIC: 4}.get(type_)
    if side is None or (nu, nv) != (side, side):
        raise ValueError(f"patch(): {nv} by {nu} control points are no patch of kind {kind!r}")
    _net_list("patch()", nu, nv, dict(place, **variables)).call(lib.zebPatchV, type_)


def patch_mesh(points: Optional[ArrayLike] = None, kind: Union[str, int] = "bicubic", *,
               height: Optional[ArrayLike] = None, periodic_u: bool = False,
               periodic_v: bool = False, **variables: Any) -> None:
    """Adds patches that share control points.

    points  (nv, nu, 3), in the bases of the attributes if they are bicubic
    height  instead of points: (nv, nu), z over the unit square
    Varying variables have four values, at the corners of the whole mesh; vertex ones (nv, nu).
    """
    nu, nv, place = _net("patch_mesh()", points, height, None)
    wraps = [raw.ZEB_PERIODIC if wrap else raw.ZEB_NONPERIODIC for wrap in (periodic_u, periodic_v)]
    _net_list("patch_mesh()", nu, nv, dict(place, **variables)).call(
        lib.zebPatchMeshV, choice("patch_mesh()", "kind", kind, "ZEB_"), nu, wraps[0], nv, wraps[1])


def _knots(where: str, name: str, value: ArrayLike, count: int) -> Floats:
    return vector(where, name, value, (count,))


def _span(where: str, name: str, limits: Optional[ArrayLike], knots: Floats, order: int,
          n: int) -> list[float]:
    if limits is not None:
        return [float(x) for x in vector(where, name, limits, (2,))]
    return [float(knots[order - 1]), float(knots[n])]


def nurb(points: Optional[ArrayLike] = None, *, uknots: ArrayLike, vknots: ArrayLike,
         ulimits: Optional[ArrayLike] = None, vlimits: Optional[ArrayLike] = None,
         pointw: Optional[ArrayLike] = None, height: Optional[ArrayLike] = None,
         **variables: Any) -> None:
    """Adds a rational B-spline surface of one span: (nv, nu) control points of the orders nv and nu,
    with 2 nu and 2 nv knots. Otherwise as `nurb_mesh`."""
    nu, nv, place = _net("nurb()", points, height, pointw)
    u, v = _knots("nurb()", "uknots", uknots, 2 * nu), _knots("nurb()", "vknots", vknots, 2 * nv)
    _net_list("nurb()", nu, nv, dict(place, **variables)).call(
        lib.zebNurbV, nu, u.ctypes, *_span("nurb()", "ulimits", ulimits, u, nu, nu),
        nv, v.ctypes, *_span("nurb()", "vlimits", vlimits, v, nv, nv))


def nurb_mesh(points: Optional[ArrayLike] = None, *, uorder: int, uknots: ArrayLike, vorder: int,
              vknots: ArrayLike, ulimits: Optional[ArrayLike] = None,
              vlimits: Optional[ArrayLike] = None, pointw: Optional[ArrayLike] = None,
              height: Optional[ArrayLike] = None, **variables: Any) -> None:
    """Adds a rational B-spline surface.

    points   (nv, nu, 3); or pointw (nv, nu, 4): w x, w y, w z, w; or height (nv, nu)
    uorder   degree plus 1, 2 to 20; vorder likewise
    uknots   nu + uorder numbers that do not fall; vknots likewise
    ulimits  the part to show, a pair; the whole by default
    """
    where = "nurb_mesh()"
    nu, nv, place = _net(where, points, height, pointw)
    orders = whole(where, "uorder", uorder), whole(where, "vorder", vorder)
    if not (1 <= orders[0] <= nu and 1 <= orders[1] <= nv):
        raise ValueError(f"{where}: {nv} by {nu} control points are too few for the orders "
                         f"{orders[1]} and {orders[0]}")
    u = _knots(where, "uknots", uknots, nu + orders[0])
    v = _knots(where, "vknots", vknots, nv + orders[1])
    _net_list(where, nu, nv, dict(place, **variables)).call(
        lib.zebNurbMeshV, nu, orders[0], u.ctypes, *_span(where, "ulimits", ulimits, u, orders[0], nu),
        nv, orders[1], v.ctypes, *_span(where, "vlimits", vlimits, v, orders[1], nv))


# Procedurals: what the library holds of one is a number.
_procedurals: dict[int, tuple[Callable[[float], Any], Optional[Callable[[], Any]]]] = {}
_last = 0


def _build(key: int, detail: float) -> None:
    blocks = len(state.blocks)
    with callback():
        _procedurals[key][0](detail)
    del state.blocks[blocks:]  # the library closes what it has left open


_subdivide = raw.SubdivideFunction(_build)


def _drop(key: int) -> None:
    free = _procedurals.pop(key)[1]
    if free is not None:
        with callback():
            free()


_free = raw.FreeFunction(_drop)


def procedural(bound: ArrayLike, build: Callable[[float], Any],
               free: Optional[Callable[[], Any]] = None) -> None:
    """Adds geometry that is built only if and when its bound can be seen.

    bound  (xmin, xmax, ymin, ymax, zmin, zmax) in object space, which holds what is built
    build  a function of the bound's area in pixels; it adds primitives, under the attributes and the
           transformation in force here
    free   called once when the procedural is done with, built or not
    """
    global _last
    box = vector("procedural()", "bound", bound, (6,))
    if not callable(build) or not (free is None or callable(free)):
        raise TypeError("procedural(): 'build' and 'free' are functions")
    claim()
    _last += 1
    _procedurals[_last] = build, free
    call(lib.zebProcedural, _last, box.ctypes, _subdivide, _free)


class Object(Block):
    """Primitives, all of one kind, that are kept instead of drawn: `with Object() as petal: ...`,
    then `petal()` for each instance. It lives to the end of the world or picture it was made in."""

    kind = "object"

    def __init__(self) -> None:
        self._handle: Optional[int] = None

    def _begin(self) -> None:
        self._handle = call(lib.zebObjectBegin)

    def _end(self, failed: bool) -> None:
        if failed:
            lib.zebObjectEnd()
            self._handle = None
        else:
            call(lib.zebObjectEnd)

    def __call__(self) -> None:
        """Draws an instance, under the attributes and the transformation in force."""
        if self._handle is None:
            raise ValueError("this object is not defined: with Object() as name: ...")
        call(lib.zebObjectCall, self._handle)

    def __reduce__(self) -> Any:
        raise TypeError("an Object is its picture's, and can't be pickled")


class Light:
    """A light, on from where it was made to the end of the attribute block."""

    def __init__(self, handle: int) -> None:
        self._handle = handle

    def switch(self, on: bool) -> None:
        """Switches it for what follows."""
        call(lib.zebLightSwitch, self._handle, int(bool(on)))

    def __reduce__(self) -> Any:
        raise TypeError("a Light is its picture's, and can't be pickled")


_LIGHTS = ("ambient", "distant", "omni", "spot")


def light(kind: Union[str, Shader], **parameters: Any) -> Light:
    """Adds a light and switches it on.

    kind  "ambient" (intensity, color), "distant" (also from_, to), "omni" (from_) or "spot" (from_,
          to, coneangle, conedeltaangle, beamdistribution); or a function made by `light_shader`

    Points are (3,) in the current coordinate system, angles degrees. from_ has an underscore since
    from is a word of Python.
    """
    if isinstance(kind, Shader):
        if parameters:
            raise TypeError("light(): functions take no parameters")
        return Light(kind.apply("light"))
    if kind not in _LIGHTS:
        raise ValueError(f"light(): no {kind!r} among {', '.join(_LIGHTS)}; functions are made lights "
                         "by zebcore.light_shader")
    if "from_" in parameters:
        parameters["from"] = parameters.pop("from_")
    return Light(named(f"light {kind!r}", parameters).call(lib.zebLightSourceV, quark(kind)))
