"""The points that a function of Python shades together, as NumPy arrays, and images for it."""
from __future__ import annotations

import ctypes as c
import struct
from collections.abc import Iterator, Sequence
from typing import TYPE_CHECKING, Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike

from . import raw
from ._arrays import Floats, as_floats, choice, tokens, whole
from ._core import call, settle, state
from .raw import lib

if TYPE_CHECKING:
    from ._shading import Shader

_WAYS = ("P", "N", "Ng", "I", "dPdu", "dPdv")
_SINGLE = ("u", "v", "s", "t", "du", "dv")
_COLORS = ("Cs", "Os", "Ci", "Oi", "L", "Cl", "Ol")
# Of each member of a row: where it stands among the struct's words, and how many planes it has.
_PLACES = {name: (1 + 3 * k, 3) for k, name in enumerate(_WAYS)}
_PLACES.update((name, (19 + k, 1)) for k, name in enumerate(_SINGLE))
_PLACES.update((name, (25 + 3 * k, 3)) for k, name in enumerate(_COLORS))
_OFFSETS = {name: getattr(raw.ZebRow, name).offset for name in _PLACES}
_WORDS = struct.Struct("@l45P")
_LINE = 16  # planes are padded to a multiple of it
_REACH = 2**31 - 1  # how far beyond its first plane a row is looked for
_Reach: Any = c.c_ubyte * _REACH
_float32 = np.dtype(np.float32)


class _Planes:
    """Some planes of a row: where they lie, and the memory itself, padding included."""

    def __init__(self, row: "Row", addresses: Sequence[int]) -> None:
        self.addresses = (c.c_void_p * len(addresses))(*addresses)
        self.count, self.size = row.__dict__["count"], row.__dict__["_size"]
        self.together = row._view(addresses, self.size)
        self.apart = [] if self.together is not None else [
            np.frombuffer((c.c_float * self.size).from_address(a), _float32) for a in addresses]

    def set(self, values: Any) -> None:
        n = self.count
        parts: Any = [self.together] if self.together is not None else self.apart
        for k, part in enumerate(parts):
            part[..., :n] = values if self.together is not None or np.ndim(values) < 2 else values[k]
            if n < self.size:
                part[..., n:] = part[..., n - 1:n]

    def get(self) -> Floats:
        if self.together is not None:
            return self.together[:, :self.count].copy()
        return np.stack([part[:self.count] for part in self.apart])


