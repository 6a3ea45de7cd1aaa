"""Attributes, transformations and spaces, and the blocks that save and restore them. Attributes and
transformations are legal everywhere but in an object block."""
from __future__ import annotations

from collections.abc import Callable, Mapping
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike

from ._arrays import (Floats, as_floats, choice, color_of, encode, floats_of, named, number, quark,
                      vector, whole)
from ._core import Block, Simple, call
from ._shading import Shader
from .raw import lib

# A built-in surface or atmosphere by name, with parameters; or a function.
Look = Union[str, tuple[str, Mapping[str, Any]], Shader]


def color(value: ArrayLike) -> None:
    """Sets the surface colour: three numbers, or one for grey; 0 to 1, and linear."""
    call(lib.zebColor, color_of("color()", "value", value).ctypes)


def opacity(value: ArrayLike) -> None:
    """Sets the opacity, as `color`: 1 hides what is behind, 0 shows it."""
    call(lib.zebOpacity, color_of("opacity()", "value", value).ctypes)


def shading_rate(rate: float) -> None:
    """Sets the area of a micropolygon in pixels."""
    call(lib.zebShadingRate, *floats_of("shading_rate()", rate=rate))


def shading_model(model: Union[str, int]) -> None:
    """Shades micropolygons "constant", each in one colour, or "smooth"."""
    call(lib.zebShadingModel, choice("shading_model()", "model", model, "ZEB_"))


def matte(on: bool) -> None:
    """Makes surfaces cut holes: they hide what is behind and stay empty themselves."""
    call(lib.zebMatteObject, int(bool(on)))


def surface_shader(surface: Look) -> None:
    """Sets the surface: a function made by `zebcore.surface`, or a built-in one by name, or a pair
    of its name and its parameters: ("metal", dict(ks=0.7)). See `attributes`."""
    if isinstance(surface, Shader):
        surface.apply("surface")
    else:
        _look("surface", surface, lib.zebSurfaceV)


def atmosphere_shader(atmosphere: Optional[Look]) -> None:
    """Sets the atmosphere: a function made by `zebcore.atmosphere`, "depthcue" or "fog", or a pair
    of one of these and its parameters; None for none."""
    if atmosphere is None:
        call(lib.zebCustomAtmosphere, None)
    elif isinstance(atmosphere, Shader):
        atmosphere.apply("atmosphere")
    else:
        _look("atmosphere", atmosphere, lib.zebAtmosphereV)


def displacement_shader(displacement: Optional[Shader]) -> None:
    """Sets the displacement: a function made by `zebcore.displacement`; None for none.
    It moves nothing unless `displacement_bound` allows it."""
    if displacement is None:
        call(lib.zebCustomDisplacement, None)
    elif isinstance(displacement, Shader):
        displacement.apply("displacement")
    else:
        raise TypeError(f"displacement: no function of zebcore.displacement, but {displacement!r}")


_SURFACES = ("constant", "diffuse", "metal", "plastic")


def _look(kind: str, look: Any, function: Any) -> None:
    name, parameters = look if isinstance(look, tuple) and len(look) == 2 else (look, {})
    if callable(name):
        raise TypeError(f"{kind}: a function has to be made a shader: @zebcore.{kind}")
    if not isinstance(name, str):
        raise TypeError(f"{kind}: neither a name nor a function made by zebcore.{kind}: {look!r}")
    if kind == "surface" and name not in _SURFACES:
        raise ValueError(f"surface: no {name!r} among {', '.join(_SURFACES)}")
    named(f"{kind} {name!r}", dict(parameters)).call(function, quark(name))


def bound(box: ArrayLike) -> None:
    """Promises that what follows lies in a box: (xmin, xmax, ymin, ymax, zmin, zmax)."""
    call(lib.zebBound, vector("bound()", "box", box, (6,)).ctypes)


def displacement_bound(amount: float) -> None:
    """Says how far a displacement moves points at most, in object space; 0 by default."""
    call(lib.zebBoundDisplacement, *floats_of("displacement_bound()", amount=amount))


def flatness(value: float) -> None:
    """Sets how far a curved surface may stray from its micropolygons, in pixels."""
    call(lib.zebFlatness, *floats_of("flatness()", value=value))


def orientation(which: Union[str, int]) -> None:
    """Sets which way normals point: "outside", "inside", "left_handed", "right_handed" or
    "reverse"."""
    call(lib.zebOrientation, choice("orientation()", "which", which, "ZEB_"))


def sides(n: int) -> None:
    """Sets how many sides surfaces have: 2, or 1 to drop those that face away."""
    call(lib.zebBackface, whole("sides()", "n", n))


def object_name(name: str) -> None:
    """Names what follows in messages raised while it renders."""
    call(lib.zebObjectName, encode(name))


def group_name(name: str) -> None:
    """Names the shading group of what follows, for messages."""
    call(lib.zebGroupName, encode(name))


def basis(kind: Union[str, int, ArrayLike], step: int = 1, apply: Union[str, int] = "both") -> None:
    """Chooses the spline basis of bicubic patches.

    kind   "bezier", "bspline", "catmull_rom", "hermite" or "power", or a (4, 4) matrix of one's own
    step   control points from one patch to the next, of such a matrix
    apply  "u", "v" or "both"
    """
    application = choice("basis()", "apply", apply, "ZEB_APPLY_")
    if isinstance(kind, (str, int)):
        call(lib.zebBasis, choice("basis()", "kind", kind, "ZEB_BASIS_"), application)
    else:
        matrix = vector("basis()", "kind", kind, (4, 4))
        call(lib.zebCustomBasis, application, matrix.ctypes,
             whole("basis()", "step", step))


