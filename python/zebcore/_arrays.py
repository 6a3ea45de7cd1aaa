"""From what is array-like to what the library reads: shapes are checked here, with names."""
from __future__ import annotations

import ctypes as c
import math
from collections.abc import Mapping, Sequence
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import raw
from ._core import call, claim, settle, state
from .raw import lib

Floats = NDArray[np.float32]
Longs = NDArray[np.integer[Any]]
_float32 = np.dtype(np.float32)
LONG: Any = np.dtype(f"i{c.sizeof(c.c_long)}")

STORAGE = {"none": raw.ZEB_CLASS_NONE, "uniform": raw.ZEB_UNIFORM, "varying": raw.ZEB_VARYING,
           "vertex": raw.ZEB_VERTEX}
TYPES = {"none": raw.ZEB_TYPE_NONE, "float": raw.ZEB_FLOAT, "integer": raw.ZEB_INTEGER,
         "string": raw.ZEB_STRING, "pair": raw.ZEB_PAIR, "point": raw.ZEB_POINT,
         "pointw": raw.ZEB_POINTW, "color": raw.ZEB_COLOR}
_WIDTHS = {"float": 1, "integer": 1, "pair": 2, "point": 3, "pointw": 4}


class Token:
    """A name of the library's, with the class and the type of the values it stands for."""

    def __init__(self, number: int, storage: str, type_: str) -> None:
        self.number = number
        self.storage = storage
        self.type = type_

    @property
    def width(self) -> int:
        """How many numbers make one value."""
        return state.options[-1].color_width if self.type == "color" else _WIDTHS[self.type]


tokens: dict[str, Token] = {}


def encode(name: Any, what: str = "a name") -> bytes:
    """A text as the library takes it."""
    if not isinstance(name, str):
        raise TypeError(f"{what} is a str, not {type(name).__name__}")
    if "\0" in name:
        raise ValueError(f"{what} can't hold a null character")
    return name.encode()


def declare(name: str, storage: str = "varying", type: str = "float") -> None:
    """Makes a name a primitive variable, which primitives then take as a keyword argument.

    name     a name that is not in use for something else
    storage  "uniform": one value a face or curved surface; "varying": one a corner;
             "vertex": one a control point
    type     "float", "integer", "string", "pair", "point", "pointw" or "color"

    Functions that shade find the values by `Row.variable`. Legal anywhere.
    """
    if storage not in STORAGE or type not in TYPES:
        raise ValueError(f"declare(): no such class or type: {storage!r}, {type!r}; classes are "
                         f"{', '.join(STORAGE)}, types are {', '.join(TYPES)}")
    known = tokens.get(name)
    if known is None:
        number = call(lib.zebDeclare, encode(name), STORAGE[storage], TYPES[type])
        tokens[name] = Token(number, storage, type)
    elif (known.storage, known.type) != (storage, type):
        raise ValueError(f"declare(): {name!r} is {known.storage} {known.type} already")


def quark(name: str) -> int:
    """The number of a name; names that are new get one, without a class or a type.

    Legal anywhere.
    """
    token = tokens.get(name)
    if token is None:
        token = tokens[name] = Token(call(lib.zebQuark, encode(name)), "none", "none")
    return token.number


# The names that exist from the start, then those that the library makes as they are asked for.
for _storage, _type, _names in (
        ("vertex", "point", "point"), ("vertex", "float", "height"), ("vertex", "pointw", "pointw"),
        ("varying", "point", "normal"), ("uniform", "point", "plane from to"),
        ("varying", "color", "color opacity"), ("uniform", "color", "specularcolor"),
        ("uniform", "float", "ka kd ks roughness intensity coneangle conedeltaangle "
                             "beamdistribution hither yon distance"),
        ("none", "none", "constant diffuse metal plastic ambient omni distant spot depthcue fog "
                         "raster image eye world model"),
        ("vertex", "color", "vertexcolor vertexopacity"), ("varying", "float", "s t")):
    for _name in _names.split():
        declare(_name, _storage, _type)


# Shapes as messages write them.
def _shape(shape: Sequence[int]) -> str:
    return str(tuple(int(n) for n in shape))


def _numbers(where: str, name: str, value: Any, kinds: str, what: str) -> NDArray[Any]:
    if value is None:
        raise TypeError(f"{where}: {name!r} is no array of {what}, but None")
    try:
        array = np.asarray(value)
        if array.dtype == object:
            array = np.array(value, dtype=np.float64 if "f" in kinds else LONG)
    except (TypeError, ValueError) as error:
        raise TypeError(f"{where}: {name!r} is no array of {what}: {error}") from None
    if array.size and array.dtype.kind not in kinds:
        raise TypeError(f"{where}: {name!r} is no array of {what}, but of {array.dtype}")
    return array


def as_floats(where: str, name: str, value: ArrayLike) -> Floats:
    """An array of floats, without a copy if it is one; of any shape, and any strides."""
    if type(value) is np.ndarray and value.dtype is _float32:
        return value
    with np.errstate(over="ignore"):  # the library refuses what is not finite, with a message
        return _numbers(where, name, value, "fiub", "numbers").astype(np.float32, copy=False)


def as_longs(where: str, name: str, value: ArrayLike) -> Longs:
    """An array of whole numbers of the size of the library's, one behind the other."""
    array = _numbers(where, name, value, "iu", "whole numbers")
    if array.size and (array.max() > np.iinfo(LONG).max):
        raise ValueError(f"{where}: {name!r} holds a number that is too large")
    return np.ascontiguousarray(array, dtype=LONG)