class Row:
    """The points that a function shades together, n of them.

    P, N, Ng, I, dPdu, dPdv  (3, n): position; normals to shade by, and of the geometry; from the eye
                             to the point; derivatives of P
    u, v, s, t, du, dv       (n,): parameters, texture coordinates, steps between neighbours
    Cs, Os                   (3, n): the surface's colour and opacity
    Ci, Oi                   (3, n): what surfaces and atmospheres make of them
    L, Cl, Ol                (3, n): of lights: from the light to the point, and what arrives

    All is in camera space. Row k of an array of shape (3, n) is one component of all points, so that
    numbers and arrays (n,) go with it as they are; `rgb` makes a colour of this kind. The arrays are
    views of the library's memory and end with the call: copy what you keep. Those that are not the
    function's to set are read-only. `g.Ci = x` is short for `g.Ci[:] = x`.

    What the methods return are arrays of their own. Arguments are arrays of n points, and vectors
    default to what surfaces usually ask for.
    """

    count: int
    P: Floats
    N: Floats
    Ng: Floats
    I: Floats  # noqa: E741
    dPdu: Floats
    dPdv: Floats
    u: Floats
    v: Floats
    s: Floats
    t: Floats
    du: Floats
    dv: Floats
    Cs: Floats
    Os: Floats
    Ci: Floats
    Oi: Floats
    L: Floats
    Cl: Floats
    Ol: Floats

    def __init__(self, shader: "Shader", address: int) -> None:
        words = _WORDS.unpack(c.string_at(address, _WORDS.size))
        mine = self.__dict__
        mine["count"] = words[0]
        mine["_size"] = -(-words[0] // _LINE) * _LINE
        mine["_address"] = address
        mine["_shader"] = shader
        mine["_words"] = words
        mine["_block"] = _Reach.from_address(words[1])  # what views are views of
        mine["_given"] = {}    # names of views, by identity
        mine["_copied"] = []   # those that have to be copied back
        mine["_scratch"] = {}  # planes that arguments and results pass through

    # Views

    def _view(self, addresses: Sequence[int], n: int) -> Optional[Floats]:
        """Planes as one array of shape (planes, n), if they lie at equal distances."""
        first = addresses[0] - self.__dict__["_words"][1]
        step = addresses[1] - addresses[0] if len(addresses) > 1 else 4 * n
        for k in range(2, len(addresses)):
            if addresses[k] - addresses[k - 1] != step:
                return None
        if first < 0 or step < 4 * n or first + len(addresses) * step > _REACH:
            return None
        return np.ndarray((len(addresses), n), _float32, self.__dict__["_block"], first, (step, 4))

    def __getattr__(self, name: str) -> Any:
        mine = self.__dict__
        if name not in _PLACES:
            raise AttributeError(f"a row has no {name!r}")
        if mine.get("_address") is None:
            raise ReferenceError(f"the row of {name!r} is over: copy what is to outlive the call")
        place, planes = _PLACES[name]
        addresses = mine["_words"][place:place + planes]
        if not addresses[0]:
            raise AttributeError(f"the row of a {mine['_shader'].kind} has no {name}")
        n, writable = mine["count"], name in mine["_shader"].sets
        view: Any = self._view(addresses, n)
        together = view is not None
        if not together:
            view = np.stack([np.ctypeslib.as_array((c.c_float * n).from_address(a)) for a in addresses])
            if writable:
                mine["_copied"].append((addresses, view))
        if planes == 1:
            view = view[0]
        view.flags.writeable = writable
        if together:
            mine["_given"][id(view)] = name
        mine[name] = view
        return view

    def __setattr__(self, name: str, value: Any) -> None:
        if name not in _PLACES:
            raise AttributeError(f"a row has no {name!r}")
        plane = getattr(self, name)
        if not plane.flags.writeable:
            raise AttributeError(f"{name} is not for a {self.__dict__['_shader'].kind} to set")
        plane[:] = value

    def __reduce_ex__(self, protocol: Any) -> Any:
        raise TypeError("a Row can't be copied: it ends with the call; copy its arrays")

    def _leave(self) -> Any:
        """Ends the row; what its views are views of."""
        mine = self.__dict__
        for addresses, view in mine["_copied"]:
            for address, plane in zip(addresses, view):
                c.memmove(address, np.ascontiguousarray(plane).ctypes.data, 4 * mine["count"])
        block = mine["_block"]
        mine.clear()
        return block

    # Services

    def _here(self) -> int:
        address = self.__dict__.get("_address")
        if address is None:
            raise ReferenceError("the row is over: it serves only while the function runs")
        return int(address)

    def _check(self, function: Any) -> None:
        if state.reports:
            settle(function)

    def _planes(self, slot: str, k: int) -> _Planes:
        here = self._here()
        scratch = self.__dict__["_scratch"]
        planes = scratch.get((slot, k))
        if planes is None:
            addresses = [lib.zebRowPlane(here) for _ in range(k)]
            self._check(lib.zebRowPlane)  # on another thread there are none
            planes = scratch[slot, k] = _Planes(self, addresses)
        return planes  # type: ignore[no-any-return]

    def _take(self, method: str, name: str, value: Any, slot: str, k: int = 3) -> Any:
        """Where the library finds the addresses of an argument of k planes: in the row itself, if it
        is one of its arrays, or else of planes that it is copied to."""
        here = self._here()
        known = self.__dict__["_given"].get(id(value))
        if known is not None and _PLACES[known][1] == k:
            return here + _OFFSETS[known]
        array = as_floats(f"Row.{method}()", name, value)
        n = self.__dict__["count"]
        good = array.shape in ((), (1,), (n,)) if k == 1 else array.shape in ((k, n), (k, 1))
        if not good:
            wanted = f"({n},)" if k == 1 else f"({k}, {n})"
            raise ValueError(f"Row.{method}(): {name!r} has the shape {array.shape}, not {wanted}")
        planes = self._planes(slot, k)
        planes.set(array)
        return planes.addresses

    def _take_one(self, method: str, name: str, value: Any, slot: str) -> int:
        """The same of an argument of one plane: where the plane is."""
        found = self._take(method, name, value, slot, 1)
        return int(c.c_void_p.from_address(found).value or 0) if isinstance(found, int) else int(found[0])

    def _ask(self, function: Any, *arguments: Any, results: int = 3) -> Floats:
        out = self._planes("result", results)
        function(self._here(), *arguments, out.addresses)
        self._check(function)
        return out.get()

    def _ask_one(self, function: Any, *arguments: Any) -> Floats:
        out = self._planes("result", 1)
        function(self._here(), *arguments, out.addresses[0])
        self._check(function)
        return out.get()[0]  # type: ignore[no-any-return]

    def _to_eye(self, N: Optional[ArrayLike], method: str) -> Any:
        if N is not None:
            return self._take(method, "N", N, "N")
        known = ("facing", 3) in self.__dict__.get("_scratch", ())
        planes = self._planes("facing", 3)
        if not known:
            here = self._here()
            lib.zebRowFacing(here, here + _OFFSETS["N"], planes.addresses)
        return planes.addresses

    def _from_eye(self, V: Optional[ArrayLike], method: str) -> Any:
        if V is not None:
            return self._take(method, "V", V, "V")
        known = ("away", 3) in self.__dict__.get("_scratch", ())
        planes = self._planes("away", 3)
        if not known:
            planes.set(-self.I)
        return planes.addresses

    def ambient(self) -> Floats:
        """The light that comes from everywhere: (3, n)."""
        return self._ask(lib.zebRowAmbient)

    def diffuse(self, N: Optional[ArrayLike] = None) -> Floats:
        """How much light a rough surface takes: (3, n). By default N is that of `facing`."""
        return self._ask(lib.zebRowDiffuse, self._to_eye(N, "diffuse"))

    def specular(self, roughness: float = 0.1, N: Optional[ArrayLike] = None,
                 V: Optional[ArrayLike] = None) -> Floats:
        """Highlights about the halfway vector: (3, n). V leads to the eye, -I by default."""
        return self._ask(lib.zebRowSpecular, self._to_eye(N, "specular"),
                         self._from_eye(V, "specular"), float(roughness))

    def phong(self, size: float, N: Optional[ArrayLike] = None,
              V: Optional[ArrayLike] = None) -> Floats:
        """Highlights about the mirror direction: (3, n)."""
        return self._ask(lib.zebRowPhong, self._to_eye(N, "phong"), self._from_eye(V, "phong"),
                         float(size))

    def lights(self) -> Iterator[tuple[Floats, Floats, Floats]]:
        """Of each light that does not come from everywhere: L, the way to it, of length 1; Cl, its
        colour; Ol, its opacity; (3, n) each."""
        for k in range(lib.zebRowLights(self._here())):
            planes = [self._planes(slot, 3) for slot in ("L", "Cl", "Ol")]
            lib.zebRowLight(self._here(), k, *(p.addresses for p in planes))
            self._check(lib.zebRowLight)
            yield planes[0].get(), planes[1].get(), planes[2].get()

    def facing(self, N: Optional[ArrayLike] = None) -> Floats:
        """Normals of length 1, turned to the eye: (3, n)."""
        return self._ask(lib.zebRowFacing, self._take("facing", "N", self.N if N is None else N, "N"))

    def differences(self, values: ArrayLike) -> tuple[Floats, Floats]:
        """How much values, (n,), change from a point to the next, along both ways: (n,) each."""
        plane = self._take_one("differences", "values", values, "N")
        out = self._planes("result", 2)
        lib.zebRowDifferences(self._here(), plane, out.addresses[0], out.addresses[1])
        self._check(lib.zebRowDifferences)
        first, second = out.get()
        return first, second

    def normals(self, positions: ArrayLike) -> Floats:
        """Normals of positions that the function has moved: (3, n)."""
        return self._ask(lib.zebRowNormals, self._take("normals", "positions", positions, "N"))

    def transform(self, points: ArrayLike, from_: str = "eye", to: str = "shader",
                  kind: str = "point") -> Floats:
        """Brings points from one space to another: (3, n).

        Spaces are "eye", in which the row is, "shader", that in which the function was made the
        surface, "model", "world" and those of `mark_space`; kinds "point", "vector" and "normal".
        """
        numbers = []
        for name in (from_, to):
            token = tokens.get(name)
            if name != "shader" and token is None:
                raise ValueError(f"Row.transform(): there is no space {name!r}")
            numbers.append(0 if name == "shader" or token is None else token.number)
        what = choice("Row.transform()", "kind", kind, "ZEB_TRANSFORM_")
        return self._ask(lib.zebRowTransform, *numbers, what,
                         self._take("transform", "points", points, "N"))

    def _places(self, method: str, places: ArrayLike) -> tuple[int, Any]:
        array = as_floats(f"Row.{method}()", "places", places)
        dimensions = 1 if array.ndim < 2 else array.shape[0]
        return dimensions, self._take(method, "places", places if dimensions > 1 else array.reshape(-1),
                                      "N", dimensions)

    def noise(self, places: ArrayLike, periods: Optional[Sequence[int]] = None) -> Floats:
        """Smooth noise, -1 to 1, at places (k, n) of k = 1 to 4 dimensions, or (n,): (n,).

        periods  k whole numbers: it repeats along coordinates whose period is above 0
        """
        dimensions, planes = self._places("noise", places)
        if periods is not None and len(periods) != dimensions:
            raise ValueError(f"Row.noise(): {len(periods)} periods for {dimensions} dimensions")
        given = None if periods is None else (c.c_long * dimensions)(
            *(whole("Row.noise()", "periods", p) for p in periods))
        return self._ask_one(lib.zebRowNoise, dimensions, planes, given)

    def turbulence(self, places: ArrayLike, octaves: int = 6, gain: float = 0.5,
                   absolute: bool = False) -> Floats:
        """Octaves of noise, each of half the size; with absolute, their absolute values: (n,)."""
        dimensions, planes = self._places("turbulence", places)
        return self._ask_one(lib.zebRowTurbulence, dimensions, planes,
                             whole("Row.turbulence()", "octaves", octaves), float(gain),
                             int(bool(absolute)))

    def step(self, edge: float, values: ArrayLike) -> Floats:
        """0 where values, (n,), are below the edge and 1 above, smooth in between: (n,)."""
        return self._ask_one(lib.zebRowStep, float(edge), self._take_one("step", "values", values, "N"))

    def checks(self, s: ArrayLike, t: ArrayLike) -> Floats:
        """A checkerboard of fields one unit wide, without jags: (n,)."""
        return self._ask_one(lib.zebRowChecks, self._take_one("checks", "s", s, "N"),
                             self._take_one("checks", "t", t, "V"))

    def image(self, image: "Image", s: ArrayLike, t: ArrayLike, blur: float = 0) -> Floats:
        """Looks an image up, which covers 0 to 1 by 0 to 1, t downwards: (channels, n)."""
        if not isinstance(image, Image):
            raise TypeError(f"Row.image(): no zebcore.Image, but {type(image).__name__}")
        return self._ask(lib.zebRowImage, image._here(), self._take_one("image", "s", s, "N"),
                         self._take_one("image", "t", t, "V"), float(blur), results=image.channels)

    def variable(self, name: str) -> Any:
        """What a variable of the primitive (`declare`) is at the points: (n,) of floats, (2, n) of
        pairs, (3, n) of points and colours, (4, n) of homogeneous points; an int or a str of these
        types. None if the primitive has none of the name."""
        here, token = self._here(), tokens.get(name)
        if token is None or token.type == "none":
            raise ValueError(f"Row.variable(): no variable {name!r} is declared")
        n = self.__dict__["count"]
        if token.type == "integer":
            found = lib.zebRowInteger(here, token.number)
            return None if not found else c.c_int.from_address(found).value
        if token.type == "string":
            text = lib.zebRowString(here, token.number)
            return None if text is None else text.decode()
        planes = [lib.zebRowVariable(here, token.number, k) for k in range(token.width)]
        if not planes[0]:
            return None
        values = np.array([np.frombuffer((c.c_float * n).from_address(p), _float32) for p in planes])
        return values[0] if token.width == 1 else values


def rgb(red: float, green: float, blue: float) -> Floats:
    """A colour, or any three numbers, of shape (3, 1): what goes with arrays of a row."""
    return np.array([[red], [green], [blue]], np.float32)


class Image:
    """An image for `Row.image`.

    pixels  (height, width) or (height, width, channels), rows from the top; numbers as they are, but
            whole numbers of 8 and 16 bits become 0 to 1
    wrap    what lies beyond the edges: "clamp", "repeat", "mirror" or "black"

    Colours are taken to be linear: of a photograph take the power 2.2 first. Legal anywhere.
    """

    def __init__(self, pixels: ArrayLike, wrap: Union[str, int] = "clamp") -> None:
        self._handle: Optional[int] = None
        array = np.asarray(pixels)
        if array.dtype in (np.uint8, np.uint16):
            array = array / np.float32(np.iinfo(array.dtype).max)
        array = np.ascontiguousarray(as_floats("Image()", "pixels", array))
        if array.ndim == 2:
            array = array[:, :, np.newaxis]
        if array.ndim != 3:
            raise ValueError(f"Image(): 'pixels' has the shape {array.shape}, not (height, width) or "
                             "(height, width, channels)")
        height, width, self.channels = array.shape
        self._handle = call(lib.zebImage, width, height, self.channels, array.ctypes,
                            choice("Image()", "wrap", wrap, "ZEB_IMAGE_"))

    def _here(self) -> int:
        if self._handle is None:
            raise ValueError("this image was closed")
        return self._handle

    def close(self) -> None:
        """Lets the image go; so does the end of the object."""
        handle, self._handle = self._handle, None
        if handle is not None:
            call(lib.zebImageFree, handle)

    def __del__(self) -> None:
        # Not now: on whatever thread, in whatever call this may be.
        if getattr(self, "_handle", None) is not None:
            state.dead_images.append(self._handle)  # type: ignore[arg-type]

    def __reduce__(self) -> Any:
        raise TypeError("an Image is the library's; pickle its pixels")