def texture_coordinates(corners: ArrayLike) -> None:
    """Sets s and t, which functions that shade read, at the corners of a surface's parameters.

    corners  (4, 2): s and t at (u, v) = (0, 0), (1, 0), (0, 1) and (1, 1)
    """
    call(lib.zebTextureCoordinates,
         *map(float, vector("texture_coordinates()", "corners", corners, (4, 2)).ravel()))


_SETTERS: dict[str, Callable[[Any], None]] = {
    "color": color, "opacity": opacity, "surface": surface_shader,
    "atmosphere": atmosphere_shader, "displacement": displacement_shader,
    "displacement_bound": displacement_bound, "shading_rate": shading_rate,
    "shading_model": shading_model, "matte": matte, "bound": bound, "flatness": flatness,
    "orientation": orientation, "sides": sides, "name": object_name, "group": group_name,
    "basis": basis, "texture_coordinates": texture_coordinates,
}


class _Attributes(Simple):
    def __init__(self, values: dict[str, Any]) -> None:
        super().__init__("attributes", lib.zebAttributePush, lib.zebAttributePop)
        self._values = values

    def _fill(self) -> None:
        for name, value in self._values.items():
            _SETTERS[name](value)


def attributes(**values: Any) -> Block:
    """An attribute block: `with attributes(color=(1, 0, 0), surface=checks): ...`

    At its end attributes and transformation are what they were. Keyword arguments, each as the
    function of that name: color, opacity, shading_rate, shading_model, matte, bound, flatness,
    orientation, sides, basis, texture_coordinates, displacement_bound; surface as `surface_shader`,
    atmosphere as `atmosphere_shader`, displacement as `displacement_shader`, name as `object_name`
    and group as `group_name`.

    Legal everywhere but in object and motion blocks.
    """
    for name in values:
        if name not in _SETTERS:
            raise TypeError(f"attributes() knows no {name!r}; it knows {', '.join(_SETTERS)}")
    return _Attributes(values)


def transform() -> Block:
    """A block at whose end the transformation is what it was. Legal as `attributes`."""
    return Simple("transform", lib.zebMatrixPush, lib.zebMatrixPop)


def motion(times: ArrayLike) -> Block:
    """A motion block; of the calls in it only the first takes effect."""
    array = np.ascontiguousarray(as_floats("motion()", "times", times)).ravel()
    block = Simple("motion", lib.zebMotionBeginV, lib.zebMotionEnd, array.size,
                   array.ctypes)
    block.times = array  # type: ignore[attr-defined]  # lives as long as the block
    return block


def load_identity() -> None:
    """Makes the current coordinate system camera space."""
    call(lib.zebLoadIdentity)


def load_matrix(matrix: ArrayLike) -> None:
    """Makes the current coordinate system one that the (4, 4) matrix takes to world space. Points
    are row vectors: the last row says where the origin goes."""
    call(lib.zebLoadMatrix, vector("load_matrix()", "matrix", matrix, (4, 4)).ctypes)


def apply_matrix(matrix: ArrayLike) -> None:
    """Applies a (4, 4) matrix, of row vectors."""
    call(lib.zebMultMatrix, vector("apply_matrix()", "matrix", matrix, (4, 4)).ctypes)


def apply_perspective(fov: float) -> None:
    """Applies a perspective as a transformation; the camera's is `perspective`."""
    call(lib.zebPerspective, *floats_of("apply_perspective()", fov=fov))


def translate(x: float, y: float, z: float) -> None:
    """Moves the origin."""
    call(lib.zebTranslate, *floats_of("translate()", x=x, y=y, z=z))


def rotate(angle: float, x: float, y: float, z: float) -> None:
    """Rotates by degrees about an axis; about +z from x to y."""
    call(lib.zebRotate, *floats_of("rotate()", angle=angle, x=x, y=y, z=z))


def scale(x: float, y: Optional[float] = None, z: Optional[float] = None) -> None:
    """Scales along the axes; along all alike if one factor is given."""
    if (y is None) != (z is None):
        raise TypeError("scale(): one factor or three")
    call(lib.zebScale, *floats_of("scale()", x=x, y=x if y is None else y, z=x if z is None else z))


def skew(angle: float, direction: ArrayLike, towards: ArrayLike) -> None:
    """Shears so that a direction turns by the angle, in degrees, towards another."""
    call(lib.zebSkew, number("skew()", "angle", angle),
         *map(float, vector("skew()", "direction", direction)),
         *map(float, vector("skew()", "towards", towards)))


def look_at(eye: ArrayLike, at: ArrayLike, up: ArrayLike = (0, 1, 0)) -> None:
    """Makes a camera: what follows is seen from the eye, looking at a place."""
    places = [vector("look_at()", n, v) for n, v in (("eye", eye), ("at", at), ("up", up))]
    call(lib.zebLookAt, *(place.ctypes for place in places))


def mark_space(name: str) -> None:
    """Gives the current coordinate system a name. Legal everywhere but in object and motion
    blocks."""
    call(lib.zebMarkSpace, quark(name))


def project_points(points: ArrayLike, from_: str, to: str) -> Floats:
    """Converts points, (..., 3), from one space to another: "raster", "image", "eye", "world",
    "model" or a marked one. Returns a new array of the same shape."""
    given = as_floats("project_points()", "points", points)
    if given.ndim < 1 or given.shape[-1] != 3:
        raise ValueError(f"project_points(): 'points' has the shape {given.shape}, not (..., 3)")
    result = np.array(given, order="C")
    call(lib.zebProjectPoints, quark(from_), quark(to), result.size // 3,
         result.ctypes)
    return result