def vector(where: str, name: str, value: ArrayLike, shape: tuple[int, ...] = (3,)) -> Floats:
    """Floats of one shape, one behind the other."""
    array = as_floats(where, name, value)
    if array.shape != shape:
        raise ValueError(f"{where}: {name!r} has the shape {_shape(array.shape)}, not {_shape(shape)}")
    return np.ascontiguousarray(array)


def color_of(where: str, name: str, value: ArrayLike) -> Floats:
    """One colour; a number stands for all of its samples."""
    width = state.options[-1].color_width
    array = as_floats(where, name, value)
    return vector(where, name, np.full(width, array) if array.ndim == 0 else array, (width,))


def number(where: str, name: str, value: Any) -> float:
    """A number of any kind."""
    if type(value) is float or type(value) is int:
        return float(value)
    array = as_floats(where, name, value)
    if array.ndim:
        raise ValueError(f"{where}: {name!r} has the shape {_shape(array.shape)}, not ()")
    return float(array)


def floats_of(where: str, **values: Any) -> list[float]:
    """Numbers, as the library takes them one by one."""
    return [number(where, name, value) for name, value in values.items()]


def whole(where: str, name: str, value: Any) -> int:
    """A whole number that a long can hold."""
    try:
        result = int(value.__index__())
    except AttributeError:
        raise TypeError(f"{where}: {name!r} is no whole number, but {value!r}") from None
    if not -2**(8 * c.sizeof(c.c_long) - 1) <= result < 2**(8 * c.sizeof(c.c_long) - 1):
        raise ValueError(f"{where}: {name!r} is too large: {result}")
    return result


def choice(where: str, name: str, value: Union[str, int], prefix: str) -> int:
    """A constant: its number, or the end of its name in any case, "box" for ZEB_FILTER_BOX."""
    if not isinstance(value, str):
        return whole(where, name, value)
    found = getattr(raw, prefix + value.upper().replace("-", "_").replace(" ", "_"), None)
    if not isinstance(found, int):
        raise ValueError(f"{where}: {name!r} is no {value!r}")
    return found


class Parameters:
    """The parameter list of one call. What it points to lives as long as it does."""

    def __init__(self, where: str, shapes: Mapping[str, tuple[int, ...]]) -> None:
        self.where = where
        self._shapes = shapes  # by class: how many values there are
        self._tokens: list[int] = []
        self._values: list[int] = []
        self._arrays: list[Any] = []
        self._apart: list[Floats] = []  # elements do not touch

    def add(self, variables: dict[str, Any]) -> "Parameters":
        """Takes keyword arguments for what they are by name."""
        for name, value in variables.items():
            token = tokens.get(name)
            if token is None or token.type == "none":
                raise TypeError(f"{self.where} knows no variable {name!r}; zebcore.declare() makes one")
            self._tokens.append(token.number)
            if token.type == "string":
                self._keep(c.create_string_buffer(encode(value, f"{self.where}: {name!r}")))
            elif token.type == "integer":
                array = self._fit(name, token, as_longs(self.where, name, value))
                if array.size and (array.min() < -2**31 or array.max() >= 2**31):
                    raise ValueError(f"{self.where}: {name!r} holds a number beyond 32 bits")
                self._keep(np.ascontiguousarray(array, dtype=np.int32))
            else:
                self.floats(self._fit(name, token, as_floats(self.where, name, value)))
        return self

    def floats(self, array: Floats) -> int:
        """Takes an array of values, the last axis of each; where it lies."""
        last = array.strides[-1] if array.ndim else 4
        if (array.ndim == 2 and array.shape[0] > 1 and array.flags.aligned and last == 4
                and array.strides[0] > 4 * array.shape[1]):
            self._apart.append(array)
        else:
            array = np.ascontiguousarray(array)
        return self._keep(array)

    def _keep(self, array: Any) -> int:
        address = int(array.ctypes.data if isinstance(array, np.ndarray) else c.addressof(array))
        self._arrays.append(array)
        if len(self._values) < len(self._tokens):
            self._values.append(address)
        return address

    def _fit(self, name: str, token: Token, array: Any) -> Any:
        """Brings an array to the shape its class asks for, or complains."""
        value = () if token.width == 1 and token.type != "color" else (token.width,)
        counts = self._shapes[token.storage]
        total = math.prod(counts)
        full = counts + value
        if array.shape == full:
            return array.reshape((total,) + value) if len(counts) != 1 else array
        if array.shape == (total,) + value:
            return array
        one = array.shape == value or (token.type == "color" and array.ndim == 0)
        if one and name not in ("point", "pointw", "height"):
            all_ = np.empty((total,) + value, array.dtype)
            all_[...] = array
            return all_
        also = f", or {_shape(value)} for all" if full != value else ""
        raise ValueError(f"{self.where}: {name!r} ({token.storage} {token.type}) has the shape "
                         f"{_shape(array.shape)}, not {_shape(full)}{also}")

    def call(self, function: Any, *arguments: Any) -> Any:
        """Calls a function with the arguments, and the list behind them."""
        n = len(self._tokens)
        given = ((c.c_ushort * n)(*self._tokens), (c.c_void_p * n)(*self._values)) if n else (None,) * 2
        claim()
        for array in self._apart:
            lib.zebArray(array.ctypes.data, array.shape[0], array.strides[0])
        result = function(*arguments, n, *given)
        if state.reports or state.kept is not None:
            settle(function)
        return result


ONE: dict[str, tuple[int, ...]] = {"uniform": (), "varying": (), "vertex": (), "none": ()}


def named(where: str, variables: dict[str, Any]) -> Parameters:
    """A list for lights, surfaces and atmospheres: one value each."""
    return Parameters(where, ONE).add(variables)


def optional(where: str, name: str, value: Optional[Any], other: float) -> float:
    """A number, or what stands for None."""
    return other if value is None else number(where, name, value)
